#include "KVProjectData/Identities.h"
#include "platform/automation/TypeInfo.h"
#include "platform/system/Registry.h"
#include "support/Script.h"

namespace kv::test {
namespace {

std::u16string DefaultOf(std::u16string key)
{
    return Registry::QueryText(Hive::ClassesRoot, key, {});
}

class ServerTest : public testing::Test {
protected:
    void SetUp() override { RegisterServers(); }
};

TEST_F(ServerTest, RegistersItsClassesByTheirNames)
{
    for (const auto& [clsid, name, friendlyName] :
         {std::tuple{CLSID_KVProjectData, PROGID_KVProjectData, u"CKVProjectData Object"},
          {CLSID_KVCommandList, PROGID_KVCommandList, u"CKVCommandList Object"},
          {CLSID_KVEncodingParams, PROGID_KVEncodingParams, u"CKVEncodingParams Object"},
          {CLSID_KVFileService, PROGID_KVFileService, u"CKVFileService Object"},
          {CLSID_KVTestImporter, PROGID_KVTestImporter, u"CKVTestImporter Object"},
          {CLSID_KVMenu, PROGID_KVMenu, u"CKVMenu Object"},
          {CLSID_KVMenuButton, PROGID_KVMenuButton, u"CKVMenuButton Object"},
          {CLSID_GroupInfoNode, PROGID_GroupInfoNode, u"CGroupInfoNode Object"}}) {
        EXPECT_EQ(friendlyName, DefaultOf(name));
        EXPECT_EQ(std::u16string(name) + u".1", DefaultOf(std::u16string(name) + u"\\CurVer"));
        const std::filesystem::path library(DefaultOf(u"CLSID\\" + GuidText(clsid) + u"\\InprocServer32"));
        EXPECT_TRUE(library.is_absolute() && std::filesystem::exists(library)) << library;
        CLSID found = {};
        EXPECT_EQ(S_OK, CLSIDFromProgID(name, &found));
        EXPECT_EQ(clsid, found);
    }
    const std::u16string library = GuidText(LIBID_KVProjectData);
    EXPECT_EQ(u"KVProjectData 1.0 Type Library", DefaultOf(u"TypeLib\\" + library + u"\\1.0"));
    EXPECT_EQ(u"KVProjectData", DefaultOf(u"AppID\\" + library));
    EXPECT_EQ(library, Registry::QueryText(Hive::ClassesRoot, u"AppID\\KVProjectData.dll", u"AppID"));
}

TEST_F(ServerTest, RegistersForOneUserWithoutTouchingTheMachine)
{
    const std::u16string path = DefaultOf(u"CLSID\\" + GuidText(CLSID_KVProjectData) + u"\\InprocServer32");
    const auto keysIn = [](Hive hive) {
        std::size_t found = 0;
        for (const std::u16string& key :
             {std::u16string(PROGID_KVProjectData), u"CLSID\\" + GuidText(CLSID_KVProjectData),
              u"TypeLib\\" + GuidText(LIBID_KVProjectData), u"Interface\\" + GuidText(IKVTitle::IID),
              u"AppID\\" + GuidText(LIBID_KVProjectData)}) {
            found += Registry::KeyExists(hive, u"Software\\Classes\\" + key);
        }
        return found;
    };
    ASSERT_EQ(S_OK, UnregisterServer(path));
    EXPECT_EQ(0u, keysIn(Hive::LocalMachine));
    EXPECT_TRUE(Registry::KeyExists(Hive::ClassesRoot, u"AppID")) << "nothing but the key of all applications is left";
    ComPtr<IKVProjectData> none;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CreateInstance(CLSID_KVProjectData, none));
    Registry::SetPerUser(true);
    EXPECT_EQ(S_OK, RegisterServer(path));
    EXPECT_EQ(5u, keysIn(Hive::CurrentUser));
    EXPECT_EQ(0u, keysIn(Hive::LocalMachine));
    EXPECT_TRUE(NewProject());
    ComPtr<ITypeLib> library;
    EXPECT_EQ(S_OK, LoadRegTypeLib(LIBID_KVProjectData, 1, 0, LOCALE_USER_DEFAULT, library.Put()));

