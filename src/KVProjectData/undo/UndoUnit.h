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
    /// Makes a unit and owns its first reference. Throws on lack of memory.
    template <class... Arguments>
    static ComPtr<Derived> Create(Bstr description, Arguments&&... arguments)
    {
        auto unit = Make<Derived>(std::forward<Arguments>(arguments)...);
        unit->SetDescription(std::move(description));
        return unit;
    }

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
            *description = Bstr::Copy(m_description.Get());
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
    HRESULT AddTo(IOleUndoManager* manager) { return manager ? manager->Add(Query<IOleUndoUnit>(this).Get()) : S_OK; }

private:
    Bstr m_description;
    const CLSID& m_clsid;
};

} // namespace kv
