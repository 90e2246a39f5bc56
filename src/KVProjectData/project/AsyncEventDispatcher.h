#pragma once
// Queues events and delivers them, one at a time and in order, on a worker thread of its own.

#include "platform/automation/Bstr.h"

#include <memory>

namespace kv {

class CAsyncEventDispatcher {
public:
    /// The event ID of a heartbeat tick.
    static constexpr DISPID kHeartbeat = -1;

    CAsyncEventDispatcher();
    CAsyncEventDispatcher(const CAsyncEventDispatcher&) = delete;
    CAsyncEventDispatcher& operator=(const CAsyncEventDispatcher&) = delete;
    virtual ~CAsyncEventDispatcher();

    /// Delivers one event; called by the worker, which ignores the result. With kHeartbeat when nothing was posted
    /// for a period.
    virtual HRESULT Dispatch(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c) = 0;

    /// Starts the worker. E_OUTOFMEMORY when the thread cannot be started.
    HRESULT Start(ULONG periodMilliseconds);

    /// Ends the worker, waits for it, and discards what is still queued. Called from the worker itself, it ends
    /// after the current delivery.
    void Stop();

    /// Deletes this dispatcher, which is stopped: at once, or when the delivery that it was stopped from has returned.
    void Delete();

    /// Queues an event; safe from any thread. `text` is copied, and its copy handed to Dispatch in the place of `c`.
    /// KV_E_QUEUE_NOT_SIGNALLED when the worker cannot be woken: the event stays queued.
    HRESULT Post(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c, BSTR text = nullptr);

private:
    /// Shared with the worker, which may outlive the dispatcher by the end of one delivery.
    struct Worker;

    std::shared_ptr<Worker> m_worker;
};

} // namespace kv
