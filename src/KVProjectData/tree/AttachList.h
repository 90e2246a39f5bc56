#pragma once
// What is left to do when storyboards have undone or redone their part.

#include "KVProjectData/tree/NodeReference.h"

#include <mutex>
#include <vector>

namespace kv {

/// Nodes whose effects are bound anew after an undo of the storyboard. Any thread may add some.
class CAttachList {
public:
    /// Throws Error for lack of memory.
    void Add(CProjectNode& node)
    {
        NodeReference reference(node);
        const std::lock_guard lock(m_guard);
        m_nodes.push_back(std::move(reference));
    }
    /// Empties the list for a new step.
    void Restart() { Take(); }

    /// Binds every listed node's effect and empties the list: a node that puts itself there anew goes, too, since what
    /// the storyboard has not brought back by now does not come.
    void Run()
    {
        for (const auto& node : Take())
            if (const auto object = node.Hold()) (*node).AttachEffect();
        Take();
    }

private:
    using Nodes = std::vector<NodeReference<CProjectNode>>;

    Nodes Take()
    {
        const std::lock_guard lock(m_guard);
        return std::exchange(m_nodes, {});
    }

    std::mutex m_guard;
    Nodes m_nodes;
};

} // namespace kv
