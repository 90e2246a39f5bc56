#include "engine/render/Renderer.h"

#include "engine/render/Canvas.h"
#include "engine/render/Geometry.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

using Part = std::array<double, 4>;
constexpr Part kWhole{0.0, 0.0, 1.0, 1.0};
const Look kPlainLook;

/// One layer of a scene on its way to the canvas.
class LayerPainter {
public:
    LayerPainter(PictureStore& pictures, Canvas& canvas, const Scene& scene, const Layer& layer)
        : m_pictures(pictures),
          m_canvas(canvas),
          m_aspectRatio(scene.aspectRatio),
          m_time(scene.time - layer.start),
          m_span(layer.end - layer.start),
          m_look(layer.look ? *layer.look : kPlainLook),
          m_placed(Then(Placed(m_look.placement, m_time, m_span, m_aspectRatio), ToPixels(canvas.Size())))
    {
    }

    void PaintText() const
    {
        const double opacity = OpacityOf(m_look);
        if (!m_look.text || opacity == 0.0) return;
        const TextLayout& text = *m_look.text;
        const auto handles = m_look.placement.handles.At(m_time, m_span).value_or(std::array{0.0, 0.0, 0.0});
        // From the pixels of the frame that it is laid out for, with the place of the handles in the middle.
        const double width = kTextFrameHeight * m_aspectRatio;
        const double height = kTextFrameHeight;
        const cairo_matrix_t toSquare{2.0 / width,
                                      0.0,
                                      0.0,
                                      -2.0 / height,
                                      (handles[0] - 1.0) * text.Width() / width,
                                      (handles[1] + 1.0) * text.Height() / height};
        m_canvas.PaintText(text, Then(toSquare, m_placed), opacity);
    }

    void PaintPicture(const Picture& picture) const
    {
        const Look& panZoom = picture.panZoom ? *picture.panZoom : kPlainLook;
        const double opacity = OpacityOf(m_look) * OpacityOf(panZoom);
        const auto file = opacity == 0.0 ? nullptr : m_pictures.Open(picture.file);
        const auto time = file ? TimeIn(picture, *file) : std::nullopt;
        if (!time) return;
        const cairo_matrix_t turned = Turned(picture.rotation);
        const double turnedAspect = turned.xx == 0.0 ? 1.0 / file->picture.aspectRatio : file->picture.aspectRatio;
        const Part part = PartOf(panZoom);
        const double width = part[2] - part[0];
        const double height = part[3] - part[1];
        const double shownAspect = picture.stretched ? m_aspectRatio : turnedAspect * width / height;
        // What is shown, from 0 to 1, to its place in the square, and on to pixels.
        const cairo_matrix_t toPixels =
            Then(Then(Fitted(shownAspect, m_aspectRatio), Placed(panZoom.placement, m_time, m_span, m_aspectRatio)),
                 m_placed);
        // A part may reach beyond the source.
        Part seen{std::max(-part[0] / width, 0.0), std::max(-part[1] / height, 0.0),
                  std::min((1.0 - part[0]) / width, 1.0), std::min((1.0 - part[1]) / height, 1.0)};
        Canvas::Drawing drawing;
        drawing.opacity = opacity;
        drawing.picture.place = Then(Then(turned, FromPart(part)), toPixels);
        drawing.picture.bitmap = BitmapOf(*file, *time, drawing.picture.place, PixelsAs::Picture);
        if (const auto mask = picture.mask.empty() ? nullptr : m_pictures.Open(picture.mask)) {
            const Part masked = MaskedPart();
            drawing.mask.place = Then(ToPart(masked), toPixels);
            drawing.mask.bitmap = BitmapOf(*mask, 0.0, drawing.mask.place, PixelsAs::Mask);
            for (const std::size_t side : {0U, 1U})
                seen[side] = std::max(seen[side], masked[side]);
            for (const std::size_t side : {2U, 3U})
                seen[side] = std::min(seen[side], masked[side]);
        }
        if (seen[0] >= seen[2] || seen[1] >= seen[3]) return;
        drawing.outline = OutlineOf(seen, toPixels);
        if (panZoom.placement.Moves()) drawing.window = OutlineOf({-1.0, -1.0, 1.0, 1.0}, m_placed);
        m_canvas.Paint(drawing);
    }

private:
    /// From 0 to 1.
    double OpacityOf(const Look& look) const
    {
        constexpr double kOpaque = 255.0;
        const auto opacity = look.placement.opacity.At(m_time, m_span);
        return opacity ? std::clamp((*opacity)[0] / kOpaque, 0.0, 1.0) : 1.0;
    }

    Part PartOf(const Look& panZoom) const
    {
        const auto& crop = panZoom.crop.IsEmpty() ? m_look.crop : panZoom.crop;
        const Part part = crop.At(m_time, m_span).value_or(kWhole);
        return part[0] < part[2] && part[1] < part[3] ? part : kWhole;
    }

    /// The part of what is shown that the mask lies over.
    Part MaskedPart() const
    {
        const auto half = [](double told) { return told > 0.0 ? told / 2.0 : 0.5; };
        const double across = half(m_look.maskWidth);
        const double down = half(m_look.maskHeight);
        return {0.5 - across, 0.5 - down, 0.5 + across, 0.5 + down};
    }

    /// Seconds of the source; nothing when its points leave nothing to show.
    std::optional<double> TimeIn(const Picture& picture, const ShownFile& file) const
    {
        // It stands on its last frame, which half a frame before its end shows.
        constexpr double kUsualRate = 25.0;
        const double rate = file.picture.frameRate > 0.0 ? file.picture.frameRate : kUsualRate;
        const double end = picture.outPoint > 0.0 ? picture.outPoint : file.duration;
        const double length = end - picture.inPoint;
        double time = std::max(m_time, 0.0);
        if (end > 0.0) {
            if (length <= 0.0) return std::nullopt;
            if (time >= length) time = picture.repeat ? std::fmod(time, length) : std::max(length - 0.5 / rate, 0.0);
        }
        return picture.inPoint + time;
    }

    std::shared_ptr<const Bitmap> BitmapOf(const ShownFile& file, double time, const cairo_matrix_t& place,
                                           PixelsAs pixels) const
    {
        return m_pictures.PictureOf(file, time, std::hypot(place.xx, place.yx), std::hypot(place.xy, place.yy), pixels);
    }

    PictureStore& m_pictures;
    Canvas& m_canvas;
    const double m_aspectRatio;
    const double m_time;
    const double m_span;
    const Look& m_look;
    const cairo_matrix_t m_placed;
};

} // namespace

void Renderer::Draw(const Scene& scene, int width, int height, std::uint32_t* pixels) const
{
    Canvas canvas({width, height}, pixels);
    if (scene.onBlack) canvas.Blacken();
    for (const Layer& layer : scene.layers) {
        const LayerPainter painter(m_pictures, canvas, scene, layer);
        layer.picture ? painter.PaintPicture(*layer.picture) : painter.PaintText();
    }
}

const Renderer& SharedRenderer()
{
    static PictureStore pictures;
    static const Renderer renderer(pictures);
    return renderer;
}

} // namespace kv
