#pragma once
// A production of the storyboard engine: the interfaces of a storyboard.

#include "KVProjectData/Engine.h"
#include "engine/storyboard/ProductionSinks.h"
#include "engine/storyboard/Storyboard.h"
#include "engine/storyboard/UndoGroup.h"
#include "platform/com/Object.h"

#include <memory>

namespace kv {

class CProduction final : public Object<IZXEProductionData, IEditData, IProductionInfo, IProductionObjects,
                                        IZXEProductionPersist, IZXEProductionMarkup, IZXEProductionFrames,
                                        IZXEProductionNotify, ConnectionPointContainer, IStoryboardOwner> {
public:
    using Object::Object;

    HRESULT GetProductionObj(IUnknown** ppProduction) override;
    HRESULT GetPanelCount(LONG* plCount) override;
    HRESULT GetPanelBaseObject(LONG lIndex, IUnknown** ppPanel) override;
    HRESULT DeletePanel(LONG lIndex) override;
    HRESULT get_UseSourceAspectRatio(VARIANT_BOOL* pVal) override;
    HRESULT put_UseSourceAspectRatio(VARIANT_BOOL newVal) override;
    HRESULT Close() override { return m_board->Close(); }
    HRESULT GetSourceList(LONG lReserved1, LONG lReserved2, LONG lReserved3, SAFEARRAY** ppSources) override;
    HRESULT get_Flags(ULONG* pdwFlags) override;
    HRESULT ClearModified() override;
    HRESULT OpenUndoBlock() override;
    HRESULT CloseUndoBlock(VARIANT_BOOL bCommit) override;
    HRESULT AddUndoUnit(IUnknown* pUnit) override;
    HRESULT CanUndo(VARIANT_BOOL* pbCanUndo, BSTR* pbstrDescription) override;
    HRESULT CanRedo(VARIANT_BOOL* pbCanRedo, BSTR* pbstrDescription) override;
    HRESULT Undo() override;
    HRESULT Redo() override;

    HRESULT AddSourceFile(LONG lTrack, BSTR bstrSource, double dInPoint, double dOutPoint, LONG lPosition,
                          IUnknown** ppPanel) override;
    HRESULT AddProductionEffect(LONG lLayer, LONG lType, IXMLDOMNode* pParameters, BSTR bstrSource, LONG lReserved,
                                double dStart, IUnknown** ppEffect) override;
    HRESULT DeleteProductionEffect(LONG lLayer, LONG lEffectID) override;
    HRESULT AddProductionAudio(BSTR bstrSource, LONG lKind, double dStart, IUnknown** ppAudio) override;
    HRESULT DeleteProductionAudio(LONG lAudioID) override;

    HRESULT GetEffect(LONG lLayer, double dTime, IUnknown** ppEffect) override;
    HRESULT GetObject(LONG lKind, LONG lIndex, IUnknown** ppObject) override;

    HRESULT get_Duration(double* pdSeconds) override;
    HRESULT get_EditingFrameRate(double* pdFrameRate) override;
    HRESULT get_AspectRatio(double* pdAspectRatio) override;
    HRESULT put_AspectRatio(double dAspectRatio) override;
    HRESULT get_Stereoscopic(VARIANT_BOOL* pVal) override;
    HRESULT put_Stereoscopic(VARIANT_BOOL newVal) override;

    HRESULT Save(IXMLDOMElement* pElement, IZXEContentPaths* pPaths) override;
    HRESULT Load(IXMLDOMElement* pElement, IZXEContentPaths* pPaths) override;

    HRESULT SaveMarkup(IXMLDOMElement* pElement, IZXEContentPaths* pPaths, ZXEMarkupTarget* pTarget) override;

    HRESULT GetFrame(double dSeconds, ULONG ulWidth, ULONG ulHeight, ULONG* pulWidth, ULONG* pulHeight,
                     ULONG* pulStride, SAFEARRAY** ppPixels) override;

    HRESULT Notify(ULONG ulEvent, LONG lFirst, LONG lSecond) override;

    Storyboard& Board() override { return *m_board; }

private:
    /// For its owner to call through the interface; a class object must not take it for a step of creation.
    HRESULT Initialise() override { return m_board->Open(); }
    void FinalRelease() override { m_board->End(); }

    ProductionSinks m_sinks{*this};
    const std::shared_ptr<Storyboard> m_board = std::make_shared<Storyboard>(*this, m_sinks);
};

} // namespace kv
