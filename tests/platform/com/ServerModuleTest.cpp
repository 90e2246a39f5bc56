#include "platform/com/ServerModule.h"

#include "platform/system/Locale.h"
#include "platform/system/Registry.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using kv::ComPtr;
using kv::ServerModule;

constexpr GUID kCounterClass = "33333333-0000-0000-0000-000000000001"_guid;
constexpr GUID kFailingClass = "33333333-0000-0000-0000-000000000002"_guid;
constexpr GUID kOtherClass = "33333333-0000-0000-0000-000000000003"_guid;

struct ICounter : IUnknown {
    static constexpr GUID IID = "33333333-0000-0000-0000-000000000010"_guid;
    using Base = IUnknown;
    virtual int Count() = 0;
};

class Counter : public kv::Object<ICounter> {
public:
    explicit Counter(IUnknown* outer) : Object(outer) {}

    HRESULT Initialise()
    {
        // An object may be shared before it is finished.
        const ComPtr<ICounter> self(this);
        m_count = 1;
        return S_OK;
    }

    int Count() override { return m_count; }

private:
    int m_count = 0;
};

class Failing : public kv::Object<ICounter> {
public:
    explicit Failing(IUnknown* outer) : Object(outer) {}
    HRESULT Initialise() { return E_ACCESSDENIED; }
    int Count() override { return 0; }
};

class Throwing : public kv::Object<ICounter> {
public:
    explicit Throwing(IUnknown* outer) : Object(outer) { throw std::bad_alloc(); }
    int Count() override { return 0; }
};

class Outer : public kv::Object<IUnknown> {};

constexpr kv::ServerClass kClasses[] = {
    {&kCounterClass, kv::CreateObject<Counter>, u"Sample.Counter.1", u"Sample.Counter", u"Counter Object"},
    {&kFailingClass, kv::CreateObject<Failing>, nullptr, nullptr, u"Failing Object"},
};

class ServerModuleTest : public testing::Test {
protected:
    ServerModuleTest() { module.Initialise(); }

    ~ServerModuleTest() override
    {
        module.Terminate();
        EXPECT_EQ(kv::g_moduleLocks, 0) << "an object was leaked";
    }

    ComPtr<IClassFactory> ClassObject(REFCLSID clsid)
    {
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(module.GetClassObject(clsid, IClassFactory::IID, factory.PutVoid()), S_OK);
        return factory;
    }

    ServerModule module{kv::ServerDescription{.classes = kClasses}};
};

