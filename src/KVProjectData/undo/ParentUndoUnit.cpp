#include "KVProjectData/undo/ParentUndoUnit.h"

#include <algorithm>

namespace kv {

HRESULT CStdOleParentUndoUnit::Open(IOleParentUndoUnit* parent)
{
    if (m_state == UAS_BLOCKED) return S_OK;
    if (m_openChild) return m_openChild->Open(parent);
    m_openChild = parent;
    return S_OK;
}

HRESULT CStdOleParentUndoUnit::Close(IOleParentUndoUnit* parent, BOOL commit)
{
    if (m_state == UAS_BLOCKED) return S_OK;
    if (!m_openChild) return commit ? S_FALSE : Do(nullptr);

    const HRESULT closed = m_openChild->Close(parent, commit);
    const bool isOpenChild = IsSameObject(m_openChild.Get(), parent);
    if (closed == S_OK) {
        // Either a unit further within was closed, or the child has rolled itself back.
        if (isOpenChild) m_openChild.Reset();
        return S_OK;
    }
    if (!isOpenChild) return E_INVALIDARG;
    if (commit) return CloseOpenChild();
    m_openChild.Reset();
    return S_OK;
}

HRESULT CStdOleParentUndoUnit::CloseOpenChild()
{
    return Guarded([&] {
        ComPtr<IOleUndoUnit> unit;
        const HRESULT asked = m_openChild->QueryInterface(IOleUndoUnit::IID, unit.PutVoid());
        if (FAILED(asked) && asked != E_NOINTERFACE) return asked;
        if (unit) m_children.push_back(std::move(unit));
        m_openChild.Reset();
        return S_OK;
    });
}

void CStdOleParentUndoUnit::EndOpenChild()
{
    if (m_openChild) CloseOpenChild();
    m_openChild.Reset();
}

HRESULT CStdOleParentUndoUnit::Add(IOleUndoUnit* unit)
{
    if (m_state == UAS_BLOCKED) return S_OK;
    if (m_openChild) return m_openChild->Add(unit);
    if (!unit) return E_POINTER;
    return Guarded([&] {
        m_children.emplace_back(unit);
        return S_OK;
    });
}

HRESULT CStdOleParentUndoUnit::FindUnit(IOleUndoUnit* unit)
{
    if (!unit) return S_FALSE;
    const auto isUnit = [&](const auto& child) { return IsSameObject(child.Get(), unit); };
    if (std::ranges::any_of(m_children, isUnit)) return S_OK;
    for (const auto& child : m_children) {
        ComPtr<IOleParentUndoUnit> parent;
        const HRESULT asked = child->QueryInterface(IOleParentUndoUnit::IID, parent.PutVoid());
        if (FAILED(asked) && asked != E_NOINTERFACE) return asked;
        if (parent && parent->FindUnit(unit) == S_OK) return S_OK;
    }
    return S_FALSE;
}

HRESULT CStdOleParentUndoUnit::GetParentState(DWORD* state)
{
    if (!state) return E_POINTER;
    *state = m_state;
    return S_OK;
}

HRESULT CStdOleParentUndoUnit::Do(IOleUndoManager* manager)
{
    const DWORD before = std::exchange(m_state, UAS_BLOCKED);
    if (manager) manager->Open(this);
    const auto run = [manager](const ComPtr<IOleUndoUnit>& child) { child->Do(manager); };
    if (m_newestFirst) {
        std::for_each(m_children.rbegin(), m_children.rend(), run);
    } else {
        std::for_each(m_children.begin(), m_children.end(), run);
    }
    m_state = before;
    m_newestFirst = !m_newestFirst;
    if (manager) manager->Close(this, true);
    return S_OK;
}

HRESULT CStdOleParentUndoUnit::EnumChildren(IEnumOleUndoUnits** ppEnum)
{
    if (!ppEnum) return E_POINTER;
    *ppEnum = nullptr;
    return Guarded(
        [&] { return ComPtr<IEnumOleUndoUnits>(Make<EnumChildUnits>(Controlling(), m_children)).CopyTo(ppEnum); });
}

void CStdOleParentUndoUnit::RemoveUnitsOf(const void* owner, DrivingUndo& driving)
{
    UnitStack others;
    others.reserve(m_children.size());
    for (const auto& child : m_children) {
        const auto owned = Query<IOwnedUndoUnit>(child);
        const HRESULT belongs = owned ? owned->BelongsTo(owner) : S_FALSE;
        ThrowIfFailed(belongs);
        if (belongs == S_OK) {
            driving.Keep(child);
        } else {
            others.push_back(child);
        }
    }
    m_children.swap(others);
}

void CStdOleParentUndoUnit::Empty()
{
    // What the units hold may end only when they are gone from here.
    UnitStack dropped;
    dropped.swap(m_children);
}

} // namespace kv
