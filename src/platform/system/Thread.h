#pragma once
// A worker thread.

#include "platform/com/BaseTypes.h"

#include <functional>
#include <system_error>
#include <thread>

namespace kv {

class Thread {
public:
    /// E_OUTOFMEMORY when the thread cannot be started.
    HRESULT Start(std::function<void()> run)
    {
        try {
            m_thread = std::thread(std::move(run));
            return S_OK;
        } catch (const std::exception&) {
            return E_OUTOFMEMORY;
        }
    }

    void Join() { m_thread.join(); }
    void Detach() { m_thread.detach(); }
    bool IsCurrent() const { return m_thread.get_id() == std::this_thread::get_id(); }

private:
    std::thread m_thread;
};

} // namespace kv
