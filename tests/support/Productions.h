#pragma once
// Productions as tests need them, beside those of the engine.

#include "KVProjectData/Engine/Production.h"

namespace kv::test {

/// A production that can be used, and nothing else.
class BareProduction : public IZXEProductionData {
public:
    HRESULT GetProductionObj(IUnknown**) override { return E_NOTIMPL; }
    HRESULT GetPanelCount(LONG*) override { return E_NOTIMPL; }
    HRESULT GetPanelBaseObject(LONG, IUnknown**) override { return E_NOTIMPL; }
    HRESULT DeletePanel(LONG) override { return E_NOTIMPL; }
    HRESULT get_UseSourceAspectRatio(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT put_UseSourceAspectRatio(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT Initialise() override { return S_OK; }
    HRESULT Close() override { return S_OK; }
    HRESULT GetSourceList(LONG, LONG, LONG, SAFEARRAY**) override { return E_NOTIMPL; }
    HRESULT get_Flags(ULONG*) override { return E_NOTIMPL; }
    HRESULT ClearModified() override { return S_OK; }
    HRESULT OpenUndoBlock() override { return E_NOTIMPL; }
    HRESULT CloseUndoBlock(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT AddUndoUnit(IUnknown*) override { return E_NOTIMPL; }
    HRESULT CanUndo(VARIANT_BOOL*, BSTR*) override { return E_NOTIMPL; }
    HRESULT CanRedo(VARIANT_BOOL*, BSTR*) override { return E_NOTIMPL; }
    HRESULT Undo() override { return E_NOTIMPL; }
    HRESULT Redo() override { return E_NOTIMPL; }

protected:
    ~BareProduction() = default;
};

} // namespace kv::test
