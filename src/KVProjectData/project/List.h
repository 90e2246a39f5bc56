#pragma once
// The lists of a project: titles, menus, data files.

#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/NodeList.h"

namespace kv {

class CKVList final : public CNodeList {
public:
    explicit CKVList(NodeType type) : CNodeList(type) {}

    /// The project, which it is part of.
    IUnknown* Identity() override { return Parent()->Identity(); }

    void Attributes(AttributeArchive& archive) override { archive.OnlyWrite("NumItems", ChildCount()); }
};

} // namespace kv
