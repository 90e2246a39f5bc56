#include "KVProjectData/menus/ElementGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kv {

Corners Place(const Corners& corners, const Placement& placement)
{
    const double angle = placement.degrees * (-std::numbers::pi / 180.0);
    const double cosine = placement.degrees == 0 ? 1.0 : std::cos(angle);
    const double sine = placement.degrees == 0 ? 0.0 : std::sin(angle);
    Corners placed;
    std::ranges::transform(corners, placed.begin(), [&](const FloatPoint& corner) {
        const double x = corner.x * placement.aspect * placement.scale.x + placement.offset.x;
        const double y = corner.y * double{placement.scale.y} + placement.offset.y;
        return FloatPoint{
            static_cast<float>((x * cosine - y * sine) / placement.aspect + placement.position.x),
            static_cast<float>(x * sine + y * cosine + placement.position.y),
        };
    });
    return placed;
}

FloatRect ExtentOf(const Corners& corners)
{
    const auto [left, right] = std::ranges::minmax(corners, {}, &FloatPoint::x);
    const auto [bottom, top] = std::ranges::minmax(corners, {}, &FloatPoint::y);
    return {left.x, top.y, right.x, bottom.y};
}

FloatRect Union(const FloatRect& a, const FloatRect& b)
{
    if (a == FloatRect{}) return b;
    if (b == FloatRect{}) return a;
    return {std::min(a.fLeft, b.fLeft), std::max(a.fTop, b.fTop), std::max(a.fRight, b.fRight),
            std::min(a.fBottom, b.fBottom)};
}

bool IsSamePlace(const FloatPoint& a, const FloatPoint& b)
{
    constexpr float kClose = 1e-7F;
    return std::fabs(a.x - b.x) <= kClose && std::fabs(a.y - b.y) <= kClose;
}

} // namespace kv
