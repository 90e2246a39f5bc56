#include "KVProjectData/project/AsyncEventDispatcher.h"

#include "KVProjectData/ResultCodes.h"
#include "platform/com/Object.h"
#include "platform/system/CriticalSection.h"
#include "platform/system/Event.h"
#include "platform/system/Thread.h"

#include <atomic>
#include <vector>

namespace kv {
namespace {

struct EventRecord {
    DISPID event;
    LONGLONG a;
    LONGLONG b;
    LONGLONG c;
    Bstr text;
};

enum class State { NotStarted, Running, Stopping };

constexpr ULONG kDefaultPeriod = 1000;

/// Edits come in bursts: who edits on while the worker rests need not wake it for each event.
constexpr ULONG kRestMilliseconds = 1;

} // namespace

struct CAsyncEventDispatcher::Worker {
    void Run(CAsyncEventDispatcher& dispatcher);

    CriticalSection queueSection;
    std::vector<EventRecord> queue;
    AutoResetEvent wake;
    /// Ends a rest.
    AutoResetEvent stop;
    Thread thread;
    std::atomic<State> state{State::NotStarted};
    ULONG periodMilliseconds = kDefaultPeriod;
    bool stoppedWithinDelivery = false;
    /// A dispatcher that was stopped and is to be deleted while a delivery still runs in it.
    std::unique_ptr<CAsyncEventDispatcher> ended;
};

void CAsyncEventDispatcher::Worker::Run(CAsyncEventDispatcher& dispatcher)
{
    // What fails within a delivery, or throws, concerns nobody else.
    const auto deliver = [&](DISPID event, LONGLONG a, LONGLONG b, LONGLONG c) {
        Guarded([&] { return dispatcher.Dispatch(event, a, b, c); });
    };
    std::vector<EventRecord> batch;
    bool rested = true;
    while (state == State::Running) {
        {
            const SectionLock lock(queueSection);
            std::swap(batch, queue);
        }
        if (batch.empty() && !rested) {
            stop.Wait(kRestMilliseconds);
            rested = true;
            continue;
        }
        if (batch.empty()) {
            if (wake.Wait(periodMilliseconds) == WaitResult::TimedOut && state == State::Running) {
                deliver(kHeartbeat, 0, 0, 0);
            }
            continue;
        }
        for (const EventRecord& record : batch) {
            // What is queued behind the delivery that stopped the dispatcher is not delivered.
            if (state != State::Running) break;
            const LONGLONG c = record.text ? reinterpret_cast<LONGLONG>(record.text.Get()) : record.c;
            deliver(record.event, record.a, record.b, c);
        }
        batch.clear();
        rested = false;
    }
    ended.reset();
}

CAsyncEventDispatcher::CAsyncEventDispatcher() : m_worker(std::make_shared<Worker>()) {}

CAsyncEventDispatcher::~CAsyncEventDispatcher() = default;

HRESULT CAsyncEventDispatcher::Start(ULONG periodMilliseconds)
{
    std::function<void()> run = [worker = m_worker, this] { worker->Run(*this); };
    m_worker->periodMilliseconds = periodMilliseconds;
    HRESULT created = m_worker->wake.Create();
    if (SUCCEEDED(created)) created = m_worker->stop.Create();
    if (FAILED(created)) return created;
    m_worker->state = State::Running;
    const HRESULT started = m_worker->thread.Start(std::move(run), g_moduleLocks);
    if (FAILED(started)) {
        m_worker->state = State::NotStarted;
        m_worker->wake.Close();
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

void CAsyncEventDispatcher::Stop()
{
    if (m_worker->state.exchange(State::Stopping) != State::Running) return;
    m_worker->stop.Set();
    m_worker->wake.Set();
    if (m_worker->thread.IsCurrent()) {
        m_worker->stoppedWithinDelivery = true;
        m_worker->thread.Detach();
    } else {
        m_worker->thread.Join();
        m_worker->wake.Close();
    }
    const SectionLock lock(m_worker->queueSection);
    m_worker->queue.clear();
}

void CAsyncEventDispatcher::Delete()
{
    if (m_worker->stoppedWithinDelivery) {
        m_worker->ended.reset(this);
    } else {
        delete this;
    }
}

HRESULT CAsyncEventDispatcher::Post(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c, BSTR text)
{
    return Guarded([&] {
        EventRecord record{event, a, b, c, Bstr::CopyOf(text)};
        {
            const SectionLock lock(m_worker->queueSection);
            m_worker->queue.push_back(std::move(record));
        }
        return m_worker->wake.Set() ? S_OK : KV_E_QUEUE_NOT_SIGNALLED;
    });
}

} // namespace kv