    // What is registered for the machine stays when a user's registration goes.
    Registry::SetPerUser(false);
    EXPECT_EQ(S_OK, RegisterServer(path));
    Registry::SetPerUser(true);
    EXPECT_EQ(S_OK, UnregisterServer(path));
    Registry::SetPerUser(false);
    EXPECT_EQ(0u, keysIn(Hive::CurrentUser));
    EXPECT_EQ(5u, keysIn(Hive::LocalMachine));
}

TEST_F(ServerTest, CreatesNoneButItsClasses)
{
    // A class identity that is registered for the library without being one of its classes.
    constexpr CLSID kNotCreatable = "7d1b3a57-6c0e-4f0e-9d54-0b6f4cb1a9c2"_guid;
    const std::u16string path = DefaultOf(u"CLSID\\" + GuidText(CLSID_KVProjectData) + u"\\InprocServer32");
    Registry::Set(Hive::ClassesRoot, u"CLSID\\" + GuidText(kNotCreatable) + u"\\InprocServer32", {}, path);
    ComPtr<IUnknown> none;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, CreateInstance(kNotCreatable, none));
    Registry::DeleteTree(Hive::ClassesRoot, u"CLSID\\" + GuidText(kNotCreatable));
}

struct IOuter : IUnknown {
    static constexpr GUID IID = "6f1d2a0c-55b0-4a0b-8f53-9b1b6d1c7e11"_guid;
    using Base = IUnknown;
};

class Outer final : public Object<IOuter> {};

TEST_F(ServerTest, CreatesObjectsThatCanBeAggregated)
{
    for (const CLSID* clsid :
         {&CLSID_KVProjectData, &CLSID_KVCommandList, &CLSID_KVEncodingParams, &CLSID_KVFileService}) {
        const auto outer = Make<Outer>();
        ComPtr<IUnknown> inner;
        EXPECT_EQ(S_OK, CoCreateInstance(*clsid, outer->Controlling(), CLSCTX_ALL, IUnknown::IID, inner.PutVoid()));
        const auto dispatch = Query<IDispatch>(inner);
        ASSERT_TRUE(dispatch);
        EXPECT_EQ(Query<IUnknown>(outer), Query<IUnknown>(dispatch)) << "the outer object's identity";
        ComPtr<IDispatch> direct;
        EXPECT_EQ(CLASS_E_NOAGGREGATION,
                  CoCreateInstance(*clsid, outer->Controlling(), CLSCTX_ALL, IDispatch::IID, direct.PutVoid()));
    }
}

TEST_F(ServerTest, ServesAHostThatBindsLate)
{
    CLSID clsid = {};
    ASSERT_EQ(S_OK, CLSIDFromProgID(u"KVProjectData.KVProjectData13", &clsid));
    ComPtr<IDispatch> object;
    ASSERT_EQ(S_OK, CreateInstance(clsid, object));
    ScriptHost project(object.Get());
    for (const auto& [name, spelled, text, read] : {std::tuple{u"label", u"Label", u"Trip", u"Trip"},
                                                    {u"DISCFORMAT", u"DiscFormat", u"7", u"7"},
                                                    {u"MenuLess", u"MenuLess", u"true", u"-1"}}) {
        project.Put(name, Variant(text));
        EXPECT_EQ(read, project.Get(spelled));
    }
    ComPtr<IDispatch> title;
    Variant out;
    out.vt = VT_DISPATCH | VT_BYREF;
    out.ppdispVal = title.Put();
    project.Call(u"AddTitle", DISPATCH_METHOD, {Variant(LONG{0}), out});
    ASSERT_TRUE(title);
    ScriptHost(title.Get()).Put(u"StillWaitTime", Variant(u"12"));
    EXPECT_EQ(12, ValueOf(*Query<IKVTitle>(title).Get(), &IKVTitle::get_StillWaitTime));
    EXPECT_EQ(u"1", project.Get(u"TitleCount"));
}

} // namespace
} // namespace kv::test
