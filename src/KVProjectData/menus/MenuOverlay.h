#pragma once
// A picture or a clip on a menu or in a button.

#include "KVProjectData/Engine/Media.h"
#include "KVProjectData/IKVMenuOverlay.h"
#include "KVProjectData/menus/MenuElementNode.h"
#include "KVProjectData/menus/MenuOverlayImpl.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

namespace kv {

class CKVMenuOverlay final : public MenuElementNode<typeOverlay, CMenuOverlayImpl, Object<Dual<IKVMenuOverlay>>> {
public:
    HRESULT GetSize(float* pwidth, float* pHeight) override;
    HRESULT SetSize(float width, float height) override;
    HRESULT get_Source(BSTR* pVal) override;
    HRESULT put_Source(BSTR newVal) override;
    HRESULT get_AlphaMask(BSTR* pVal) override;
    HRESULT put_AlphaMask(BSTR newVal) override;
    HRESULT get_Highlight(OverlayHighlight* pVal) override { return Tell(pVal, "pHLI", m_highlight); }
    HRESULT put_Highlight(OverlayHighlight newVal) override { return Put(m_highlight, newVal, Undo, Fires(801)); }
    HRESULT get_InPoint(double* pVal) override;
    HRESULT put_InPoint(double newVal) override;
    HRESULT get_OutPoint(double* pVal) override;
    HRESULT put_OutPoint(double newVal) override;
    HRESULT get_Label(BSTR* pVal) override { return Tell(pVal, "pbstrLabel", m_label); }
    HRESULT put_Label(BSTR newVal) override;
    HRESULT get_StillImage(VARIANT_BOOL* pVal) override { return Tell(pVal, "pbStillImage", m_stillImage); }
    HRESULT put_StillImage(VARIANT_BOOL newVal) override;
    HRESULT SetSourceType(SourceTypes type, LONG ID) override;
    HRESULT GetSourceType(SourceTypes* pType, LONG* pID) override;
    KV_PROPERTY(LONG, PrivateId, m_privateID, Undo, Fires(805))
    HRESULT get_DynamicScalingFactor(double* pVal) override;
    HRESULT put_DynamicScalingFactor(double newVal) override;
    HRESULT SetMaskSize(double dblMaskX, double dblMaskY) override;
    HRESULT GetMaskSize(double* pX, double* pY) override;
    HRESULT get_ZoomSource(VARIANT_BOOL* pVal) override { return Tell(pVal, "pbZoomSource", m_zoomSource); }
    HRESULT put_ZoomSource(VARIANT_BOOL newVal) override
    {
        return Put(m_zoomSource, newVal == VARIANT_TRUE, Undo, Fires(813));
    }
    HRESULT get_ZoomMask(VARIANT_BOOL* pVal) override { return Tell(pVal, "pbZoomMask", m_zoomMask); }
    HRESULT put_ZoomMask(VARIANT_BOOL newVal) override
    {
        return Put(m_zoomMask, newVal == VARIANT_TRUE, Undo, Fires(814));
    }
    HRESULT SetSourceScale(double x, double y) override;
    HRESULT GetSourceScale(double* pX, double* pY) override;
    HRESULT ClearForResolve() override;
    HRESULT get_SourceRotation(LONG* pVal) override;
    HRESULT put_SourceRotation(LONG newVal) override;
    HRESULT RefreshSource() override;
    HRESULT ExtractThumbnail(BYTE** ppBits, LONG* pWidth, LONG* pHeight) override;
    HRESULT GetCropedRect(double* pCX, double* pCY, double* pSX, double* pSY) override;
    HRESULT SetCropedRect(double cx, double cy, double sx, double sy) override;
    HRESULT GetSourceMediaSize(LONG* pW, LONG* pH) override;
    HRESULT TryGetSourceMediaSize(LONG* pW, LONG* pH) override;
    KV_GETTER(OverlayTypes, OverlayType, m_overlayType)
    HRESULT put_OverlayType(OverlayTypes newVal) override;

    HRESULT Copy(IKVMenuElement** pp) override;

    bool CountsAsHighlight() const override { return m_highlight != OverlayHLI_None; }
    void Attributes(AttributeArchive& archive) override;

private:
    /// As it stands at the time.
    Bstr Source() const;
    /// The media information with the source open, kept for the next call.
    IZXMediaInformation& OpenSource();

    OverlayHighlight m_highlight = OverlayHLI_None;
    Bstr m_label;
    SourceTypes m_sourceType = Source_None;
    LONG m_privateID = 0;
    LONG m_sourceID = 0;
    bool m_stillImage = false;
    OverlayTypes m_overlayType = OverlayType_Generic;
    double m_dynamicScalingFactor = 0;
    bool m_zoomSource = false;
    bool m_zoomMask = false;
    double m_sourceScaleX = -1;
    double m_sourceScaleY = -1;
    ComPtr<IZXMediaInformation> m_media;
    /// What is open there.
    Bstr m_openSource;
    bool m_thumbnailStale = false;
};

} // namespace kv
