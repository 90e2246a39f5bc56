#include "engine/render/Geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kv {
namespace {

/// Keeps what lies on one side of a line: where `inside`, which changes evenly, is not negative.
template <class Inside>
Outline Cut(const Outline& outline, Inside&& inside)
{
    Outline kept;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const Point& from = outline[i];
        const Point& to = outline[(i + 1) % outline.size()];
        const double before = inside(from);
        const double after = inside(to);
        if (before >= 0.0) kept.push_back(from);
        if ((before < 0.0) != (after < 0.0)) {
            const double part = before / (before - after);
            kept.push_back({std::lerp(from.x, to.x, part), std::lerp(from.y, to.y, part)});
        }
    }
    return kept;
}

} // namespace

cairo_matrix_t Then(const cairo_matrix_t& first, const cairo_matrix_t& second)
{
    cairo_matrix_t both;
    cairo_matrix_multiply(&both, &first, &second);
    return both;
}

std::optional<cairo_matrix_t> Inverse(const cairo_matrix_t& matrix)
{
    cairo_matrix_t inverse = matrix;
    if (cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return std::nullopt;
    for (const cairo_matrix_t& each : {matrix, inverse}) {
        for (const double number : {each.xx, each.yx, each.xy, each.yy, each.x0, each.y0}) {
            if (!std::isfinite(number)) return std::nullopt;
        }
    }
    return inverse;
}

cairo_matrix_t Placed(const Placement& placement, double time, double span, double aspectRatio)
{
    const auto at = [&](const KeyFrames<3>& channel, double usual) {
        return channel.At(time, span).value_or(std::array{usual, usual, usual});
    };
    const auto scaling = at(placement.scaling, 1.0);
    const auto translation = at(placement.translation, 0.0);
    const double angle = -std::fmod(at(placement.rotation, 0.0)[2], 360.0) * std::numbers::pi / 180.0;
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    // Turned in a frame whose units are as wide as high.
    return {scaling[0] * cosine,
            scaling[0] * aspectRatio * sine,
            scaling[1] * -sine / aspectRatio,
            scaling[1] * cosine,
            translation[0],
            translation[1]};
}

cairo_matrix_t ToPixels(FrameSize size)
{
    return {size.width / 2.0, 0.0, 0.0, -size.height / 2.0, size.width / 2.0, size.height / 2.0};
}

cairo_matrix_t Turned(int degrees)
{
    constexpr std::array<cairo_matrix_t, 4> kQuarters{{
        {1, 0, 0, 1, 0, 0},
        {0, 1, -1, 0, 1, 0},
        {-1, 0, 0, -1, 1, 1},
        {0, -1, 1, 0, 0, 1},
    }};
    constexpr int kFull = 360;
    const int angle = (degrees % kFull + kFull) % kFull;
    return kQuarters[static_cast<std::size_t>((angle + 45) / 90 % 4)];
}

cairo_matrix_t FromPart(const std::array<double, 4>& leftTopRightBottom)
{
    const auto& [left, top, right, bottom] = leftTopRightBottom;
    const double across = 1.0 / (right - left);
    const double down = 1.0 / (bottom - top);
    return {across, 0.0, 0.0, down, -left * across, -top * down};
}

cairo_matrix_t ToPart(const std::array<double, 4>& leftTopRightBottom)
{
    const auto& [left, top, right, bottom] = leftTopRightBottom;
    return {right - left, 0.0, 0.0, bottom - top, left, top};
}

cairo_matrix_t Fitted(double aspectRatio, double frameAspectRatio)
{
    const double x = std::min(aspectRatio / frameAspectRatio, 1.0);
    const double y = std::min(frameAspectRatio / aspectRatio, 1.0);
    return {2.0 * x, 0.0, 0.0, -2.0 * y, -x, y};
}

Outline OutlineOf(const std::array<double, 4>& rectangle, const cairo_matrix_t& matrix)
{
    const auto& [left, top, right, bottom] = rectangle;
    Outline outline{{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    for (Point& point : outline)
        cairo_matrix_transform_point(&matrix, &point.x, &point.y);
    return outline;
}

Outline Within(FrameSize size, Outline outline)
{
    outline = Cut(outline, [](const Point& point) { return point.x; });
    outline = Cut(outline, [](const Point& point) { return point.y; });
    outline = Cut(outline, [=](const Point& point) { return size.width - point.x; });
    return Cut(outline, [=](const Point& point) { return size.height - point.y; });
}

} // namespace kv
