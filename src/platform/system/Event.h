#pragma once
// An event that wakes one waiting thread and is then unset again.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace kv {

enum class WaitResult { Signalled, TimedOut };

class KV_EXPORT AutoResetEvent {
public:
    HRESULT Create();
    void Close();

    /// False when the event was not created. Costs no system call while the event is set or nobody waits.
    bool Set();

    /// Takes the signal. An event that was not created times out.
    WaitResult Wait(ULONG milliseconds);

private:
    std::atomic<bool> m_created{false};
    std::atomic<bool> m_signalled{false};
    /// How many threads wait.
    std::atomic<int> m_waiting{0};
    std::mutex m_mutex;
    std::condition_variable m_wake;
};

} // namespace kv
