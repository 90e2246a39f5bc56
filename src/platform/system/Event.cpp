#include "platform/system/Event.h"

#include <chrono>

namespace kv {

HRESULT AutoResetEvent::Create()
{
    m_signalled = false;
    m_created = true;
    return S_OK;
}

void AutoResetEvent::Close()
{
    m_created = false;
}

bool AutoResetEvent::Set()
{
    if (!m_created.load(std::memory_order_relaxed)) return false;
    if (m_signalled.exchange(true) || m_waiting == 0) return true;
    // Whoever waits holds the mutex until it sleeps, so that the wake-up cannot come too early. It is free again before
    // that, or else who wakes would run into it.
    {
        const std::lock_guard lock(m_mutex);
    }
    m_wake.notify_one();
    return true;
}

WaitResult AutoResetEvent::Wait(ULONG milliseconds)
{
    if (m_signalled.exchange(false)) return WaitResult::Signalled;
    std::unique_lock lock(m_mutex);
    ++m_waiting;
    const bool signalled =
        m_wake.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return m_signalled.exchange(false); });
    --m_waiting;
    return signalled ? WaitResult::Signalled : WaitResult::TimedOut;
}

} // namespace kv
