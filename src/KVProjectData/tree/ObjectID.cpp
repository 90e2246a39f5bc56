#include "KVProjectData/tree/ObjectID.h"

#include "platform/com/Error.h"

#include <atomic>
#include <limits>

namespace kv {
namespace {

std::atomic<ULONG> g_nextID{1};

} // namespace

LONG TakeNextID()
{
    constexpr ULONG kLast = std::numeric_limits<LONG>::max();
    ULONG id = g_nextID.load(std::memory_order_relaxed);
    do {
        if (id > kLast) throw Error(E_UNEXPECTED);
    } while (!g_nextID.compare_exchange_weak(id, id + 1, std::memory_order_relaxed));
    return static_cast<LONG>(id);
}

void PassOverID(LONG id)
{
    if (id < 0) return;
    const ULONG wanted = static_cast<ULONG>(id) + 1;
    ULONG next = g_nextID.load(std::memory_order_relaxed);
    while (next < wanted && !g_nextID.compare_exchange_weak(next, wanted, std::memory_order_relaxed)) {
    }
}

} // namespace kv
