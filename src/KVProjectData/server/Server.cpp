// The entry points of the server library and the classes that it creates.

#include "KVProjectData/Identities.h"
#include "KVProjectData/content/InstalledContent.h"
#include "KVProjectData/files/FileService.h"
#include "KVProjectData/files/TestImporter.h"
#include "KVProjectData/menus/Menu.h"
#include "KVProjectData/menus/MenuButton.h"
#include "KVProjectData/project/ProjectData.h"
#include "KVProjectData/server/TypeLibrary.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/titles/EncodingParams.h"
#include "platform/automation/TypeLibrary.h"
#include "platform/com/EntryPoints.h"
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
    {&CLSID_KVTestImporter, &CreateObject<CKVTestImporter>, u"KVProjectData.KVTestImporter13.1",
     u"KVProjectData.KVTestImporter13", u"CKVTestImporter Object"},
    {&CLSID_KVMenuButton, &CreateObject<CKVMenuButton>, u"KVProjectData.KVMenuButton13.1",
     u"KVProjectData.KVMenuButton13", u"CKVMenuButton Object"},
    {&CLSID_GroupInfoNode, &CreateObject<CGroupInfoNode>, u"KVProjectData.CGroupInfoNode.1",
     u"KVProjectData.CGroupInfoNode", u"CGroupInfoNode Object"},
    {&CLSID_KVMenu, &CreateObject<CKVMenu>, u"KVProjectData.KVMenu13.1", u"KVProjectData.KVMenu13", u"CKVMenu Object"},
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

constexpr ServerDescription kServer{.classes = kClasses,
                                    .applicationName = u"KVProjectData",
                                    .fileName = u"KVProjectData.dll",
                                    .appId = &LIBID_KVProjectData,
                                    .libId = &LIBID_KVProjectData,
                                    .registerTypeLibrary = &RegisterModuleTypeLibrary,
                                    .unregisterTypeLibrary = &UnregisterModuleTypeLibrary,
                                    .registerContent = &RegisterContent,
                                    .unregisterContent = &UnregisterContent};

} // namespace
} // namespace kv

KV_SERVER_ENTRY_POINTS(kv::kServer)

extern "C" KV_EXPORT const kv::LibraryDescription* DllTypeLibrary()
{
    return &kv::ProjectTypeLibrary();
}
