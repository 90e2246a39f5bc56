#include "KVProjectData/tree/TreeState.h"

#include <limits>

namespace kv {

TreeState& SharedTreeState()
{
    static TreeState state;
    return state;
}

LONG TakeNextID()
{
    constexpr ULONG kLast = std::numeric_limits<LONG>::max();
    std::atomic<ULONG>& next = SharedTreeState().nextID;
    ULONG id = next.load(std::memory_order_relaxed);
    do {
        if (id > kLast) throw Error(E_UNEXPECTED);
    } while (!next.compare_exchange_weak(id, id + 1, std::memory_order_relaxed));
    return static_cast<LONG>(id);
}

} // namespace kv
