#pragma once
// Squares, frames and pixels: how what is drawn comes to its place.

#include "engine/render/Look.h"

#include <array>
#include <cairo.h>
#include <optional>
#include <vector>

namespace kv {

struct Point {
    double x;
    double y;
};

/// Points of a shape without notches, one after the other around it.
using Outline = std::vector<Point>;

/// Width and height of a frame in pixels.
struct FrameSize {
    int width;
    int height;
};

/// A map that first does the one, then the other.
cairo_matrix_t Then(const cairo_matrix_t& first, const cairo_matrix_t& second);

/// Nothing for a map that cannot be taken back, or that numbers do not hold.
std::optional<cairo_matrix_t> Inverse(const cairo_matrix_t& matrix);

/// From the square of what is placed to the frame, whose aspect ratio is given.
cairo_matrix_t Placed(const Placement& placement, double time, double span, double aspectRatio);

/// From the frame to its pixels.
cairo_matrix_t ToPixels(FrameSize size);

/// From a picture as it is stored, which runs from 0 to 1 from its top left on both axes, to the same when it is turned
/// to the nearest quarter, clockwise.
cairo_matrix_t Turned(int degrees);

/// Of the same kind of square, from a part of it to the whole.
cairo_matrix_t FromPart(const std::array<double, 4>& leftTopRightBottom);

/// And back.
cairo_matrix_t ToPart(const std::array<double, 4>& leftTopRightBottom);

/// From the same kind of square to the one of what is placed, which it fills in width or height with an aspect ratio
/// of its own.
cairo_matrix_t Fitted(double aspectRatio, double frameAspectRatio);

/// The outline that a rectangle (left, top, right, bottom) has behind a map.
Outline OutlineOf(const std::array<double, 4>& rectangle, const cairo_matrix_t& matrix);

/// The part of an outline that lies within the frame; without points when nothing does.
Outline Within(FrameSize size, Outline outline);

} // namespace kv
