#pragma once
// An effect of a production: what stands on one of its layers for a span of time.

#include "engine/storyboard/Faces.h"

namespace kv {

class CEffect final
    : public Object<Item, IEffectInfo, IEffectLayer, SubObjectFace, IParentProduction, SourceFace, NativeInfoFace> {
public:
    CEffect(std::shared_ptr<Storyboard> board, LONG id, LONG type, ItemState state, Leftovers rest = {});

    HRESULT get_EffectID(LONG* plEffectID) override { return Give(ID(), plEffectID); }
    HRESULT get_Layer(LONG* plLayer) override { return Give(State().layer, plLayer); }
    HRESULT put_Layer(LONG lLayer) override;
    HRESULT get_Type(LONG* plType) override { return Give(m_type, plType); }
    HRESULT get_Kind(LONG* plKind) override { return Give(ShowsMedia() ? ZXE_KIND_MEDIA : 0, plKind); }
    HRESULT get_GroupID(LONG* plGroupID) override;
    HRESULT SetGroupID(LONG lGroupID) override;
    HRESULT get_MaskFile(BSTR* pbstrFileName) override { return m_mask.get_FileName(pbstrFileName); }
    HRESULT SetMaskFile(BSTR bstrFileName, LONG lKind) override;
    HRESULT GetSourceObject(IUnknown** ppSource) override;
    HRESULT GetParameterDocument(IXMLDOMNode** ppDocument) override;
    HRESULT SetParameterDocument(IXMLDOMNode* pDocument, VARIANT_BOOL bRefresh) override;

    HRESULT get_ParentProduction(IUnknown** ppProduction) override;

    LONG Type() const { return m_type; }
    bool ShowsMedia() const { return m_type == ZXE_EFFECT_OVERLAY; }

    LONG Enter(BoardContents& contents, LONG index) override;
    LONG Where(const BoardContents& contents) const override;
    void Leave(BoardContents& contents) override;
    void Put(BoardContents& contents, ItemState state) override;
    void TellPlaced(ProductionSinks& sinks, LONG where, bool added) const override;
    void TellChanged(ProductionSinks& sinks, LONG where, Origin origin) const override;

protected:
    /// ISourceFile and INativeInfo only of an effect that shows media.
    HRESULT FindInterface(REFIID iid, void** out) override;

private:
    Item& Self() override { return *this; }
    NativeAudio& Part() override { return m_audio; }

    const LONG m_type;
    NativeAudio m_audio{*this};
    MaskSource m_mask{*this};
};

} // namespace kv
