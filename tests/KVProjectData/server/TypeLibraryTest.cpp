#include "platform/automation/TypeInfo.h"

#include "KVProjectData/Engine.h"
#include "support/Host.h"

#include <map>

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::Variant;

/// Unloads what can be unloaded of the library under test, but not the engine: the media libraries below it keep
/// memory that they would lose sight of.
void UnloadUnusedLibrary()
{
    const auto engine = kv::test::Create<IUnknown>(CLSID_ZXMediaInformation);
    CoFreeUnusedLibrariesEx(0, 0);
}

TEST(TypeLibraryTest, TypesOfTheRegisteredLibraryOutliveIt)
{
    kv::test::RegisterServers();
    ComPtr<ITypeLib> library;
    ASSERT_EQ(LoadRegTypeLib(LIBID_KVProjectData, 1, 0, LOCALE_SYSTEM_DEFAULT, library.Put()), S_OK);
    Bstr name;
    EXPECT_EQ(library->GetDocumentation(-1, name.Put(), nullptr), S_OK);
    EXPECT_EQ(name.View(), u"KVProjectData");
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(library->GetTypeInfoOfGuid(IKVEncodingParams::IID, info.Put()), S_OK);

    // Nothing but the type info needs the server library now.
    library.Reset();
    UnloadUnusedLibrary();
    std::u16string member = u"videobitrate";
    OLECHAR* names[] = {member.data()};
    DISPID id = DISPID_UNKNOWN;
    ASSERT_EQ(info->GetIDsOfNames(names, 1, &id), S_OK);

    const auto parameters = kv::test::Create<IKVEncodingParams>(CLSID_KVEncodingParams);
    Variant bitrate(LONG{4'000'000});
    DISPPARAMS put{&bitrate, nullptr, 1, 0};
    EXPECT_EQ(info->Invoke(parameters.Get(), id, DISPATCH_PROPERTYPUT, &put, nullptr, nullptr, nullptr), S_OK);
    LONG stored = 0;
    EXPECT_EQ(parameters->get_VideoBitrate(&stored), S_OK);
    EXPECT_EQ(stored, 4'000'000);
}

TEST(TypeLibraryTest, ObjectsTypeInfoKeepsTheServerLibraryLoaded)
{
    ComPtr<ITypeInfo> info;
    {
        const auto project = kv::test::NewProject();
        ASSERT_EQ(project->GetTypeInfo(0, 0, info.Put()), S_OK);
    }
    UnloadUnusedLibrary();
    Bstr name;
    EXPECT_EQ(info->GetDocumentation(DISPID_UNKNOWN, name.Put(), nullptr), S_OK);
    EXPECT_EQ(name.View(), u"IKVProjectData");
}

/// The types that a type's parameters and fields are of, behind their pointers, which the type refers to.
std::vector<ComPtr<ITypeInfo>> ReferredTypes(ITypeInfo& info)
{
    std::vector<ComPtr<ITypeInfo>> types;
    const auto add = [&](const TYPEDESC& described) {
        const TYPEDESC* type = &described;
        while (type->vt == VT_PTR)
            type = type->lptdesc;
        if (type->vt != VT_USERDEFINED) return;
        EXPECT_EQ(info.GetRefTypeInfo(type->hreftype, types.emplace_back().Put()), S_OK);
    };
    FUNCDESC* function = nullptr;
    for (ULONG i = 0; info.GetFuncDesc(i, &function) == S_OK; ++i) {
        for (SHORT k = 0; k < function->cParams; ++k)
            add(function->lprgelemdescParam[k].tdesc);
        info.ReleaseFuncDesc(function);
    }
    VARDESC* variable = nullptr;
    for (ULONG i = 0; info.GetVarDesc(i, &variable) == S_OK; ++i) {
        add(variable->elemdescVar.tdesc);
        info.ReleaseVarDesc(variable);
    }
    return types;
}

TEST(TypeLibraryTest, KnowsEveryTypeThatItMentions)
{
    kv::test::RegisterServers();
    ComPtr<ITypeLib> library;
    ASSERT_EQ(LoadRegTypeLib(LIBID_KVProjectData, 1, 0, LOCALE_SYSTEM_DEFAULT, library.Put()), S_OK);
    std::map<std::u16string, std::u16string> foreign;
    for (ULONG i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(library->GetTypeInfo(i, info.Put()), S_OK);
        for (const auto& type : ReferredTypes(*info)) {
            ASSERT_TRUE(type);
            ComPtr<ITypeLib> home;
            if (type->GetContainingTypeLib(home.Put(), nullptr) == S_OK) continue;
            Bstr name;
            TYPEATTR* attributes = nullptr;
            type->GetDocumentation(DISPID_UNKNOWN, name.Put(), nullptr);
            ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
            foreign[std::u16string(name.View())] = kv::GuidText(attributes->guid);
            type->ReleaseTypeAttr(attributes);
        }
    }
    EXPECT_EQ(foreign,
              (std::map<std::u16string, std::u16string>{{u"IKVMenu", kv::GuidText(IKVMenu::IID)},
                                                        {u"IOleUndoManager", kv::GuidText(IOleUndoManager::IID)},
                                                        {u"IXMLDOMNode", kv::GuidText(IXMLDOMNode::IID)}}));
}

TEST(TypeLibraryTest, EventsTakeInputAlone)
{
    for (const kv::MemberDescription& event : kv::kInterfaceDescription<_IKVProjectDataEvents>.members) {
        for (const kv::ParameterDescription& parameter : event.Parameters())
            EXPECT_EQ(parameter.flags, kv::kParameterIn) << event.name << ' ' << parameter.name;
    }
}

} // namespace
