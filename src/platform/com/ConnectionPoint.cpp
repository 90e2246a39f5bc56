#include "platform/com/ConnectionPoint.h"

#include "platform/com/Object.h"

#include <algorithm>
#include <memory>

namespace kv {

namespace {

struct Connection {
    ComPtr<IUnknown> sink;
    DWORD cookie;
};

CONNECTDATA HandOut(Connection connection)
{
    return {connection.sink.Detach(), connection.cookie};
}

IConnectionPoint* HandOut(ComPtr<IConnectionPoint> point)
{
    return point.Detach();
}

/// Walks a snapshot of items, which it and its clones share. `Raw` is what the receiver gets of an item.
template <class Interface, class Item, class Raw>
class Enumerator final : public Object<Interface> {
public:
    using Items = std::shared_ptr<const std::vector<Item>>;

    explicit Enumerator(Items items, std::size_t next = 0) : m_items(std::move(items)), m_next(next) {}

    HRESULT Next(ULONG count, Raw* items, ULONG* fetched) override
    {
        if (fetched) *fetched = 0;
        // Only who asks for a single item can do without the number of those that came.
        if (!items || (!fetched && count != 1)) return E_POINTER;
        const ULONG given = Available(count);
        for (ULONG i = 0; i < given; ++i)
            items[i] = HandOut((*m_items)[m_next++]);
        std::fill(items + given, items + count, Raw{});
        if (fetched) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }

    HRESULT Skip(ULONG count) override
    {
        const ULONG skipped = Available(count);
        m_next += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }

    HRESULT Reset() override
    {
        m_next = 0;
        return S_OK;
    }

    HRESULT Clone(Interface** copy) override
    {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        return Guarded([&] {
            *copy = Make<Enumerator>(m_items, m_next).Detach();
            return S_OK;
        });
    }

private:
    ULONG Available(ULONG count) const
    {
        return static_cast<ULONG>(std::min<std::size_t>(count, m_items->size() - m_next));
    }

    Items m_items;
    std::size_t m_next;
};

using ConnectionEnumerator = Enumerator<IEnumConnections, Connection, CONNECTDATA>;
using PointEnumerator = Enumerator<IEnumConnectionPoints, ComPtr<IConnectionPoint>, IConnectionPoint*>;

} // namespace

HRESULT ConnectionPointContainer::EnumConnectionPoints(IEnumConnectionPoints** points)
{
    if (!points) return E_POINTER;
    *points = nullptr;
    return Guarded([&] {
        using Points = std::vector<ComPtr<IConnectionPoint>>;
        auto snapshot = std::make_shared<Points>(m_points.begin(), m_points.end());
        *points = Make<PointEnumerator>(std::move(snapshot)).Detach();
        return S_OK;
    });
}

HRESULT ConnectionPointContainer::FindConnectionPoint(REFIID iid, IConnectionPoint** point)
{
    if (!point) return E_POINTER;
    *point = nullptr;
    for (ConnectionPoint* candidate : m_points) {
        if (candidate->m_eventInterface == iid) return ComPtr<IConnectionPoint>(candidate).CopyTo(point);
    }
    return CONNECT_E_NOCONNECTION;
}

ConnectionPoint::ConnectionPoint(ConnectionPointContainer& container, REFIID eventInterface)
    : m_container(container), m_eventInterface(eventInterface)
{
    m_container.m_points.push_back(this);
}

ConnectionPoint::~ConnectionPoint()
{
    std::erase(m_container.m_points, this);
    // A sink that is let go may still call back here; it then finds no connections.
    m_size = 0;
    const auto sinks = std::exchange(m_sinks, {});
}

HRESULT ConnectionPoint::QueryInterface(REFIID iid, void** out)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    if (iid != IUnknown::IID && iid != IConnectionPoint::IID) return E_NOINTERFACE;
    *out = ComPtr<IConnectionPoint>(this).Detach();
    return S_OK;
}

ULONG ConnectionPoint::AddRef()
{
    return m_container.AddRef();
}

ULONG ConnectionPoint::Release()
{
    return m_container.Release();
}

HRESULT ConnectionPoint::GetConnectionInterface(GUID* iid)
{
    if (!iid) return E_POINTER;
    *iid = m_eventInterface;
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container)
{
    return ComPtr<IConnectionPointContainer>(&m_container).CopyTo(container);
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie)
{
    if (cookie) *cookie = 0;
    if (!sink || !cookie) return E_POINTER;
    ComPtr<IUnknown> connection;
    if (FAILED(sink->QueryInterface(m_eventInterface, connection.PutVoid())) || !connection) {
        return CONNECT_E_CANNOTCONNECT;
    }
    try {
        const SectionLock lock(m_section);
        auto slot = std::find(m_sinks.begin(), m_sinks.end(), nullptr);
        if (slot == m_sinks.end()) slot = m_sinks.emplace(slot);
        *slot = std::move(connection);
        m_size.store(m_sinks.size(), std::memory_order_release);
        *cookie = static_cast<DWORD>(slot - m_sinks.begin()) + 1;
        return S_OK;
    } catch (const std::bad_alloc&) {
        return CONNECT_E_ADVISELIMIT;
    }
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie)
{
    ComPtr<IUnknown> removed;
    const SectionLock lock(m_section);
    if (cookie == 0 || cookie > m_sinks.size() || !m_sinks[cookie - 1]) return CONNECT_E_NOCONNECTION;
    removed = std::move(m_sinks[cookie - 1]);
    // The lock is left before the sink is released: it was taken later.
    return S_OK;
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** connections)
{
    if (!connections) return E_POINTER;
    *connections = nullptr;
    return Guarded([&] {
        auto snapshot = std::make_shared<std::vector<Connection>>();
        {
            const SectionLock lock(m_section);
            for (std::size_t i = 0; i < m_sinks.size(); ++i) {
                if (m_sinks[i]) snapshot->push_back({m_sinks[i], static_cast<DWORD>(i + 1)});
            }
        }
        *connections = Make<ConnectionEnumerator>(std::move(snapshot)).Detach();
        return S_OK;
    });
}

ComPtr<IUnknown> ConnectionPoint::TakeSink(std::size_t& position)
{
    const SectionLock lock(m_section);
    while (position < m_sinks.size()) {
        if (const ComPtr<IUnknown>& sink = m_sinks[position++]) return sink;
    }
    return nullptr;
}

} // namespace kv
