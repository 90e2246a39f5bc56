// The entry points of the server library and the classes that it creates.

#include "KVProjectData/Identities.h"
#include "KVProjectData/files/FileService.h"
#include "KVProjectData/project/ProjectData.h"
#include "KVProjectData/server/TypeLibrary.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/titles/EncodingParams.h"
#include "platform/automation/TypeLibrary.h"
#include "platform/com/ServerModule.h"
#include "platform/system/Registry.h"

namespace kv {
namespace {

constexpr ServerClass kClasses[]{
    {&CLSID_KVCommandList, &CreateObject<CKVCommandList>, u"KVProjectData.CKVCommandList13.1",
     u"KVProjectData.CKVCommandList13", u"CKVCommandList Object"},
    {&CLSID_KVEncodingParams, &CreateObject<CKVEncodingParams>, u"KVProjectData.KVEncodingParams13.1",
     u"KVProjectData.KVEncodingParams13", u"CKVEncodingParams Object"},
    {&CLSID_KVProjectData, &CreateObject<CKVProjectData>, u"KVProjectData.KVProjectData13.1",
     u"KVProjectData.KVProjectData13", u"CKVProjectData Object"},
    {&CLSID_KVFileService, &CreateObject<CKVFileService>, u"KVProjectData.KVFileService13.1",
     u"KVProjectData.KVFileService13", u"CKVFileService Object"},
};

HRESULT RegisterModuleTypeLibrary(const std::u16string& modulePath)
{
    ComPtr<ITypeLib> library;
    const HRESULT made = MakeTypeLibrary(ProjectTypeLibrary(), library.Put());
    if (FAILED(made)) return made;
    return Registry::PerUser() ? RegisterTypeLibForUser(library.Get(), modulePath.c_str())
                               : RegisterTypeLib(library.Get(), modulePath.c_str());
}

HRESULT UnregisterModuleTypeLibrary()
{
    ComPtr<ITypeLib> library;
    const HRESULT made = MakeTypeLibrary(ProjectTypeLibrary(), library.Put());
    if (FAILED(made)) return made;
    return Registry::PerUser() ? UnRegisterTypeLibForUser(library.Get()) : UnRegisterTypeLib(library.Get());
}

ServerModule& Module()
{
    static ServerModule module({.classes = kClasses,
                                .applicationName = u"KVProjectData",
                                .fileName = u"KVProjectData.dll",
                                .appId = &LIBID_KVProjectData,
                                .libId = &LIBID_KVProjectData,
                                .registerTypeLibrary = &RegisterModuleTypeLibrary,
                                .unregisterTypeLibrary = &UnregisterModuleTypeLibrary});
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

KV_EXPORT const kv::LibraryDescription* DllTypeLibrary()
{
    return &kv::ProjectTypeLibrary();
}

} // extern "C"
