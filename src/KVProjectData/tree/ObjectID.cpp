#include "KVProjectData/tree/ObjectID.h"

#include "platform/com/Error.h"
#include "platform/system/CriticalSection.h"

#include <atomic>
#include <limits>
#include <vector>

namespace kv {
namespace {

constexpr ULONG kLast = std::numeric_limits<LONG>::max();
constexpr ULONG kScarceCount = 1'000'000;
/// Above it the counter does not pass over the IDs of documents, which would use up those of the process, but over each
/// that was taken.
constexpr ULONG kLastPlentiful = kLast - kScarceCount;

std::atomic<ULONG> g_nextID{1};

/// The IDs near the end that documents brought. Without memory until the first one.
class ScarceIDs {
public:
    void Take(ULONG id)
    {
        const SectionLock lock(m_section);
        m_taken.resize(kScarceCount);
        m_taken[id - kLastPlentiful - 1] = true;
    }

    bool IsTaken(ULONG id)
    {
        const SectionLock lock(m_section);
        return !m_taken.empty() && m_taken[id - kLastPlentiful - 1];
    }

private:
    CriticalSection m_section;
    std::vector<bool> m_taken;
};

ScarceIDs& SharedScarceIDs()
{
    static ScarceIDs ids;
    return ids;
}

} // namespace

LONG TakeNextID()
{
    ULONG id = g_nextID.load(std::memory_order_relaxed);
    for (;;) {
        if (id > kLast) throw Error(E_UNEXPECTED);
        if (!g_nextID.compare_exchange_weak(id, id + 1, std::memory_order_relaxed)) continue;
        if (id <= kLastPlentiful || !SharedScarceIDs().IsTaken(id)) return static_cast<LONG>(id);
        ++id;
    }
}

void PassOverID(LONG id)
{
    if (id < 0) return;
    if (static_cast<ULONG>(id) > kLastPlentiful) return SharedScarceIDs().Take(static_cast<ULONG>(id));
    const ULONG wanted = static_cast<ULONG>(id) + 1;
    ULONG next = g_nextID.load(std::memory_order_relaxed);
    while (next < wanted && !g_nextID.compare_exchange_weak(next, wanted, std::memory_order_relaxed)) {
    }
}

} // namespace kv
