#pragma once
// How the rows and columns of a picture that is stored stand to those of the picture that is shown.

#include "engine/media/FFmpeg.h"

#include <optional>

namespace kv {

/// A turn by quarters, with or without a flip: the direction of shown x and y that stored x, and stored y, grow in.
struct Orientation {
    int xx = 1;
    int xy = 0;
    int yx = 0;
    int yy = 1;

    /// Rows are shown as columns.
    bool Turned() const { return xx == 0; }
    bool Upright() const { return xx == 1 && yy == 1; }
};

/// From the stream's display matrix; the nearest turn by quarters. Nothing without one.
std::optional<Orientation> DisplayedOrientation(const AVStream& stream);

} // namespace kv
