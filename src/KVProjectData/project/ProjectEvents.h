#pragma once
// The outgoing side of a project: connected sinks, the change report, and how each event is told.

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/project/ChangeSet.h"
#include "platform/com/ConnectionPoint.h"

namespace kv {

class ProjectEvents {
public:
    explicit ProjectEvents(ConnectionPointContainer& container) : m_sinks(container, _IKVProjectDataEvents::IID) {}

    void EnableHeartbeat(bool enable) { m_heartbeat = enable; }

    /// Tells that nothing was posted for a period, and which objects changed, unless the heartbeat is off.
    void Tick();

    /// Notes the changed object and tells one event to every sink, until one fails; its failure is returned. The
    /// text of ProjectDirectoryChanged is in `c`.
    HRESULT Tell(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c);

private:
    HRESULT Fire(DISPID event, std::span<VARIANT> lastFirst);

    ConnectionPoint m_sinks;
    ChangeSet m_changes;
    std::atomic<bool> m_heartbeat{true};
};

} // namespace kv
