#pragma once
// Lists that gather nodes while an undo step is open.

#include "KVProjectData/tree/ProjectNode.h"

#include <vector>

namespace kv {

/// Nodes that an undo step has recorded. Not owning.
class CLockNodeList {
public:
    virtual ~CLockNodeList() = default;

    void Add(CProjectNode& node) { m_nodes.push_back(&node); }
    /// For a node that ends.
    void Forget(const CProjectNode& node) { std::erase(m_nodes, &node); }
    /// Empties the list for a new step.
    void Restart();

    /// Lets every listed node be recorded again.
    virtual void Run();

protected:
    std::vector<CProjectNode*> m_nodes;
};

/// Nodes whose effects are bound anew after an undo of the storyboard.
class CAttachList : public CLockNodeList {
public:
    /// Binds every listed node's effect and empties the list.
    void Run() override;
};

} // namespace kv
