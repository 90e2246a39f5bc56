#pragma once
// The media files that menu elements show, by the engine's media information.

#include "KVProjectData/Engine/Media.h"
#include "platform/com/ComPtr.h"

#include <string_view>

namespace kv {

/// Pixels.
struct PictureExtent {
    LONG width = 0;
    LONG height = 0;
};

// These throw Error with the engine's result.

ComPtr<IZXMediaInformation> NewMediaInformation();
/// The source may begin with a content macro.
void OpenMedia(IZXMediaInformation& media, std::u16string_view source);
/// Of what is open.
PictureExtent PictureSize(IZXMediaInformation& media);
PictureExtent PictureSize(std::u16string_view source);

/// Width to height of a source; `unknown` for one that cannot be measured.
double PictureAspect(std::u16string_view source, double unknown);

} // namespace kv
