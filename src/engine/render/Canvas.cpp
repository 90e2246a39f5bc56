#include "engine/render/Canvas.h"

#include <cmath>
#include <new>

namespace kv {
namespace {

struct ContextCloser {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
struct PatternCloser {
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using Pattern = std::unique_ptr<cairo_pattern_t, PatternCloser>;

cairo_surface_t* SurfaceOver(FrameSize size, std::uint32_t* pixels)
{
    return cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels), CAIRO_FORMAT_ARGB32,
                                               size.width, size.height,
                                               size.width * static_cast<int>(sizeof(std::uint32_t)));
}

/// Null without a bitmap, and for one that is not to be seen at its place.
Pattern PatternOf(const Canvas::Placed& placed)
{
    // Pixels; what is thinner is not seen.
    constexpr double kLeastSide = 1.0 / 16.0;
    const cairo_matrix_t& place = placed.place;
    if (!placed.bitmap) return nullptr;
    const auto back = Inverse(place);
    if (!back || std::hypot(place.xx, place.yx) < kLeastSide || std::hypot(place.xy, place.yy) < kLeastSide)
        return nullptr;
    const auto width = static_cast<double>(placed.bitmap->width);
    const auto height = static_cast<double>(placed.bitmap->height);
    const cairo_matrix_t toBitmap = Then(*back, {width, 0.0, 0.0, height, 0.0, 0.0});
    // What is only a source is not written to.
    auto* pixels = const_cast<std::uint32_t*>(placed.bitmap->pixels.data());
    cairo_surface_t* surface = SurfaceOver({placed.bitmap->width, placed.bitmap->height}, pixels);
    Pattern pattern(cairo_pattern_create_for_surface(surface));
    cairo_surface_destroy(surface);
    cairo_pattern_set_matrix(pattern.get(), &toBitmap);
    // It is less than twice as large as it is seen.
    cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_BILINEAR);
    // The outline ends it.
    cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
    return pattern;
}

void PaintMasked(cairo_t* context, cairo_pattern_t* mask, double opacity)
{
    if (opacity == 1.0) return cairo_mask(context, mask);
    cairo_push_group(context);
    cairo_mask(context, mask);
    cairo_pop_group_to_source(context);
    cairo_paint_with_alpha(context, opacity);
}

} // namespace

Canvas::Canvas(FrameSize size, std::uint32_t* pixels) : m_size(size), m_surface(SurfaceOver(size, pixels)) {}

void Canvas::Blacken()
{
    Draw([](cairo_t* context) { cairo_paint(context); });
}

void Canvas::Paint(const Drawing& drawing)
{
    const Pattern picture = PatternOf(drawing.picture);
    const Pattern mask = PatternOf(drawing.mask);
    if (!picture || (drawing.mask.bitmap && !mask)) return;
    Draw([&](cairo_t* context) {
        if (!drawing.window.empty()) {
            Follow(context, drawing.window);
            cairo_clip(context);
        }
        Follow(context, drawing.outline);
        cairo_set_source(context, picture.get());
        if (!mask && drawing.opacity == 1.0) return cairo_fill(context);
        cairo_clip(context);
        if (mask) return PaintMasked(context, mask.get(), drawing.opacity);
        cairo_paint_with_alpha(context, drawing.opacity);
    });
}

void Canvas::PaintText(const TextLayout& text, const cairo_matrix_t& matrix, double opacity)
{
    if (!Inverse(matrix)) return;
    Draw([&](cairo_t* context) {
        if (opacity < 1.0) cairo_push_group(context);
        cairo_save(context);
        cairo_set_matrix(context, &matrix);
        text.Draw(context);
        cairo_restore(context);
        if (opacity == 1.0) return;
        cairo_pop_group_to_source(context);
        cairo_paint_with_alpha(context, opacity);
    });
}

void Canvas::Draw(const std::function<void(cairo_t*)>& drawing)
{
    const std::unique_ptr<cairo_t, ContextCloser> context(cairo_create(m_surface.get()));
    drawing(context.get());
    if (cairo_status(context.get()) == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    cairo_surface_flush(m_surface.get());
}

void Canvas::Follow(cairo_t* context, const Outline& outline) const
{
    for (const Point& point : Within(m_size, outline))
        cairo_line_to(context, point.x, point.y);
    cairo_close_path(context);
}

} // namespace kv
