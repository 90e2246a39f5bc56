#pragma once
// A worker thread.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <atomic>
#include <functional>
#include <thread>

namespace kv {

class KV_EXPORT Thread {
public:
    /// E_OUTOFMEMORY when the thread cannot be started. `moduleLocks`, which keeps the library of `run` loaded, is
    /// raised until the thread has left that library for good.
    HRESULT Start(std::function<void()> run, std::atomic<LONG>& moduleLocks);

    void Join() { m_thread.join(); }
    void Detach() { m_thread.detach(); }
    bool IsCurrent() const { return m_thread.get_id() == std::this_thread::get_id(); }

private:
    std::thread m_thread;
};

} // namespace kv
