// Property changes and their events.

#include "Bench.h"
#include "platform/com/Object.h"
#ifdef KV_BENCH_QT
#include "QtYardstick.h"
#endif

#include <condition_variable>
#include <mutex>

namespace kv::bench {

class CountingSink final : public Object<_IKVProjectDataEvents> {
public:
    HRESULT GetTypeInfoCount(ULONG*) override { return E_NOTIMPL; }
    HRESULT GetTypeInfo(ULONG, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT GetIDsOfNames(REFIID, OLECHAR**, ULONG, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, ULONG*) override
    {
        if (member != EVENT_TitlePropChanged) return S_OK;
        const std::lock_guard lock(m_mutex);
        // Who waits is woken once, lest the figure tell of switches between threads.
        if (++m_count == m_awaited) m_arrived.notify_one();
        return S_OK;
    }

    void WaitFor(std::size_t count)
    {
        std::unique_lock lock(m_mutex);
        m_awaited = count;
        m_arrived.wait(lock, [&] { return m_count >= count; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::size_t m_count = 0;
    std::size_t m_awaited = 0;
};

namespace {

constexpr std::size_t kChanges = 200'000;
constexpr int kRounds = 7;
constexpr double kNanoseconds = 1e9 / kChanges;

class WatchedTitle {
public:
    WatchedTitle()
    {
        Must(project->AddTitle(0, title.Put()));
        Must(Query<IConnectionPointContainer>(project)->FindConnectionPoint(_IKVProjectDataEvents::IID, point.Put()));
        Must(point->Advise(sink->Controlling(), &cookie));
    }
    WatchedTitle(const WatchedTitle&) = delete;
    WatchedTitle& operator=(const WatchedTitle&) = delete;
    ~WatchedTitle() { point->Unadvise(cookie); }

    void Put(std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
            Must(title->put_Tag(static_cast<ULONG>(++sent)));
    }
    void WaitForAll() { sink->WaitFor(sent); }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title;
    ComPtr<CountingSink> sink = Make<CountingSink>();
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    std::size_t sent = 0;
};

} // namespace

void MeasureProperties(std::vector<Row>& rows)
{
    WatchedTitle ours;
    const auto measure = [](auto& subject, auto put) {
        const double seconds = Time([&] { put(subject); });
        subject.WaitForAll();
        return seconds * kNanoseconds;
    };
    const auto put = [&] { return measure(ours, [](WatchedTitle& title) { title.Put(kChanges); }); };
#ifdef KV_BENCH_QT
    QtYardstick qt;
    const Medians medians =
        InTurn(kRounds, put, [&] { return measure(qt, [](QtYardstick& subject) { subject.SetProperty(kChanges); }); });
    rows.push_back({"property put, event queued, one sink | Qt property set, queued signal", "ns", medians.ours,
                    medians.yardstick, 0.3});
#else
    rows.push_back(
        {"property put, event queued, one sink | Qt property set, queued signal", "ns", Median(kRounds, put), {}, 0.3});
#endif
}

void MeasureEvents(std::vector<Row>& rows)
{
    WatchedTitle ours;
    const auto sustained = [&] {
        return kNanoseconds * Time([&] {
                   ours.Put(kChanges);
                   ours.WaitForAll();
               });
    };
#ifdef KV_BENCH_QT
    QtYardstick qt;
    const Medians medians = InTurn(kRounds, sustained, [&] {
        return kNanoseconds * Time([&] {
                   qt.SetProperty(kChanges);
                   qt.WaitForAll();
               });
    });
    rows.push_back(
        {"event from post to sink, sustained | Qt queued delivery", "ns", medians.ours, medians.yardstick, 0.1});
#else
    rows.push_back(
        {"event from post to sink, sustained | Qt queued delivery", "ns", Median(kRounds, sustained), {}, 0.1});
#endif
}

} // namespace kv::bench
