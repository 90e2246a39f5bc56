#pragma once
// The one table that maps element names to kinds of nodes, both ways.

#include "KVProjectData/tree/NodeType.h"

namespace kv {

/// Each such element creates a new object when it is loaded.
inline constexpr ULONG kElementItem = 0x1;
/// The children of such an element are not read.
inline constexpr ULONG kElementLeaf = 0x100;

struct ElementRow {
    std::string_view name;
    NodeType type;
    ULONG flags;

    constexpr bool Item() const { return flags & kElementItem; }
    constexpr bool Leaf() const { return flags & kElementLeaf; }
};

/// By the whole name, case-sensitive; null for a name that is not in the table.
const ElementRow* FindElement(std::string_view name);

/// The first row of a type; null for a type that has none.
const ElementRow* FindElement(NodeType type);

/// The element name of a disc command; empty for a code that has none.
std::string_view CommandElementName(LONG command);

} // namespace kv
