#pragma once
// Event sources: the place where sinks connect, and the container that shows such places.

#include "platform/com/ComPtr.h"
#include "platform/com/Export.h"
#include "platform/system/CriticalSection.h"

#include <atomic>
#include <vector>

namespace kv {

class ConnectionPoint;

/// Implements IConnectionPointContainer for an `Object<…, ConnectionPointContainer, …>`. The connection
/// points are members of that object; each makes itself known when it is constructed.
class KV_EXPORT ConnectionPointContainer : public IConnectionPointContainer {
public:
    HRESULT EnumConnectionPoints(IEnumConnectionPoints** points) override;

    /// CONNECT_E_NOCONNECTION when no point is for that event interface.
    HRESULT FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

protected:
    ~ConnectionPointContainer() = default;

private:
    friend class ConnectionPoint;

    std::vector<ConnectionPoint*> m_points;
};

/// The sinks of one event interface. A point is a member of its container and lives as long: references to
/// the point count on the container. The point's lock is never held while a sink is called or released.
class KV_EXPORT ConnectionPoint final : public IConnectionPoint {
public:
    ConnectionPoint(ConnectionPointContainer& container, REFIID eventInterface);
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;
    ~ConnectionPoint();

    HRESULT QueryInterface(REFIID iid, void** out) override;
    ULONG AddRef() override;
    ULONG Release() override;

    HRESULT GetConnectionInterface(GUID* iid) override;
    HRESULT GetConnectionPointContainer(IConnectionPointContainer** container) override;

    /// The cookie is the position of the sink plus one; the lowest free position is taken.
    /// CONNECT_E_CANNOTCONNECT for a sink without the event interface, CONNECT_E_ADVISELIMIT when there is
    /// no room to keep it.
    HRESULT Advise(IUnknown* sink, DWORD* cookie) override;

    /// CONNECT_E_NOCONNECTION for a cookie that names no connection.
    HRESULT Unadvise(DWORD cookie) override;

    HRESULT EnumConnections(IEnumConnections** connections) override;

    /// Calls `HRESULT callback(IUnknown& sink)` for each sink in the order of the cookies. The sink given is
    /// the event interface itself, which may be cast down to. Any result but S_OK ends the walk and is
    /// returned. Sinks may connect and disconnect meanwhile; one that disconnects before its turn is not
    /// called. The caller keeps the container alive.
    template <class Callback>
    HRESULT ForEachSink(Callback&& callback)
    {
        HRESULT result = S_OK;
        for (std::size_t position = 0; result == S_OK && position < m_size.load(std::memory_order_acquire);) {
            const ComPtr<IUnknown> sink = TakeSink(position);
            if (!sink) break;
            result = callback(*sink);
        }
        return result;
    }

private:
    friend class ConnectionPointContainer;

    /// The first sink at `position` or behind, and the position after it; empty when there is none left.
    ComPtr<IUnknown> TakeSink(std::size_t& position);

    ConnectionPointContainer& m_container;
    const GUID m_eventInterface;
    CriticalSection m_section;
    /// Holds the event interface of each sink; empty where a sink has left.
    std::vector<ComPtr<IUnknown>> m_sinks;
    /// The size of `m_sinks`, for a walk to see without the lock that it is done.
    std::atomic<std::size_t> m_size{0};
};

} // namespace kv
