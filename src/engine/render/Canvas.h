#pragma once
// A frame that is drawn on by Cairo.

#include "engine/media/Bitmap.h"
#include "engine/render/Geometry.h"

#include <functional>
#include <memory>

namespace kv {

/// A drawing that fails, since numbers do not reach its place, leaves others as they are. Throws std::bad_alloc on lack
/// of memory.
class Canvas {
public:
    /// Draws on pixels that lie as those of a Bitmap, outlive it and are used for nothing else meanwhile.
    Canvas(FrameSize size, std::uint32_t* pixels);

    FrameSize Size() const { return m_size; }
    void Blacken();

    struct Placed {
        std::shared_ptr<const Bitmap> bitmap;
        /// From the bitmap, as a square from 0 to 1, to pixels.
        cairo_matrix_t place;
    };

    struct Drawing {
        /// Nothing is drawn without a bitmap.
        Placed picture;
        /// Its alpha counts; all is seen without a bitmap.
        Placed mask;
        /// What is seen of both, in pixels.
        Outline outline;
        /// Cuts off what is seen; without points it does not.
        Outline window;
        double opacity = 1.0;
    };
    void Paint(const Drawing& drawing);

    /// The matrix is from the text's pixels to the frame's.
    void PaintText(const TextLayout& text, const cairo_matrix_t& matrix, double opacity);

private:
    struct SurfaceCloser {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };

    /// Runs with a context of its own.
    void Draw(const std::function<void(cairo_t*)>& drawing);
    void Follow(cairo_t* context, const Outline& outline) const;

    const FrameSize m_size;
    const std::unique_ptr<cairo_surface_t, SurfaceCloser> m_surface;
};

} // namespace kv
