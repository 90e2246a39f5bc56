#include "engine/media/MediaInformation.h"

#include "platform/automation/Bstr.h"

#include <algorithm>

namespace kv {

HRESULT CMediaInformation::Open(BSTR bstrSource)
{
    return Guarded([&] {
        const SectionLock lock(m_section);
        m_source.reset();
        m_source.emplace(View(bstrSource));
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
    if (!m_source) return ZXE_E_NOT_OPEN;
    if ((lKind != ZXM_STREAM_PICTURE && lKind != ZXM_STREAM_VIDEO) || lIndex < 0) return ZXE_E_NO_STREAM;
    LONG index = 0;
    for (const PictureStream& picture : m_source->media.pictures) {
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
    if (!m_source) return ZXE_E_NOT_OPEN;
    *pdSeconds = m_source->media.duration;
    return S_OK;
}

HRESULT CMediaInformation::get_AspectRatio(double* pdAspectRatio)
{
    if (!pdAspectRatio) return E_POINTER;
    *pdAspectRatio = 0.0;
    const SectionLock lock(m_section);
    if (!m_source) return ZXE_E_NOT_OPEN;
    if (m_source->media.pictures.empty()) return ZXE_E_NO_STREAM;
    *pdAspectRatio = m_source->media.pictures.front().aspectRatio;
    return S_OK;
}

HRESULT CMediaInformation::GetFrame(double dSeconds, ULONG ulWidth, ULONG ulHeight, ULONG* pulWidth, ULONG* pulHeight,
                                    ULONG* pulStride, SAFEARRAY** ppPixels)
{
    for (ULONG* out : {pulWidth, pulHeight, pulStride}) {
        if (out) *out = 0;
    }
    if (ppPixels) *ppPixels = nullptr;
    if (!pulWidth || !pulHeight || !pulStride || !ppPixels) return E_POINTER;
    if (std::max(ulWidth, ulHeight) > static_cast<ULONG>(kMaxBitmapSide)) return E_INVALIDARG;
    return Guarded([&] {
        const SectionLock lock(m_section);
        if (!m_source) return ZXE_E_NOT_OPEN;
        if (!m_source->frames) m_source->frames.emplace(m_source->file, m_source->media);
        const Bitmap bitmap =
            m_source->frames->FrameAt(dSeconds, static_cast<int>(ulWidth), static_cast<int>(ulHeight));
        SafeArray bytes = BytesOf(bitmap);
        *pulWidth = static_cast<ULONG>(bitmap.width);
        *pulHeight = static_cast<ULONG>(bitmap.height);
        *pulStride = *pulWidth * sizeof(std::uint32_t);
        *ppPixels = bytes.Detach();
        return S_OK;
    });
}

} // namespace kv
