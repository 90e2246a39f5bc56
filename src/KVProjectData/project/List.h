#pragma once
// The lists of a project: titles, menus, data files.

#include "KVProjectData/persistence/AttributeArchive.h"
#include "KVProjectData/tree/NodeList.h"

namespace kv {

class CKVList final : public ArchivedNode<CKVList, CNodeList> {
public:
    explicit CKVList(NodeType type) : ArchivedNode(type) {}

    /// A list is reached through its owner alone.
    IUnknown* Identity() override { return nullptr; }

    template <class Archive>
    void Attributes(Archive& archive)
    {
        archive.OnlyWrite("NumItems", ChildCount());
    }
};

} // namespace kv
