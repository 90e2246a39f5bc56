#include "platform/automation/TypeInfo.h"

#include "KVProjectData/Engine.h"
#include "support/Host.h"

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

} // namespace
