#pragma once
// Undo of an edit of a list.

#include "KVProjectData/menus/MenuButtonImpl.h"
#include "KVProjectData/tree/NodeList.h"
#include "KVProjectData/undo/NodeImage.h"
#include "KVProjectData/undo/StateRecord.h"

#include <optional>

namespace kv {

/// While the child is out of the list, the record keeps it alive.
class CKVListState final : public StateRecord<CKVListState, 103, CNodeList> {
public:
    /// Of an edit that is about to take the child out, or that has put it in or moved it; `index` is its place, for a
    /// move the one it came from.
    CKVListState(CNodeList& list, ListChange change, CProjectNode& child, LONG index);

private:
    /// What the record does in its next turn.
    enum class Turn : ULONG { Reinsert = 0, Remove = 1, Move = 2 };

    HRESULT Exchange(CNodeList& list, DrivingUndo& driving) override;
    HRESULT TakeTurn(CNodeList& list, CProjectNode& child);
    void ReportTo(CNodeList& list, DrivingUndo& driving) override;
    HRESULT Reinsert(CNodeList& list, CProjectNode& child);
    HRESULT Remove(CNodeList& list, CProjectNode& child);
    HRESULT Move(CNodeList& list, CProjectNode& child);

    const RecordedNode<> m_child;
    const bool m_removes;
    /// The edit took the child out.
    Turn m_turn;
    LONG m_index;
    /// The child to insert again; empty while it is in the list.
    ComPtr<IUnknown> m_held;
    /// Of an element that is in the list: what it was outside of it. When it is taken out by undo or redo, its effect
    /// tells neither that nor what it is to become: a removed one is made again what it was; one that came in keeps
    /// what it holds itself, and gets back what it handed to its effect.
    std::optional<NodeImage> m_outside;
    /// Of the button whose elements the list holds.
    std::optional<CMenuButtonImpl::Stand> m_stand;
};

} // namespace kv
