#include "platform/com/ConnectionPoint.h"

#include "platform/com/Object.h"
#include "support/Memory.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace {

using kv::ComPtr;
using testing::ElementsAre;

struct ISink : IUnknown {
    static constexpr GUID IID = "22222222-0000-0000-0000-000000000001"_guid;
    using Base = IUnknown;
    virtual HRESULT Happened() = 0;
};

struct IStrangeSink : IUnknown {
    static constexpr GUID IID = "22222222-0000-0000-0000-000000000002"_guid;
    using Base = IUnknown;
};

/// The event interface is not the first one, so that a wrong cast shows.
class Sink : public kv::Object<IStrangeSink, ISink> {
public:
    Sink(int name, std::vector<int>& calls) : m_name(name), m_calls(calls) {}

    HRESULT Happened() override
    {
        m_calls.push_back(m_name);
        return onEvent ? onEvent() : S_OK;
    }

    IUnknown* Unknown() { return Inner(); }

    std::function<HRESULT()> onEvent;

private:
    int m_name;
    std::vector<int>& m_calls;
};

class StrangeSink : public kv::Object<IStrangeSink> {};

class Source : public kv::Object<kv::ConnectionPointContainer> {
public:
    HRESULT Fire()
    {
        return m_events.ForEachSink([](IUnknown& sink) { return static_cast<ISink&>(sink).Happened(); });
    }

    kv::ConnectionPoint m_events{*this, ISink::IID};
    kv::ConnectionPoint m_others{*this, IStrangeSink::IID};
};

class ConnectionPointTest : public testing::Test {
protected:
    ConnectionPointTest() { EXPECT_EQ(source->FindConnectionPoint(ISink::IID, point.Put()), S_OK); }

    ~ConnectionPointTest() override
    {
        point.Reset();
        source.Reset();
        EXPECT_EQ(kv::g_moduleLocks, 0) << "an object was leaked";
    }

    /// Connects a new sink, which the connection alone keeps.
    DWORD Connect(int name, std::function<HRESULT()> onEvent = {})
    {
        const auto sink = kv::Make<Sink>(name, calls);
        sink->onEvent = std::move(onEvent);
        DWORD cookie = 0;
        EXPECT_EQ(point->Advise(sink->Unknown(), &cookie), S_OK);
        return cookie;
    }

    std::vector<int> Fired()
    {
        calls.clear();
        fired = source->Fire();
        return calls;
    }

    ComPtr<Source> source = kv::Make<Source>();
    ComPtr<IConnectionPoint> point;
    std::vector<int> calls;
    HRESULT fired = S_OK;
};

TEST_F(ConnectionPointTest, IsFoundByItsEventInterfaceAndKeepsItsContainer)
{
    GUID iid{};
    EXPECT_EQ(point->GetConnectionInterface(&iid), S_OK);
    EXPECT_EQ(iid, ISink::IID);
    EXPECT_EQ(point->GetConnectionInterface(nullptr), E_POINTER);
    EXPECT_EQ(point->GetConnectionPointContainer(nullptr), E_POINTER);
    EXPECT_FALSE(kv::Query<IConnectionPointContainer>(point)) << "a point is an object of its own";

    ComPtr<IConnectionPointContainer> container;
    const auto identity = kv::Query<IUnknown>(source);
    source.Reset();
    EXPECT_EQ(Connect(1), 1u);
    EXPECT_EQ(point->GetConnectionPointContainer(container.Put()), S_OK);
    EXPECT_EQ(kv::Query<IUnknown>(container), identity);
    ComPtr<IConnectionPoint> none = point;
    EXPECT_EQ(container->FindConnectionPoint(IUnknown::IID, none.Put()), CONNECT_E_NOCONNECTION);
    EXPECT_FALSE(none);
    EXPECT_EQ(container->FindConnectionPoint(ISink::IID, nullptr), E_POINTER);
}

