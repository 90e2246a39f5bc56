#include "engine/storyboard/Panel.h"

#include <algorithm>

namespace kv {
namespace {

HRESULT Give(double value, double* out)
{
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
}

} // namespace

CPanel::CPanel(std::u16string_view source, double inPoint, double outPoint, MediaProperties media)
    : m_source(source), m_inPoint(inPoint), m_outPoint(outPoint), m_media(std::move(media))
{
}

HRESULT CPanel::get_FileName(BSTR* pbstrFileName)
{
    if (!pbstrFileName) return E_POINTER;
    *pbstrFileName = nullptr;
    return Guarded([&] {
        *pbstrFileName = Bstr::Copy(m_source.Get());
        return S_OK;
    });
}

HRESULT CPanel::get_InPoint(double* pdSeconds)
{
    return Give(m_inPoint, pdSeconds);
}

HRESULT CPanel::get_OutPoint(double* pdSeconds)
{
    return Give(OutPoint(), pdSeconds);
}

HRESULT CPanel::get_Length(double* pdSeconds)
{
    return Give(m_media.duration, pdSeconds);
}

double CPanel::OutPoint() const
{
    return m_outPoint > 0.0 ? m_outPoint : m_media.duration;
}

double CPanel::Duration() const
{
    return std::max(OutPoint() - m_inPoint, 0.0);
}

double CPanel::FrameRate() const
{
    const auto moving = std::ranges::find_if(m_media.pictures, &PictureStream::moving);
    return moving == m_media.pictures.end() ? 0.0 : moving->frameRate;
}

} // namespace kv