TEST_F(ServerModuleTest, HandsOutOneClassObjectAClass)
{
    const auto first = ClassObject(kCounterClass);
    EXPECT_EQ(first, ClassObject(kCounterClass));
    EXPECT_FALSE(first == ClassObject(kFailingClass));

    void* none = &none;
    EXPECT_EQ(module.GetClassObject(kOtherClass, IClassFactory::IID, &none), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(none, nullptr);
    none = &none;
    EXPECT_EQ(module.GetClassObject(kCounterClass, ICounter::IID, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(module.GetClassObject(kCounterClass, IClassFactory::IID, nullptr), E_POINTER);
}

TEST_F(ServerModuleTest, HandsOutNothingUnlessInitialised)
{
    const auto factory = ClassObject(kCounterClass);
    module.Terminate();
    void* none = &none;
    EXPECT_EQ(module.GetClassObject(kCounterClass, IClassFactory::IID, &none), E_UNEXPECTED);
    EXPECT_EQ(none, nullptr);
    // What a client still holds stays valid, and creates nothing.
    none = &none;
    EXPECT_EQ(factory->CreateInstance(nullptr, ICounter::IID, &none), E_UNEXPECTED);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(factory->LockServer(true), E_UNEXPECTED);
}

TEST_F(ServerModuleTest, ObjectsAndLocksKeepTheLibrary)
{
    const auto factory = ClassObject(kCounterClass);
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
    EXPECT_EQ(factory->LockServer(true), S_OK);
    EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(false), S_OK);
    EXPECT_EQ(module.CanUnloadNow(), S_OK);

    ComPtr<ICounter> counter;
    ASSERT_EQ(factory->CreateInstance(nullptr, ICounter::IID, counter.PutVoid()), S_OK);
    EXPECT_EQ(counter->Count(), 1);
    EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
    counter.Reset();
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}

TEST_F(ServerModuleTest, CreatesInnerObjects)
{
    const auto factory = ClassObject(kCounterClass);
    const auto outer = kv::Make<Outer>();
    void* none = &none;
    EXPECT_EQ(factory->CreateInstance(outer->Inner(), ICounter::IID, &none), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(none, nullptr);

    ComPtr<IUnknown> inner;
    ASSERT_EQ(factory->CreateInstance(outer->Inner(), IUnknown::IID, inner.PutVoid()), S_OK);
    const auto counter = kv::Query<ICounter>(inner);
    ASSERT_TRUE(counter);
    EXPECT_EQ(kv::Query<IUnknown>(counter).Get(), outer->Inner());
}

TEST_F(ServerModuleTest, FailuresWhileCreatingLeaveNothingBehind)
{
    void* none = &none;
    EXPECT_EQ(ClassObject(kFailingClass)->CreateInstance(nullptr, ICounter::IID, &none), E_ACCESSDENIED);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(kv::CreateObject<Throwing>(nullptr, ICounter::IID, &none), E_OUTOFMEMORY);
    EXPECT_EQ(kv::CreateObject<Counter>(nullptr, IClassFactory::IID, &none), E_NOINTERFACE);
    EXPECT_EQ(kv::CreateObject<Counter>(nullptr, ICounter::IID, nullptr), E_POINTER);
    EXPECT_EQ(ClassObject(kCounterClass)->CreateInstance(nullptr, ICounter::IID, nullptr), E_POINTER);
}

/// What the module asked of the type library, and how it is to answer.
struct TypeLibraryCalls {
    HRESULT answer = S_OK;
    int registered = 0;
    int unregistered = 0;
};

TypeLibraryCalls g_typeLibrary;

HRESULT RegisterTypeLibrary(const std::u16string& modulePath)
{
    EXPECT_TRUE(std::filesystem::path(modulePath).is_absolute());
    EXPECT_EQ(GetThreadLocale(), LOCALE_SYSTEM_DEFAULT);
    ++g_typeLibrary.registered;
    return g_typeLibrary.answer;
}

HRESULT UnregisterTypeLibrary()
{
    EXPECT_EQ(GetThreadLocale(), LOCALE_SYSTEM_DEFAULT);
    // The classes go before the type library, the application identity after it.
    EXPECT_FALSE(kv::Registry::KeyExists(kv::Hive::ClassesRoot, u"Sample.Counter"));
    EXPECT_TRUE(kv::Registry::KeyExists(kv::Hive::ClassesRoot, u"AppID\\Sample.dll"));
    ++g_typeLibrary.unregistered;
    return g_typeLibrary.answer;
}

constexpr GUID kAppId = "44444444-abcd-0000-0000-000000000001"_guid;
constexpr std::u16string_view kAppIdText = u"{44444444-ABCD-0000-0000-000000000001}";

class RegistrationTest : public testing::Test {
protected:
    RegistrationTest()
    {
        kv::Registry::UseMemory();
        g_typeLibrary = {};
        SetThreadLocale(0x407);
    }

    ~RegistrationTest() override { EXPECT_EQ(GetThreadLocale(), 0x407u) << "the thread's locale was not restored"; }

    static std::u16string Text(std::u16string_view key, std::u16string_view name = {})
    {
        return kv::Registry::QueryText(kv::Hive::ClassesRoot, key, name);
    }

    static bool Exists(std::u16string_view key) { return kv::Registry::KeyExists(kv::Hive::ClassesRoot, key); }

    ServerModule module{kv::ServerDescription{.classes = kClasses,
                                              .applicationName = u"Sample",
                                              .fileName = u"Sample.dll",
                                              .appId = &kAppId,
                                              .libId = &kAppId,
                                              .registerTypeLibrary = RegisterTypeLibrary,
                                              .unregisterTypeLibrary = UnregisterTypeLibrary}};
};

TEST_F(RegistrationTest, WritesClassesNamesAndApplication)
{
    ASSERT_EQ(module.RegisterServer(), S_OK);
    EXPECT_EQ(g_typeLibrary.registered, 1);

    const std::u16string clsid = u"{33333333-0000-0000-0000-000000000001}";
    const std::u16string key = u"CLSID\\" + clsid;
    EXPECT_EQ(Text(u"Sample.Counter.1"), u"Counter Object");
    EXPECT_EQ(Text(u"Sample.Counter.1\\CLSID"), clsid);
    EXPECT_EQ(Text(u"Sample.Counter"), u"Counter Object");
    EXPECT_EQ(Text(u"Sample.Counter\\CLSID"), clsid);
    EXPECT_EQ(Text(u"Sample.Counter\\CurVer"), u"Sample.Counter.1");
    EXPECT_EQ(Text(key), u"Counter Object");
    EXPECT_EQ(Text(key, u"AppID"), kAppIdText);
    EXPECT_EQ(Text(key + u"\\ProgID"), u"Sample.Counter.1");
    EXPECT_EQ(Text(key + u"\\VersionIndependentProgID"), u"Sample.Counter");
    EXPECT_TRUE(Exists(key + u"\\Programmable"));
    EXPECT_TRUE(std::filesystem::exists(Text(key + u"\\InprocServer32")));
    EXPECT_EQ(Text(key + u"\\InprocServer32", u"ThreadingModel"), u"both");
    EXPECT_EQ(Text(key + u"\\TypeLib"), kAppIdText);
    EXPECT_EQ(Text(u"AppID\\" + std::u16string(kAppIdText)), u"Sample");
    EXPECT_EQ(Text(u"AppID\\Sample.dll", u"AppID"), kAppIdText);
}

TEST_F(RegistrationTest, AClassWithoutNamesHasItsIdentityAlone)
{
    ASSERT_EQ(module.RegisterServer(), S_OK);
    std::vector<std::u16string> names;
    ASSERT_EQ(kv::Registry::SubKeys(kv::Hive::ClassesRoot, u"CLSID\\{33333333-0000-0000-0000-000000000002}", names),
              S_OK);
    EXPECT_THAT(names, testing::UnorderedElementsAre(u"InprocServer32", u"Programmable", u"TypeLib"));
}

TEST_F(RegistrationTest, RemovesItsOwnKeysOnly)
{
    ASSERT_EQ(kv::Registry::Set(kv::Hive::ClassesRoot, u"AppID\\Other.dll", u"AppID", std::u16string(u"{}")), S_OK);
    ASSERT_EQ(module.RegisterServer(), S_OK);
    ASSERT_EQ(module.UnregisterServer(), S_OK);
    EXPECT_EQ(g_typeLibrary.unregistered, 1);

    std::vector<std::u16string> names;
    EXPECT_EQ(kv::Registry::SubKeys(kv::Hive::ClassesRoot, u"", names), S_OK);
    EXPECT_THAT(names, testing::UnorderedElementsAre(u"AppID", u"CLSID"));
    EXPECT_EQ(kv::Registry::SubKeys(kv::Hive::ClassesRoot, u"CLSID", names), S_OK);
    EXPECT_THAT(names, testing::IsEmpty());
    EXPECT_EQ(kv::Registry::SubKeys(kv::Hive::ClassesRoot, u"AppID", names), S_OK);
    EXPECT_THAT(names, testing::ElementsAre(u"Other.dll"));
}

TEST_F(RegistrationTest, MayBeRepeated)
{
    EXPECT_EQ(module.RegisterServer(), S_OK);
    EXPECT_EQ(module.RegisterServer(), S_OK);
    EXPECT_EQ(Text(u"Sample.Counter\\CurVer"), u"Sample.Counter.1");

    const ServerModule plain{kv::ServerDescription{.classes = kClasses}};
    EXPECT_EQ(plain.UnregisterServer(), S_OK);
    EXPECT_EQ(plain.UnregisterServer(), S_OK);
    EXPECT_TRUE(Exists(u"AppID\\Sample.dll"));
}

TEST_F(RegistrationTest, AFailureIsReturned)
{
    g_typeLibrary.answer = TYPE_E_CANTLOADLIBRARY;
    EXPECT_EQ(module.RegisterServer(), TYPE_E_CANTLOADLIBRARY);
    EXPECT_FALSE(Exists(u"Sample.Counter")) << "a failed registration leaves nothing";

    g_typeLibrary.answer = S_OK;
    ASSERT_EQ(module.RegisterServer(), S_OK);
    g_typeLibrary.answer = TYPE_E_LIBNOTREGISTERED;
    EXPECT_EQ(module.UnregisterServer(), TYPE_E_LIBNOTREGISTERED);
    EXPECT_TRUE(Exists(u"AppID\\Sample.dll"));
}

} // namespace
