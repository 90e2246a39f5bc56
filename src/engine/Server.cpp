// The entry points of the engine's server library and the classes that it creates.

#include "engine/Production.h"
#include "engine/media/MediaInformation.h"
#include "engine/strings/StringTable.h"
#include "platform/com/ServerModule.h"

namespace kv {
namespace {

constexpr ServerClass kClasses[]{
    {&CLSID_ZXEProduction, &CreateObject<CProduction>, u"ZXEngine.Production.1", u"ZXEngine.Production",
     u"Storyboard Production"},
    {&CLSID_ZXMediaInformation, &CreateObject<CMediaInformation>, u"ZXEngine.MediaInformation.1",
     u"ZXEngine.MediaInformation", u"Media Information"},
    {&CLSID_ZXStringTable, &CreateObject<CStringTable>, u"ZXEngine.StringTable.1", u"ZXEngine.StringTable",
     u"String Table"},
};

ServerModule& Module()
{
    static ServerModule module({.classes = kClasses});
    return module;
}

/// The module is ready from loading until unloading.
struct ModuleLifetime {
    ModuleLifetime() { Module().Initialise(); }
    ~ModuleLifetime() { Module().Terminate(); }
};
const ModuleLifetime g_lifetime;

} // namespace
} // namespace kv

extern "C" {

KV_EXPORT HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    return kv::Module().GetClassObject(rclsid, riid, ppv);
}

KV_EXPORT HRESULT DllCanUnloadNow()
{
    return kv::Module().CanUnloadNow();
}

KV_EXPORT HRESULT DllRegisterServer()
{
    return kv::Module().RegisterServer();
}

KV_EXPORT HRESULT DllUnregisterServer()
{
    return kv::Module().UnregisterServer();
}

} // extern "C"
