#pragma once
// What a media file holds, found out from its content.

#include "platform/com/BaseTypes.h"

#include <string_view>
#include <vector>

namespace kv {

/// A stream of moving pictures, or a still picture.
struct PictureStream {
    ULONG width;
    ULONG height;
    /// Frames per second; 0 for a still picture and where it is not known.
    double frameRate;
    bool moving;
};

struct MediaProperties {
    /// Seconds; 0 for a still picture and where it is not known.
    double duration = 0.0;
    /// The one that players would show first, then the others in the order of the file.
    std::vector<PictureStream> pictures;
};

/// Reads a local file; either separator is understood. Only the content counts, not the name's ending; no
/// other file is opened, whatever the content asks for. Time and memory are bounded. Throws
/// Error(E_INVALIDARG) for an empty path, Error(ZXE_E_NOT_MEDIA) for what holds neither pictures nor sound.
MediaProperties ProbeMedia(std::u16string_view path);

} // namespace kv
