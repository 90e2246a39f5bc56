#pragma once
// One panel of a production. It never changes; an edit puts another one in its place.

#include "KVProjectData/Engine/Sources.h"
#include "engine/media/MediaProbe.h"
#include "platform/automation/Bstr.h"
#include "platform/com/Object.h"

namespace kv {

class CPanel final : public Object<ISourceFile> {
public:
    /// The points are seconds, valid ones as for IEditData::AddSourceFile; `media` is empty for a source that
    /// cannot be read.
    CPanel(std::u16string_view source, double inPoint, double outPoint, MediaProperties media);

    HRESULT get_FileName(BSTR* pbstrFileName) override;
    HRESULT get_InPoint(double* pdSeconds) override;
    HRESULT get_OutPoint(double* pdSeconds) override;
    HRESULT get_Length(double* pdSeconds) override;
    HRESULT put_FileName(BSTR) override { return E_NOTIMPL; }
    HRESULT put_InPoint(double) override { return E_NOTIMPL; }
    HRESULT put_OutPoint(double) override { return E_NOTIMPL; }
    HRESULT get_AspectRatio(double*) override { return E_NOTIMPL; }
    HRESULT get_Repeat(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT put_Repeat(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT get_Rotation(LONG*) override { return E_NOTIMPL; }
    HRESULT put_Rotation(LONG) override { return E_NOTIMPL; }
    HRESULT GetPanZoom(IXMLDOMNode**) override { return E_NOTIMPL; }
    HRESULT SetPanZoom(IXMLDOMNode*) override { return E_NOTIMPL; }

    BSTR Source() const { return m_source.Get(); }

    /// Seconds that the panel plays.
    double Duration() const;

    /// Frames per second; 0 for a source without moving pictures.
    double FrameRate() const;

private:
    double OutPoint() const;

    const Bstr m_source;
    const double m_inPoint;
    /// 0 for the end of the source.
    const double m_outPoint;
    const MediaProperties m_media;
};

} // namespace kv
