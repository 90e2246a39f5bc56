#pragma once
// A node that keeps its children alive: the lists of a project, a menu or a button, and command lists.

#include "KVProjectData/tree/UndoContext.h"

namespace kv {

class CNodeList : public CProjectNode {
public:
    /// Inserts a child and takes a reference for it; appends for an index below 0. Where it stands now; -1 for a bad
    /// index.
    LONG Adopt(CProjectNode& child, LONG index, bool assignID);

    /// Takes a child out and hands over the list's reference; empty for a bad index.
    ComPtr<IUnknown> TakeOut(LONG index);

    /// So many more children can be added without fail. Throws for lack of memory.
    void ReserveRoom(std::size_t count) { ReserveChildren(static_cast<std::size_t>(ChildCount()) + count); }

    /// Drops every child, the last one first.
    void DropAll();

    /// Keeps an edit of this list for undo, each in an open step; `child` stands at `index` in the list, which for a
    /// move is where it came from. True when kept.
    bool RecordChange(ListChange change, CProjectNode& child, LONG index, bool major = false);

    CNodeList* List() override { return this; }

protected:
    explicit CNodeList(NodeType type) : CProjectNode(type) {}
    ~CNodeList() override { DropAll(); }
};

} // namespace kv
