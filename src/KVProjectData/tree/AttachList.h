#pragma once
// What is left to do when storyboards have undone or redone their part.

#include "KVProjectData/tree/NodeReference.h"

#include <vector>

namespace kv {

/// Nodes whose effects are bound anew after an undo of the storyboard.
class CAttachList {
public:
    void Add(CProjectNode& node) { m_nodes.emplace_back(node); }
    /// Empties the list for a new step.
    void Restart() { m_nodes.clear(); }

    /// Binds every listed node's effect and empties the list.
    void Run()
    {
        for (const auto& node : std::exchange(m_nodes, {}))
            if (const auto object = node.Hold()) (*node).AttachEffect();
    }

private:
    std::vector<NodeReference<CProjectNode>> m_nodes;
};

} // namespace kv
