#pragma once
// The sections of a node and of those above it, for what reaches from a child to its parents.

#include "KVProjectData/tree/ProjectNode.h"

#include <array>

namespace kv {

/// Holds the sections of a node and of what it stands in, up to the title or the menu. Nothing of that leaves memory or
/// moves elsewhere meanwhile. Taken while no section of these is held, or else the topmost one of them.
class LineageLock {
public:
    explicit LineageLock(CProjectNode& node);
    LineageLock(const LineageLock&) = delete;
    LineageLock& operator=(const LineageLock&) = delete;
    ~LineageLock() { Leave(); }

private:
    /// A menu, its elements, a button, its elements, one of them, and what that holds.
    static constexpr std::size_t kDeepest = 8;

    bool TryClimb(CProjectNode& node);
    void Leave();

    std::array<CriticalSection*, kDeepest> m_held{};
    std::size_t m_count = 0;
};

} // namespace kv
