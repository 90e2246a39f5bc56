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

    /// A frame of 1 to kMaxBitmapSide pixels on a side. What cannot be read shows nothing, and neither does what is
    /// placed where numbers do not reach. Throws on lack of memory.
    Bitmap Draw(const Scene& scene, int width, int height) const;

private:
    PictureStore& m_pictures;
};

/// What all productions of the process draw with.
const Renderer& SharedRenderer();

} // namespace kv
