#pragma once
// What a still picture tells of how it was taken.

#include "engine/media/Orientation.h"

namespace kv {

/// How a picture is shown by the Exif data of a JPEG or PNG file; upright where there are none. Reads from the start of
/// the file, and leaves it there.
Orientation ReadExifOrientation(AVIOContext& input);

} // namespace kv
