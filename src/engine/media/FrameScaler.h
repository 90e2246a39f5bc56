#pragma once
// From decoded frames to bitmaps.

#include "engine/media/Bitmap.h"
#include "engine/media/FFmpeg.h"
#include "engine/media/Orientation.h"

namespace kv {

/// The frame itself, or, of one with alpha, a copy whose colours are multiplied by it: what is scaled must be, or the
/// colours of transparent pixels would show at the edges.
Frame Premultiplied(Frame frame);

/// A frame from `Premultiplied`, scaled to a size in the picture as it is shown. Throws Error(ZXE_E_NO_FRAME) for a
/// frame that cannot be converted.
Bitmap Scaled(const AVFrame& frame, const Orientation& orientation, int width, int height);

} // namespace kv
