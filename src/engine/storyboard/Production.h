#pragma once
// A production of the storyboard engine.

#include "KVProjectData/Engine.h"
#include "engine/storyboard/Panel.h"
#include "engine/storyboard/ProductionSinks.h"
#include "engine/storyboard/UndoHistory.h"
#include "platform/com/Object.h"

#include <vector>

namespace kv {

/// Sinks are told, and undo units run, while no lock is held.
class CProduction final
    : public Object<IZXEProductionData, IEditData, IProductionInfo, IZXEProductionNotify, ConnectionPointContainer> {
public:
    using Object::Object;

    HRESULT GetProductionObj(IUnknown** ppProduction) override;
    HRESULT GetPanelCount(LONG* plCount) override;
    HRESULT GetPanelBaseObject(LONG lIndex, IUnknown** ppPanel) override;
    HRESULT DeletePanel(LONG lIndex) override;
    HRESULT get_UseSourceAspectRatio(VARIANT_BOOL* pVal) override;
    HRESULT put_UseSourceAspectRatio(VARIANT_BOOL newVal) override;
    HRESULT Close() override;
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
    HRESULT AddProductionEffect(LONG, LONG, IXMLDOMNode*, BSTR, LONG, double, IUnknown**) override { return E_NOTIMPL; }
    HRESULT DeleteProductionEffect(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT AddProductionAudio(BSTR, LONG, double, IUnknown**) override { return E_NOTIMPL; }
    HRESULT DeleteProductionAudio(LONG) override { return E_NOTIMPL; }

    HRESULT get_Duration(double* pdSeconds) override;
    HRESULT get_EditingFrameRate(double* pdFrameRate) override;
    HRESULT get_AspectRatio(double* pdAspectRatio) override;
    HRESULT put_AspectRatio(double dAspectRatio) override;
    HRESULT get_Stereoscopic(VARIANT_BOOL* pVal) override;
    HRESULT put_Stereoscopic(VARIANT_BOOL newVal) override;

    HRESULT Notify(ULONG ulEvent, LONG lFirst, LONG lSecond) override;

private:
    /// For its owner to call through the interface; a class object must not take it for a step of creation.
    HRESULT Initialise() override;

    struct Settings {
        double aspectRatio = 4.0 / 3.0;
        bool useSourceAspectRatio = false;
        bool stereoscopic = false;
    };

    /// A panel that is to come to a place, or is to leave it; without a panel, the one in that place leaves.
    struct PanelEdit {
        ComPtr<CPanel> panel;
        LONG index;
        bool adds;
    };

    bool IsOpen();
    Settings GetSettings();

    template <class T>
    HRESULT PutSetting(T Settings::*setting, T value);

    /// Makes the edit and turns it into the one that takes it back. E_INVALIDARG for a place without a panel,
    /// E_UNEXPECTED when the panel to remove is not there any more.
    HRESULT Apply(PanelEdit& edit);

    /// Tells the sinks what can be undone from now on, and gives the result on.
    HRESULT UndoStateChanged(HRESULT result);

    CriticalSection m_section;
    bool m_open = false;
    bool m_modified = false;
    Settings m_settings;
    std::vector<ComPtr<CPanel>> m_panels;
    UndoHistory m_history;
    ProductionSinks m_sinks{*this};
};

} // namespace kv
