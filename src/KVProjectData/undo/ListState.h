#pragma once
// Undo of an edit of a list.

#include "KVProjectData/tree/NodeList.h"
#include "KVProjectData/undo/StateRecord.h"

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
    HRESULT Reinsert(CNodeList& list, CProjectNode& child);
    HRESULT Remove(CNodeList& list, CProjectNode& child);
    HRESULT Move(CNodeList& list, CProjectNode& child);

    const RecordedNode<> m_child;
    Turn m_turn;
    LONG m_index;
    /// The child to insert again; empty while it is in the list.
    ComPtr<IUnknown> m_held;
};

} // namespace kv
