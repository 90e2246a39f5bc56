#pragma once
// The four entry points of a server library; included by the one source file that describes the library.

#include "platform/com/ServerModule.h"

namespace kv::detail {

/// Makes a module ready when its library is loaded, and ends it when the library goes.
class ModuleLifetime {
public:
    explicit ModuleLifetime(ServerModule& module) : m_module(module) { m_module.Initialise(); }
    ModuleLifetime(const ModuleLifetime&) = delete;
    ModuleLifetime& operator=(const ModuleLifetime&) = delete;
    ~ModuleLifetime() { m_module.Terminate(); }

private:
    ServerModule& m_module;
};

} // namespace kv::detail

/// Stands in the global namespace, with the library's ServerDescription.
#define KV_SERVER_ENTRY_POINTS(description)                                                                            \
    namespace {                                                                                                        \
    kv::ServerModule& Module()                                                                                         \
    {                                                                                                                  \
        static kv::ServerModule module(description);                                                                   \
        return module;                                                                                                 \
    }                                                                                                                  \
    const kv::detail::ModuleLifetime g_moduleLifetime(Module());                                                       \
    }                                                                                                                  \
    extern "C" {                                                                                                       \
    KV_EXPORT HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)                                      \
    {                                                                                                                  \
        return Module().GetClassObject(rclsid, riid, ppv);                                                             \
    }                                                                                                                  \
    KV_EXPORT HRESULT DllCanUnloadNow()                                                                                \
    {                                                                                                                  \
        return Module().CanUnloadNow();                                                                                \
    }                                                                                                                  \
    KV_EXPORT HRESULT DllRegisterServer()                                                                              \
    {                                                                                                                  \
        return Module().RegisterServer();                                                                              \
    }                                                                                                                  \
    KV_EXPORT HRESULT DllUnregisterServer()                                                                            \
    {                                                                                                                  \
        return Module().UnregisterServer();                                                                            \
    }                                                                                                                  \
    }
