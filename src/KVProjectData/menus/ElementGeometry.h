#pragma once
// The arithmetic of places and areas of menu elements.

#include "KVProjectData/Geometry.h"

#include <array>

namespace kv {

/// The corners of an element: top left, bottom left, bottom right, top right.
using Corners = std::array<FloatPoint, 4>;

/// An element's own square.
inline constexpr Corners kOwnSquare{{{-1, 1}, {-1, -1}, {1, -1}, {1, 1}}};

/// How an element stands in its menu.
struct Placement {
    /// Width to height of what is shown; elements turn in squares.
    double aspect = 1.0;
    FloatPoint scale{1, 1};
    /// From the point that the element turns about.
    FloatPoint offset{};
    /// Clockwise.
    float degrees = 0;
    /// The point that it turns about.
    FloatPoint position{};
};

Corners Place(const Corners& corners, const Placement& placement);

/// The smallest upright rectangle around the corners.
FloatRect ExtentOf(const Corners& corners);

/// The smallest rectangle around both; an empty one has no place.
FloatRect Union(const FloatRect& a, const FloatRect& b);

/// Whether two places are so close that going from one to the other is no move.
bool IsSamePlace(const FloatPoint& a, const FloatPoint& b);

inline FloatPoint operator+(const FloatPoint& a, const FloatPoint& b)
{
    return {a.x + b.x, a.y + b.y};
}

inline FloatPoint operator-(const FloatPoint& a, const FloatPoint& b)
{
    return {a.x - b.x, a.y - b.y};
}

} // namespace kv
