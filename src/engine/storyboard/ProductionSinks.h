#pragma once
// The sinks of a production, and how they are told.

#include "KVProjectData/Engine/Events.h"
#include "platform/com/ConnectionPoint.h"

#include <type_traits>

namespace kv {

class ProductionSinks {
public:
    explicit ProductionSinks(ConnectionPointContainer& container) : m_point(container, IZXEProductionDataEvents::IID) {}

    /// Calls the method on every sink; what they return is not looked at. To be called without a lock.
    template <class... Parameters>
    void Tell(HRESULT (IZXEProductionDataEvents::*method)(Parameters...), std::type_identity_t<Parameters>... arguments)
    {
        m_point.ForEachSink([&](IUnknown& sink) {
            (static_cast<IZXEProductionDataEvents&>(sink).*method)(arguments...);
            return S_OK;
        });
    }

    /// Calls the method at that position with as many of the arguments as it takes. E_INVALIDARG for a
    /// position past the last.
    HRESULT TellByPosition(ULONG position, LONG first, LONG second);

private:
    ConnectionPoint m_point;
};

} // namespace kv
