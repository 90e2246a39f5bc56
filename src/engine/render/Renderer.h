#pragma once
// From scenes to frames.

#include "engine/render/PictureStore.h"
#include "engine/render/Scene.h"

namespace kv {

/// For any number of threads.
class Renderer {
public:
    /// The store outlives the renderer.
    explicit Renderer(PictureStore& pictures) : m_pictures(pictures) {}

    /// Draws a frame of 1 to kMaxBitmapSide pixels on a side over pixels that are transparent and lie as those of a
    /// Bitmap. What cannot be read shows nothing, and neither does what is placed where numbers do not reach. Throws on
    /// lack of memory.
    void Draw(const Scene& scene, int width, int height, std::uint32_t* pixels) const;

    Bitmap Draw(const Scene& scene, int width, int height) const
    {
        Bitmap frame(width, height);
        Draw(scene, width, height, frame.pixels.data());
        return frame;
    }

private:
    PictureStore& m_pictures;
};

/// What all productions of the process draw with.
const Renderer& SharedRenderer();

} // namespace kv
