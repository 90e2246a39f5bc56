#pragma once
// What a media file holds, found out from its content.

#include "platform/com/BaseTypes.h"

#include <string_view>
#include <vector>

namespace kv {

class MediaFile;

/// A stream of moving pictures, or a still picture.
struct PictureStream {
    /// Pixels as stored, but turned as it is shown.
    ULONG width;
    ULONG height;
    /// Frames per second; 0 for a still picture and where it is not known.
    double frameRate;
    /// Width to height as it is shown.
    double aspectRatio;
    bool moving;
    /// Its position among all streams of the file.
    int stream;
};

struct MediaProperties {
    /// Seconds; 0 for a still picture and where it is not known.
    double duration = 0.0;
    /// The one that players would show first, then the others in the order of the file.
    std::vector<PictureStream> pictures;
};

/// Throws Error(ZXE_E_NOT_MEDIA) for what holds neither pictures nor sound.
MediaProperties Describe(const MediaFile& file);

/// Opens the file (see MediaFile) for its description alone.
MediaProperties ProbeMedia(std::u16string_view path);

} // namespace kv
