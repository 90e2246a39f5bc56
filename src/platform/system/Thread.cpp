#include "platform/system/Thread.h"

#include <exception>
#include <utility>

namespace kv {

HRESULT Thread::Start(std::function<void()> run, std::atomic<LONG>& moduleLocks)
{
    ++moduleLocks;
    try {
        m_thread = std::thread([run = std::move(run), &moduleLocks]() mutable {
            run();
            // What it holds may be the library's, too.
            run = nullptr;
            --moduleLocks;
        });
        return S_OK;
    } catch (const std::exception&) {
        --moduleLocks;
        return E_OUTOFMEMORY;
    }
}

} // namespace kv
