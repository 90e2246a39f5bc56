#include "KVProjectData/Identities.h"
#include "platform/automation/TypeInfo.h"
#include "platform/system/Registry.h"
#include "support/Script.h"

#include <algorithm>

namespace kv::test {
namespace {

constexpr std::u16string_view kAppIds = u"AppID";

std::u16string DefaultOf(std::u16string key)
{
    return Registry::QueryText(Hive::ClassesRoot, key, {});
}

class ServerTest : public testing::Test {
protected:
    void SetUp() override { RegisterServers(); }
};

TEST_F(ServerTest, RegistersItsClassesUnderAllTheirNames)
{
    struct Class {
        const CLSID& clsid;
        std::u16string name;
        std::u16string friendlyName;
    };
    for (const Class& c : {Class{CLSID_KVProjectData, PROGID_KVProjectData, u"CKVProjectData Object"},
                           {CLSID_KVCommandList, PROGID_KVCommandList, u"CKVCommandList Object"},
                           {CLSID_KVEncodingParams, PROGID_KVEncodingParams, u"CKVEncodingParams Object"},
                           {CLSID_KVFileService, PROGID_KVFileService, u"CKVFileService Object"}}) {
        const std::u16string clsid = GuidText(c.clsid);
        const std::u16string key = u"CLSID\\" + clsid;
        EXPECT_EQ(c.friendlyName, DefaultOf(c.name));
        EXPECT_EQ(clsid, DefaultOf(c.name + u"\\CLSID"));
        EXPECT_EQ(c.name + u".1", DefaultOf(c.name + u"\\CurVer"));
        EXPECT_EQ(c.friendlyName, DefaultOf(c.name + u".1"));
        EXPECT_EQ(clsid, DefaultOf(c.name + u".1\\CLSID"));
        EXPECT_EQ(c.friendlyName, DefaultOf(key));
        EXPECT_EQ(c.name + u".1", DefaultOf(key + u"\\ProgID"));
        EXPECT_EQ(c.name, DefaultOf(key + u"\\VersionIndependentProgID"));
        EXPECT_TRUE(Registry::KeyExists(Hive::ClassesRoot, key + u"\\Programmable"));
        const std::filesystem::path library(DefaultOf(key + u"\\InprocServer32"));
        EXPECT_TRUE(library.is_absolute() && std::filesystem::exists(library)) << library;
        EXPECT_EQ(u"both", Registry::QueryText(Hive::ClassesRoot, key + u"\\InprocServer32", u"ThreadingModel"));
        EXPECT_EQ(GuidText(LIBID_KVProjectData), Registry::QueryText(Hive::ClassesRoot, key, u"AppID"));
        EXPECT_EQ(GuidText(LIBID_KVProjectData), DefaultOf(key + u"\\TypeLib"));
        CLSID found = {};
        EXPECT_EQ(S_OK, CLSIDFromProgID(c.name.c_str(), &found));
        EXPECT_EQ(c.clsid, found);
    }
    const std::u16string library = u"TypeLib\\" + GuidText(LIBID_KVProjectData) + u"\\1.0";
    EXPECT_EQ(u"KVProjectData 1.0 Type Library", DefaultOf(library));
    EXPECT_EQ(u"KVProjectData", DefaultOf(u"AppID\\" + GuidText(LIBID_KVProjectData)));
    EXPECT_EQ(GuidText(LIBID_KVProjectData),
              Registry::QueryText(Hive::ClassesRoot, u"AppID\\KVProjectData.dll", u"AppID"));
}

TEST_F(ServerTest, LeavesNothingBehindButTheApplicationsKey)
{
    const std::u16string path = DefaultOf(u"CLSID\\" + GuidText(CLSID_KVProjectData) + u"\\InprocServer32");
    ASSERT_EQ(S_OK, UnregisterServer(path));
    EXPECT_FALSE(Registry::KeyExists(Hive::ClassesRoot, PROGID_KVProjectData));
    EXPECT_FALSE(Registry::KeyExists(Hive::ClassesRoot, u"CLSID\\" + GuidText(CLSID_KVProjectData)));
    EXPECT_FALSE(Registry::KeyExists(Hive::ClassesRoot, u"TypeLib\\" + GuidText(LIBID_KVProjectData)));
    EXPECT_TRUE(Registry::KeyExists(Hive::ClassesRoot, kAppIds));
    std::vector<std::u16string> names;
    EXPECT_EQ(S_OK, Registry::SubKeys(Hive::ClassesRoot, kAppIds, names));
    EXPECT_EQ(0, std::ranges::count(names, u"KVProjectData.dll"));
    ComPtr<IKVProjectData> none;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CreateInstance(CLSID_KVProjectData, none));
    ASSERT_EQ(S_OK, RegisterServer(path));
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

TEST_F(ServerTest, HandsOutOneClassObjectForEachOfItsClasses)
{
    ComPtr<IClassFactory> first;
    ComPtr<IClassFactory> second;
    EXPECT_EQ(S_OK, CoGetClassObject(CLSID_KVProjectData, CLSCTX_ALL, nullptr, IClassFactory::IID, first.PutVoid()));
    EXPECT_EQ(S_OK, CoGetClassObject(CLSID_KVProjectData, CLSCTX_ALL, nullptr, IClassFactory::IID, second.PutVoid()));
    EXPECT_EQ(first, second);

    // A class identity that is registered for the library without being one of its classes.
    constexpr CLSID kNotCreatable = "7d1b3a57-6c0e-4f0e-9d54-0b6f4cb1a9c2"_guid;
    const std::u16string path = DefaultOf(u"CLSID\\" + GuidText(CLSID_KVProjectData) + u"\\InprocServer32");
    Registry::Set(Hive::ClassesRoot, u"CLSID\\" + GuidText(kNotCreatable) + u"\\InprocServer32", {}, path);
    IUnknown* none = nullptr;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              CoCreateInstance(kNotCreatable, nullptr, CLSCTX_ALL, IUnknown::IID, reinterpret_cast<void**>(&none)));
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
    project.Put(u"label", Variant(u"Trip"));
    project.Put(u"DISCFORMAT", Variant(u"7"));
    project.Put(u"MenuLess", Variant(u"true"));
    EXPECT_EQ(u"Trip", project.Get(u"Label"));
    EXPECT_EQ(u"7", project.Get(u"DiscFormat"));
    EXPECT_EQ(u"-1", project.Get(u"MenuLess"));

    IKVTitle* title = nullptr;
    std::vector<Variant> arguments;
    arguments.emplace_back(LONG{0});
    Variant out;
    out.vt = VT_DISPATCH | VT_BYREF;
    out.ppdispVal = reinterpret_cast<IDispatch**>(&title);
    arguments.push_back(out);
    project.Call(u"AddTitle", DISPATCH_METHOD, std::move(arguments));
    ASSERT_NE(nullptr, title);
    const auto owned = ComPtr<IKVTitle>::Attach(title);
    ScriptHost(owned.Get()).Put(u"StillWaitTime", Variant(u"12"));
    EXPECT_EQ(12, ValueOf(*owned.Get(), &IKVTitle::get_StillWaitTime));
    EXPECT_EQ(u"1", project.Get(u"TitleCount"));
}

} // namespace
} // namespace kv::test
