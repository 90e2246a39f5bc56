#include "engine/MediaInformation.h"

#include "platform/automation/Bstr.h"

namespace kv {

HRESULT CMediaInformation::Open(BSTR bstrSource)
{
    return Guarded([&] {
        const SectionLock lock(m_section);
        m_media.reset();
        m_media = ProbeMedia(View(bstrSource));
        return S_OK;
    });
}

HRESULT CMediaInformation::GetVideoProperties(LONG lKind, LONG lIndex, ULONG* pulWidth, ULONG* pulHeight,
                                              double* pdFrameRate)
{
    if (pulWidth) *pulWidth = 0;
    if (pulHeight) *pulHeight = 0;
    if (pdFrameRate) *pdFrameRate = 0.0;
    if (!pulWidth || !pulHeight || !pdFrameRate) return E_POINTER;
    const SectionLock lock(m_section);
    if (!m_media) return ZXE_E_NOT_OPEN;
    if ((lKind != ZXM_STREAM_PICTURE && lKind != ZXM_STREAM_VIDEO) || lIndex < 0) return ZXE_E_NO_STREAM;
    LONG index = 0;
    for (const PictureStream& picture : m_media->pictures) {
        if (lKind == ZXM_STREAM_VIDEO && !picture.moving) continue;
        if (index++ != lIndex) continue;
        *pulWidth = picture.width;
        *pulHeight = picture.height;
        *pdFrameRate = picture.frameRate;
        return S_OK;
    }
    return ZXE_E_NO_STREAM;
}

HRESULT CMediaInformation::get_Duration(double* pdSeconds)
{
    if (!pdSeconds) return E_POINTER;
    *pdSeconds = 0.0;
    const SectionLock lock(m_section);
    if (!m_media) return ZXE_E_NOT_OPEN;
    *pdSeconds = m_media->duration;
    return S_OK;
}

} // namespace kv
