#pragma once
// The sections of a node and of all that stands below it.

#include "KVProjectData/tree/ProjectNode.h"

#include <deque>

namespace kv {

class SubtreeLock {
public:
    explicit SubtreeLock(CProjectNode& node) { Enter(node); }

private:
    void Enter(CProjectNode& node)
    {
        m_locks.emplace_back(node.Section());
        for (LONG i = 0; i < node.ChildCount(); ++i)
            Enter(*node.GetChild(i));
    }

    std::deque<SectionLock> m_locks;
};

} // namespace kv
