#include "KVProjectData/undo/ListState.h"

#include <algorithm>

namespace kv {

CKVListState::CKVListState(CNodeList& list, ListChange change, CProjectNode& child, LONG index)
    : m_list(list), m_childID(child.ID()), m_index(index)
{
    switch (change) {
    case ListChange::Add:
        m_turn = Turn::Remove;
        break;
    case ListChange::Remove:
        m_turn = Turn::Reinsert;
        m_held = child.Identity();
        m_child = child.Link();
        break;
    case ListChange::Move:
        m_turn = Turn::Move;
        break;
    }
}

HRESULT CKVListState::Exchange()
{
    auto* list = static_cast<CNodeList*>(m_list.Find());
    if (!list) return S_FALSE;
    switch (m_turn) {
    case Turn::Reinsert:
        return Reinsert(*list);
    case Turn::Remove:
        return Remove(*list);
    case Turn::Move:
        return Move(*list);
    }
    return S_FALSE;
}

HRESULT CKVListState::Reinsert(CNodeList& list)
{
    CProjectNode* child = *m_child;
    // Edits that were not recorded may have shortened the list, or brought the child back already.
    if (child->Parent() || list.Adopt(*child, std::min(m_index, list.ChildCount()), false) < 0) return S_FALSE;
    child->AttachEffect();
    m_turn = Turn::Remove;
    m_held.Reset();
    return S_OK;
}

HRESULT CKVListState::Remove(CNodeList& list)
{
    LONG index = -1;
    CProjectNode* child = list.FindChildByID(m_childID, &index);
    if (!child) return S_FALSE;
    m_child = child->Link();
    child->DetachEffect();
    m_held = list.TakeOut(index);
    m_index = index;
    m_turn = Turn::Reinsert;
    return S_OK;
}

HRESULT CKVListState::Move(CNodeList& list)
{
    LONG from = -1;
    if (!list.FindChildByID(m_childID, &from)) return S_FALSE;
    const HRESULT moved = list.MoveChild(from, std::min(m_index, list.ChildCount() - 1));
    m_index = from;
    return moved;
}

} // namespace kv
