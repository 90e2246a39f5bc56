#pragma once
// Walks the tree depth first, a node before its children.

#include "KVProjectData/tree/ProjectNode.h"

namespace kv {

class CVisitor {
public:
    virtual ~CVisitor() = default;

    /// Visits a node and everything below it inside its section. What VisitNode returns does not stop this walk.
    virtual HRESULT Visit(CProjectNode& node, ULONG flags);
    virtual HRESULT VisitNode(CProjectNode& node, ULONG flags) = 0;

protected:
    /// Levels below the start of the walk, counted while a node is visited.
    LONG m_depth = 0;
};

} // namespace kv
