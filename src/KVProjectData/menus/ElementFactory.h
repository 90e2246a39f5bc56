#pragma once
// Makes menu elements by their kind.

#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/ComPtr.h"

namespace kv {

struct NewElement {
    ComPtr<IUnknown> object;
    CProjectNode* node = nullptr;
};

/// A new element, without an ID and in no list; empty for what is no kind of element.
NewElement CreateElement(NodeType type);

} // namespace kv
