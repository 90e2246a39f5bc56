#include "KVProjectData/tree/LineageLock.h"

#include <chrono>
#include <thread>

namespace kv {
namespace {

bool IsProjectLevel(const CProjectNode& node)
{
    switch (node.Type()) {
    case typeProject:
    case typeTitleList:
    case typeMenuList:
    case typeFileList:
        return true;
    default:
        return false;
    }
}

} // namespace

LineageLock::LineageLock(CProjectNode& node)
{
    constexpr int kPatience = 64;
    constexpr std::chrono::microseconds kPause{50};
    for (int attempt = 0; !TryClimb(node); ++attempt) {
        if (attempt < kPatience) {
            std::this_thread::yield();
        } else {
            std::this_thread::sleep_for(kPause);
        }
    }
}

bool LineageLock::TryClimb(CProjectNode& node)
{
    // Parents are entered before children: whoever comes from below takes what is free, or begins anew. A child that is
    // entered keeps its parent, which has to enter it to let go of it.
    node.Section().Enter();
    m_held[m_count++] = &node.Section();
    for (CProjectNode* above = node.Parent(); above && !IsProjectLevel(*above); above = above->Parent()) {
        if (m_count == kDeepest) break;
        if (!above->Section().TryEnter()) {
            Leave();
            return false;
        }
        m_held[m_count++] = &above->Section();
    }
    return true;
}

void LineageLock::Leave()
{
    while (m_count > 0)
        m_held[--m_count]->Leave();
}

} // namespace kv
