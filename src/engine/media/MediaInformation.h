#pragma once
// The media information component.

#include "KVProjectData/Engine/Media.h"
#include "engine/media/FrameReader.h"
#include "engine/media/MediaFile.h"
#include "engine/media/MediaProbe.h"
#include "platform/com/Object.h"
#include "platform/system/CriticalSection.h"

#include <optional>

namespace kv {

class CMediaInformation final : public Object<IZXMediaInformation, IZXMediaFrames> {
public:
    using Object::Object;

    // IZXMediaInformation
    HRESULT Open(BSTR bstrSource) override;
    HRESULT GetVideoProperties(LONG lKind, LONG lIndex, ULONG* pulWidth, ULONG* pulHeight,
                               double* pdFrameRate) override;
    HRESULT get_Duration(double* pdSeconds) override;

    // IZXMediaFrames
    HRESULT get_AspectRatio(double* pdAspectRatio) override;
    HRESULT GetFrame(double dSeconds, ULONG ulWidth, ULONG ulHeight, ULONG* pulWidth, ULONG* pulHeight,
                     ULONG* pulStride, SAFEARRAY** ppPixels) override;

private:
    struct Source {
        explicit Source(std::u16string_view path) : file(path), media(Describe(file)) {}

        MediaFile file;
        const MediaProperties media;
        /// Made when the first picture is asked for.
        std::optional<FrameReader> frames;
    };

    CriticalSection m_section;
    /// Empty until a source was opened.
    std::optional<Source> m_source;
};

} // namespace kv
