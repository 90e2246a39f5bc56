#pragma once
// The media information component.

#include "KVProjectData/Engine.h"
#include "engine/MediaProbe.h"
#include "platform/com/Object.h"
#include "platform/system/CriticalSection.h"

#include <optional>

namespace kv {

class CMediaInformation final : public Object<IZXMediaInformation> {
public:
    using Object::Object;

    HRESULT Open(BSTR bstrSource) override;
    HRESULT GetVideoProperties(LONG lKind, LONG lIndex, ULONG* pulWidth, ULONG* pulHeight,
                               double* pdFrameRate) override;
    HRESULT get_Duration(double* pdSeconds) override;

private:
    CriticalSection m_section;
    /// Empty until a source was opened.
    std::optional<MediaProperties> m_media;
};

} // namespace kv
