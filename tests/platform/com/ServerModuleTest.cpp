#include "platform/com/ServerModule.h"

#include "platform/automation/Bstr.h"
#include "platform/system/Locale.h"
#include "platform/system/Registry.h"

#include <filesystem>
#include <functional>
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
    {&kFailingClass, kv::CreateObject<Failing>, nullptr, nullptr, u"Failing Object"}};

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
}

TEST_F(ServerModuleTest, FailuresHandOutNothing)
{
    using Factory = IClassFactory;
    const auto factory = ClassObject(kCounterClass);
    const auto outer = kv::Make<Outer>();
    const auto failing = ClassObject(kFailingClass);
    const std::pair<HRESULT, std::function<HRESULT(void**)>> cases[]{
        {CLASS_E_CLASSNOTAVAILABLE, [&](void** o) { return module.GetClassObject(kOtherClass, Factory::IID, o); }},
        {E_NOINTERFACE, [&](void** o) { return module.GetClassObject(kCounterClass, ICounter::IID, o); }},
        {CLASS_E_NOAGGREGATION, [&](void** o) { return factory->CreateInstance(outer->Inner(), ICounter::IID, o); }},
        {E_ACCESSDENIED, [&](void** o) { return failing->CreateInstance(nullptr, ICounter::IID, o); }},
        {E_OUTOFMEMORY, [](void** o) { return kv::CreateObject<Throwing>(nullptr, ICounter::IID, o); }},
        {E_NOINTERFACE, [](void** o) { return kv::CreateObject<Counter>(nullptr, Factory::IID, o); }},
        // Then, what a client still holds stays valid, and creates nothing.
        {E_UNEXPECTED,
         [&](void** o) { return module.Terminate(), module.GetClassObject(kCounterClass, Factory::IID, o); }},
        {E_UNEXPECTED, [&](void** o) { return factory->CreateInstance(nullptr, ICounter::IID, o); }}};
    EXPECT_EQ(module.GetClassObject(kCounterClass, Factory::IID, nullptr), E_POINTER);
    EXPECT_EQ(kv::CreateObject<Counter>(nullptr, ICounter::IID, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(nullptr, ICounter::IID, nullptr), E_POINTER);
    for (const auto& [result, call] : cases) {
        void* none = &none;
        EXPECT_EQ(call(&none), result);
        EXPECT_EQ(none, nullptr);
    }
    EXPECT_EQ(factory->LockServer(true), E_UNEXPECTED);
}

TEST_F(ServerModuleTest, ObjectsAndLocksKeepTheLibrary)
{
    const auto factory = ClassObject(kCounterClass);
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
    for (const BOOL lock : {true, false}) {
        EXPECT_EQ(factory->LockServer(lock), S_OK);
        EXPECT_EQ(module.CanUnloadNow(), lock ? S_FALSE : S_OK);
    }
    ComPtr<ICounter> counter;
    ASSERT_EQ(factory->CreateInstance(nullptr, ICounter::IID, counter.PutVoid()), S_OK);
    EXPECT_EQ(counter->Count(), 1);
    EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
    counter.Reset();
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}

TEST_F(ServerModuleTest, CreatesInnerObjects)
{
    const auto outer = kv::Make<Outer>();
    ComPtr<IUnknown> inner;
    ASSERT_EQ(ClassObject(kCounterClass)->CreateInstance(outer->Inner(), IUnknown::IID, inner.PutVoid()), S_OK);
    const auto counter = kv::Query<ICounter>(inner);
    ASSERT_TRUE(counter);
    EXPECT_EQ(kv::Query<IUnknown>(counter).Get(), outer->Inner());
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

    static std::vector<std::u16string> SubKeys(std::u16string_view key)
    {
        std::vector<std::u16string> names;
        EXPECT_EQ(kv::Registry::SubKeys(kv::Hive::ClassesRoot, key, names), S_OK);
        return names;
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
    // Key, name, text.
    const std::tuple<std::u16string, std::u16string_view, std::u16string_view> values[]{
        {u"Sample.Counter.1", u"", u"Counter Object"},
        {u"Sample.Counter.1\\CLSID", u"", clsid},
        {u"Sample.Counter", u"", u"Counter Object"},
        {u"Sample.Counter\\CLSID", u"", clsid},
        {u"Sample.Counter\\CurVer", u"", u"Sample.Counter.1"},
        {key, u"", u"Counter Object"},
        {key, u"AppID", kAppIdText},
        {key + u"\\ProgID", u"", u"Sample.Counter.1"},
        {key + u"\\VersionIndependentProgID", u"", u"Sample.Counter"},
        {key + u"\\InprocServer32", u"ThreadingModel", u"both"},
        {key + u"\\TypeLib", u"", kAppIdText},
        {u"AppID\\" + std::u16string(kAppIdText), u"", u"Sample"},
        {u"AppID\\Sample.dll", u"AppID", kAppIdText}};
    for (const auto& [path, name, text] : values)
        EXPECT_EQ(Text(path, name), text) << std::filesystem::path(path);
    EXPECT_TRUE(Exists(key + u"\\Programmable"));
    EXPECT_TRUE(std::filesystem::exists(Text(key + u"\\InprocServer32")));
    EXPECT_THAT(SubKeys(u"CLSID\\{33333333-0000-0000-0000-000000000002}"),
                testing::UnorderedElementsAre(u"InprocServer32", u"Programmable", u"TypeLib"))
        << "a class without names";
}

TEST_F(RegistrationTest, MayBeRepeatedAndRemovesItsOwnKeysOnly)
{
    ASSERT_EQ(kv::Registry::Set(kv::Hive::ClassesRoot, u"AppID\\Other.dll", u"AppID", std::u16string(u"{}")), S_OK);
    for (int time = 0; time < 2; ++time)
        ASSERT_EQ(module.RegisterServer(), S_OK);
    EXPECT_EQ(Text(u"Sample.Counter\\CurVer"), u"Sample.Counter.1");
    const ServerModule plain{kv::ServerDescription{.classes = kClasses}};
    EXPECT_EQ(plain.UnregisterServer(), S_OK);
    EXPECT_EQ(plain.UnregisterServer(), S_OK);
    EXPECT_TRUE(Exists(u"AppID\\Sample.dll"));

    ASSERT_EQ(module.RegisterServer(), S_OK);
    ASSERT_EQ(module.UnregisterServer(), S_OK);
    EXPECT_EQ(g_typeLibrary.unregistered, 1);
    EXPECT_THAT(SubKeys(u""), testing::UnorderedElementsAre(u"AppID", u"CLSID"));
    EXPECT_THAT(SubKeys(u"CLSID"), testing::IsEmpty());
    EXPECT_THAT(SubKeys(u"AppID"), testing::ElementsAre(u"Other.dll"));
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
