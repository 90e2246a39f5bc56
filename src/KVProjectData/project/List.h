#pragma once
// The lists of a project: titles, menus, data files.

#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/NodeList.h"

namespace kv {

class CKVList final : public CNodeList {
public:
    explicit CKVList(NodeType type) : CNodeList(type) {}

    /// A list is reached through its owner alone.
    IUnknown* Identity() override { return nullptr; }

    void Attributes(AttributeArchive& archive) override { archive.OnlyWrite("NumItems", ChildCount()); }
};

} // namespace kv