TEST_F(ConnectionPointTest, RefusesWhatCannotConnectOrHasNoRoom)
{
    const auto strange = kv::Make<StrangeSink>();
    const auto sink = kv::Make<Sink>(1, calls);
    DWORD cookie = 7;
    EXPECT_EQ(point->Advise(strange->Inner(), &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0u);
    EXPECT_EQ(point->Advise(nullptr, &cookie), E_POINTER);
    EXPECT_EQ(point->Advise(strange->Inner(), nullptr), E_POINTER);
    cookie = 7;
    {
        const kv::test::LittleMemory memory;
        EXPECT_EQ(point->Advise(sink->Unknown(), &cookie), CONNECT_E_ADVISELIMIT);
    }
    EXPECT_EQ(cookie, 0u);
    EXPECT_THAT(Fired(), ElementsAre());
    EXPECT_EQ(point->Advise(sink->Unknown(), &cookie), S_OK);
    EXPECT_EQ(cookie, 1u);
}

TEST_F(ConnectionPointTest, ReusesTheLowestSlotAndCallsInCookieOrder)
{
    EXPECT_EQ(Connect(10), 1u);
    EXPECT_EQ(Connect(20), 2u);
    EXPECT_EQ(Connect(30), 3u);
    EXPECT_THAT(Fired(), ElementsAre(10, 20, 30));

    EXPECT_EQ(point->Unadvise(2), S_OK);
    EXPECT_EQ(point->Unadvise(1), S_OK);
    EXPECT_THAT(Fired(), ElementsAre(30));
    for (const DWORD cookie : {0u, 1u, 2u, 4u, 0xFFFFFFFFu}) {
        EXPECT_EQ(point->Unadvise(cookie), CONNECT_E_NOCONNECTION) << cookie;
    }

    EXPECT_EQ(Connect(40), 1u);
    EXPECT_EQ(Connect(50), 2u);
    EXPECT_EQ(Connect(60), 4u);
    EXPECT_THAT(Fired(), ElementsAre(40, 50, 30, 60));
}

TEST_F(ConnectionPointTest, SinksComeGoAndFailDuringTheWalk)
{
    DWORD own = 0;
    own = Connect(1, [&] {
        EXPECT_EQ(point->Unadvise(own), S_OK);
        EXPECT_EQ(point->Unadvise(2), S_OK);
        Connect(4);
        Connect(5);
        return S_OK;
    });
    Connect(2);
    Connect(3, [] { return E_ACCESSDENIED; });
    Connect(6);
    EXPECT_THAT(Fired(), ElementsAre(1, 5, 3));
    EXPECT_EQ(fired, E_ACCESSDENIED) << "which ends the walk";
    EXPECT_THAT(Fired(), ElementsAre(4, 5, 3));
}

TEST_F(ConnectionPointTest, ASinkThatIsLetGoMayCallBack)
{
    struct Caller {
        explicit Caller(IConnectionPoint& called) : point(called) {}
        ~Caller() { EXPECT_EQ(point.Unadvise(1), CONNECT_E_NOCONNECTION); }
        IConnectionPoint& point;
    };
    Connect(1, [caller = std::make_shared<Caller>(*point)] { return S_OK; });
    Connect(2, [caller = std::make_shared<Caller>(*point)] { return S_OK; });
    EXPECT_EQ(point->Unadvise(1), S_OK);
    // The second sink goes with its container.
}

TEST_F(ConnectionPointTest, EnumeratesASnapshotOfTheConnections)
{
    for (const int name : {1, 2, 3})
        Connect(name);
    EXPECT_EQ(point->Unadvise(2), S_OK);
    ComPtr<IEnumConnections> connections, copy;
    ASSERT_EQ(point->EnumConnections(connections.Put()), S_OK);
    EXPECT_EQ(point->EnumConnections(nullptr), E_POINTER);
    EXPECT_EQ(point->Unadvise(1), S_OK);

    CONNECTDATA items[3] = {{nullptr, 9}, {nullptr, 9}, {nullptr, 9}};
    ULONG fetched = 9;
    EXPECT_EQ(connections->Next(3, items, nullptr), E_POINTER);
    EXPECT_EQ(connections->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(connections->Next(3, items, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    EXPECT_EQ(std::tuple(items[0].dwCookie, items[1].dwCookie, items[2].dwCookie), std::tuple(1u, 3u, 0u));
    for (ULONG i = 0; i < fetched; ++i)
        EXPECT_TRUE(kv::Query<ISink>(ComPtr<IUnknown>::Attach(items[i].pUnk)));

    EXPECT_EQ(connections->Reset(), S_OK);
    EXPECT_EQ(connections->Skip(1), S_OK);
    ASSERT_EQ(connections->Clone(copy.Put()), S_OK);
    EXPECT_EQ(connections->Clone(nullptr), E_POINTER);
    EXPECT_EQ(connections->Skip(2), S_FALSE);
    EXPECT_EQ(copy->Next(1, items, nullptr), S_OK);
    EXPECT_EQ(items[0].dwCookie, 3u);
    ComPtr<IUnknown>::Attach(items[0].pUnk).Reset();
    EXPECT_EQ(copy->Next(1, items, nullptr), S_FALSE);
    EXPECT_EQ(items[0].pUnk, nullptr);
}

TEST_F(ConnectionPointTest, EnumeratesThePointsOfAContainer)
{
    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(source->EnumConnectionPoints(points.Put()), S_OK);
    EXPECT_EQ(source->EnumConnectionPoints(nullptr), E_POINTER);
    for (const GUID& expected : {ISink::IID, IStrangeSink::IID}) {
        ComPtr<IConnectionPoint> next;
        GUID iid{};
        ASSERT_EQ(points->Next(1, next.Put(), nullptr), S_OK);
        EXPECT_EQ(next->GetConnectionInterface(&iid), S_OK);
        EXPECT_EQ(iid, expected);
    }
    EXPECT_EQ(points->Skip(1), S_FALSE);
}

TEST_F(ConnectionPointTest, ThreadsMayFireWhileOthersConnect)
{
    const auto connectAndLeave = [&] {
        for (int i = 0; i < 500; ++i) {
            const auto sink = kv::Make<StrangeSink>();
            DWORD cookie = 0;
            EXPECT_EQ(source->m_others.Advise(sink->Inner(), &cookie), S_OK);
            EXPECT_EQ(source->m_others.Unadvise(cookie), S_OK);
        }
    };
    std::thread first(connectAndLeave);
    std::thread second(connectAndLeave);
    for (int i = 0; i < 500; ++i) {
        const HRESULT walked = source->m_others.ForEachSink([](IUnknown& sink) {
            EXPECT_TRUE(kv::Query<IStrangeSink>(&sink));
            return S_OK;
        });
        EXPECT_EQ(walked, S_OK);
    }
    first.join();
    second.join();
    EXPECT_EQ(source->m_others.Unadvise(1), CONNECT_E_NOCONNECTION);
}

} // namespace
