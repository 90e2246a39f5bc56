#include "KVProjectData/undo/ListState.h"

#include "KVProjectData/tree/LineageLock.h"

#include <algorithm>

namespace kv {
namespace {

/// A list is the owner's, and works inside the owner's section: the project's, or those from the list up to the menu.
CProjectNode& LowestHeld(CNodeList& list)
{
    CProjectNode* owner = list.Parent();
    return owner && owner->Type() == typeProject ? *owner : list;
}

/// Null for a list that is not a button's.
CMenuButtonImpl* HolderOf(const CNodeList& list)
{
    return dynamic_cast<CMenuButtonImpl*>(list.Parent());
}

} // namespace

CKVListState::CKVListState(CNodeList& list, ListChange change, CProjectNode& child, LONG index)
    : StateRecord(list), m_child(child), m_removes(change == ListChange::Remove), m_index(index)
{
    if (const CMenuButtonImpl* button = HolderOf(list)) m_stand = button->PresentStand();
    switch (change) {
    case ListChange::Add:
        m_turn = Turn::Remove;
        if (list.Type() == typeElementList) m_outside.emplace(child);
        break;
    case ListChange::Remove:
        m_turn = Turn::Reinsert;
        m_held = child.Identity();
        break;
    case ListChange::Move:
        m_turn = Turn::Move;
        break;
    }
}

HRESULT CKVListState::Exchange(CNodeList& list, DrivingUndo& driving)
{
    CProjectNode* child = m_child.Find(driving);
    if (!child) return S_FALSE;
    const LineageLock lock(LowestHeld(list));
    // Edits that were not recorded may have taken the child out, or brought it back already.
    if (child->Parent() != (m_turn == Turn::Reinsert ? nullptr : &list)) return S_FALSE;
    CMenuButtonImpl* const button = m_stand ? HolderOf(list) : nullptr;
    if (!button) return TakeTurn(list, *child);
    const CMenuButtonImpl::Stand before = button->PresentStand();
    const HRESULT result = TakeTurn(list, *child);
    if (SUCCEEDED(result)) button->ReturnStand(std::exchange(*m_stand, before));
    return result;
}

HRESULT CKVListState::TakeTurn(CNodeList& list, CProjectNode& child)
{
    switch (m_turn) {
    case Turn::Reinsert:
        return Reinsert(list, child);
    case Turn::Remove:
        return Remove(list, child);
    case Turn::Move:
        return Move(list, child);
    }
    return S_FALSE;
}

void CKVListState::ReportTo(CNodeList& list, DrivingUndo& driving)
{
    if (const CProjectNode* child = m_child.Find(driving)) ReportChange(list, child->ID());
}

HRESULT CKVListState::Reinsert(CNodeList& list, CProjectNode& child)
{
    if (list.Type() == typeElementList) m_outside.emplace(child);
    // The list may have become shorter.
    list.Adopt(child, std::min(m_index, list.ChildCount()), false);
    AttachNowOrLater(child);
    m_turn = Turn::Remove;
    m_held.Reset();
    return S_OK;
}

HRESULT CKVListState::Remove(CNodeList& list, CProjectNode& child)
{
    m_index = list.IndexOf(child, m_index);
    CMenuElementImpl* const element = m_outside && !m_removes ? ElementOf(child) : nullptr;
    element ? element->ForgetEffect() : static_cast<void>(child.DetachEffect());
    m_held = list.TakeOut(m_index);
    m_turn = Turn::Reinsert;
    if (!m_outside) return S_OK;
    // The child is out all the same.
    Guarded([this] {
        m_removes ? m_outside->Restore() : m_outside->RestoreXml();
        return S_OK;
    });
    m_outside.reset();
    return S_OK;
}

HRESULT CKVListState::Move(CNodeList& list, CProjectNode& child)
{
    const LONG to = std::min(m_index, list.ChildCount() - 1);
    m_index = list.IndexOf(child, to);
    return list.MoveChild(m_index, to);
}

} // namespace kv
