#pragma once
// The base of every undo unit.

#include "platform/automation/Bstr.h"
#include "platform/com/Object.h"
#include "platform/com/Persist.h"
#include "platform/undo/OleUndo.h"

namespace kv {

/// A unit of one type number, with a description. `Interface` is IOleUndoUnit or IOleParentUndoUnit; a unit may answer
/// for `Others` beside it.
template <class Derived, ULONG kUnitType, class Interface, class... Others>
class CStdOleUndoUnit : public Object<Interface, Others...> {
public:
    void SetDescription(Bstr description) { m_description = std::move(description); }

    /// E_INVALIDARG for null.
    HRESULT QueryInterface(REFIID iid, void** out) override
    {
        return out ? Object<Interface, Others...>::QueryInterface(iid, out) : E_INVALIDARG;
    }

    /// Null when the unit has none.
    HRESULT GetDescription(BSTR* description) override
    {
        if (!description) return E_POINTER;
        *description = nullptr;
        return Guarded([&] {
            *description = Description().Detach();
            return S_OK;
        });
    }

    /// The identity is null, except for a unit that is stored under a class of its own.
    HRESULT GetUnitType(CLSID* clsid, LONG* type) override
    {
        if (!clsid || !type) return E_POINTER;
        *clsid = m_clsid;
        *type = static_cast<LONG>(kUnitType);
        if (m_clsid == IID_NULL) {
            if (const auto stored = Query<IPersistStream>(this)) stored->GetClassID(clsid);
        }
        return S_OK;
    }

    HRESULT OnNextAdd() override { return S_OK; }

protected:
    explicit CStdOleUndoUnit(REFCLSID clsid = IID_NULL) : m_clsid(clsid) {}

    /// Hands this unit, which now goes the other way, to the manager that ran it; null for none.
    HRESULT AddTo(IOleUndoManager* manager) { return manager ? manager->Add(static_cast<Derived*>(this)) : S_OK; }

    virtual Bstr Description() const { return m_description; }

private:
    Bstr m_description;
    const CLSID& m_clsid;
};

} // namespace kv
