#include "platform/com/Activation.h"

#include "platform/com/Object.h"
#include "platform/com/TaskMemory.h"
#include "platform/system/Registry.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

using kv::ComPtr;
using kv::Hive;
namespace Registry = kv::Registry;

constexpr CLSID kClass = "01234567-89ab-cdef-0123-456789abcdef"_guid;
constexpr CLSID kOther = "01234567-89ab-cdef-0123-456789abcdee"_guid;
constexpr std::u16string_view kClassText = u"{01234567-89AB-CDEF-0123-456789ABCDEF}";
/// A library that is no server, and that nothing else in the program loads.
constexpr char kPlainLibrary[] = "libanl.so.1";

class Made : public kv::Object<IUnknown> {
public:
    explicit Made(IUnknown* outer) : Object(outer) {}
};

class Factory : public kv::Object<IClassFactory> {
public:
    HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** out) override
    {
        *out = nullptr;
        const auto made = kv::MakeInner<Made>(outer);
        return made->Inner()->QueryInterface(iid, out);
    }
    HRESULT LockServer(BOOL) override { return E_NOTIMPL; }
};

/// Fails the test that leaves an object behind.
class ActivationTest : public testing::Test {
protected:
    ActivationTest() { Registry::UseMemory(); }
    ~ActivationTest() override { EXPECT_EQ(kv::g_moduleLocks, 0); }

    static void Put(std::u16string_view key, std::u16string_view text)
    {
        ASSERT_EQ(Registry::Set(Hive::ClassesRoot, key, {}, std::u16string(text)), S_OK);
    }

    static void PutServer(std::u16string_view library)
    {
        Put(u"CLSID\\" + std::u16string(kClassText) + u"\\InprocServer32", library);
    }

    /// The result of creating an object of `kClass`, none of which can succeed.
    static HRESULT Create(DWORD context = CLSCTX_ALL)
    {
        void* none = &none;
        const HRESULT result = CoGetClassObject(kClass, context, nullptr, IClassFactory::IID, &none);
        EXPECT_EQ(none, nullptr);
        none = &none;
        EXPECT_EQ(CoCreateInstance(kClass, nullptr, context, IUnknown::IID, &none), result);
        EXPECT_EQ(none, nullptr);
        return result;
    }
};

TEST_F(ActivationTest, FindsTheIdentityOfAName)
{
    for (const auto& [key, text] : {std::pair{u"Sample.1\\CLSID", std::u16string(kClassText)},
                                    {u"Sample\\CurVer", u"Sample.1"},
                                    {u"Own\\CLSID", kv::GuidText(kOther)},
                                    {u"Own\\CurVer", u"Sample.1"},
                                    {u"Endless\\CurVer", u"Endless"},
                                    {u"Dangling\\CurVer", u"Missing"},
                                    {u"Bad\\CLSID", u"01234567-89AB-CDEF-0123-456789ABCDEF"},
                                    {u"Empty\\CLSID", u""}})
        Put(key, text);
    const std::pair<const OLECHAR*, CLSID> found[]{{u"Sample.1", kClass}, {u"sample", kClass}, {u"Own", kOther}};
    CLSID clsid{};
    for (const auto& [name, expected] : found) {
        EXPECT_EQ(CLSIDFromProgID(name, &clsid), S_OK) << kv::ToUtf8(name);
        EXPECT_EQ(clsid, expected);
    }
    for (const OLECHAR* name :
         {u"Endless", u"Dangling", u"Bad", u"Empty", u"Missing", u"", static_cast<const OLECHAR*>(nullptr)}) {
        clsid = kOther;
        EXPECT_EQ(CLSIDFromProgID(name, &clsid), CO_E_CLASSSTRING) << kv::ToUtf8(name ? name : u"null");
        EXPECT_EQ(clsid, GUID_NULL);
    }
    EXPECT_EQ(CLSIDFromProgID(u"Sample", nullptr), E_POINTER);
}

TEST_F(ActivationTest, ReadsAndWritesIdentities)
{
    CLSID clsid = kOther;
    EXPECT_EQ(CLSIDFromString(u"{01234567-89ab-CDEF-0123-456789abcdef}", &clsid), S_OK);
    EXPECT_EQ(clsid, kClass);
    kv::UniqueTaskMem<OLECHAR> text;
    OLECHAR* raw = nullptr;
    ASSERT_EQ(StringFromCLSID(kClass, &raw), S_OK);
    text.reset(raw);
    EXPECT_EQ(std::u16string_view(text.get()), kClassText);
    for (const OLECHAR* bad :
         {u"", u"{}", u"01234567-89AB-CDEF-0123-456789ABCDEF", u"{01234567-89AB-CDEF-0123-456789ABCDE}",
          u"{01234567-89AB-CDEF-0123-456789ABCDEF} ", u"{0123456789ABCDEF-CDEF-0123-456789ABCDE}",
          u"{01234567-89AB-CDEF-0123-456789ABCDEG}", u"(01234567-89AB-CDEF-0123-456789ABCDEF)",
          u"{01234567-89AB-CDEF-0123-456789ABCDE\uff11}"}) {
        clsid = kOther;
        EXPECT_EQ(CLSIDFromString(bad, &clsid), CO_E_CLASSSTRING) << kv::ToUtf8(bad);
        EXPECT_EQ(clsid, GUID_NULL);
    }
    clsid = kOther;
    EXPECT_EQ(CLSIDFromString(nullptr, &clsid), S_OK);
    EXPECT_EQ(clsid, GUID_NULL);
    EXPECT_EQ(CLSIDFromString(u"", nullptr), E_POINTER);
    EXPECT_EQ(StringFromCLSID(kClass, nullptr), E_POINTER);
}

TEST_F(ActivationTest, TellsWhyAClassIsNotThere)
{
    EXPECT_EQ(Create(), REGDB_E_CLASSNOTREG);
    for (const auto* library : {u"", u"/nowhere/server.dll", u"\\nowhere\\server.dll", u"/dev/null"}) {
        PutServer(library);
        for (int time = 0; time < 2; ++time)
            EXPECT_EQ(Create(), *library ? CO_E_DLLNOTFOUND : REGDB_E_CLASSNOTREG) << kv::ToUtf8(library);
    }
    for (const auto call : {kv::RegisterServer, kv::UnregisterServer}) {
        EXPECT_EQ(call(u"/nowhere/server.dll"), CO_E_DLLNOTFOUND);
        EXPECT_EQ(call(kv::ToUtf16(kPlainLibrary)), CO_E_ERRORINDLL);
    }
    PutServer(kv::ToUtf16(kPlainLibrary));
    EXPECT_EQ(Create(), CO_E_ERRORINDLL);
    CoFreeUnusedLibrariesEx(0, 0);
    void* loaded = dlopen(kPlainLibrary, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(loaded, nullptr) << "a library that does not agree is kept";
    dlclose(loaded);
    EXPECT_EQ(Create(), CO_E_ERRORINDLL) << "usable as before";
    EXPECT_EQ(Create(CLSCTX_ALL & ~CLSCTX_INPROC_SERVER), REGDB_E_CLASSNOTREG) << "no server of that kind";

    EXPECT_EQ(CoGetClassObject(kClass, CLSCTX_ALL, nullptr, IClassFactory::IID, nullptr), E_POINTER);
    EXPECT_EQ(CoCreateInstance(kClass, nullptr, CLSCTX_ALL, IUnknown::IID, nullptr), E_POINTER);
}

TEST_F(ActivationTest, RegisteredClassObjectsComeFirst)
{
    PutServer(u"/nowhere/server.dll");
    const auto factory = kv::Make<Factory>();
    const auto newer = kv::Make<Factory>();
    DWORD cookie = 0;
    DWORD second = 0;
    ASSERT_EQ(CoRegisterClassObject(kClass, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie), S_OK);
    ASSERT_EQ(CoRegisterClassObject(kClass, newer.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &second), S_OK);
    EXPECT_NE(cookie, 0u);
    EXPECT_NE(cookie, second);

    ComPtr<IClassFactory> found;
    ASSERT_EQ(CoGetClassObject(kClass, CLSCTX_ALL, nullptr, IClassFactory::IID, found.PutVoid()), S_OK);
    EXPECT_EQ(found.Get(), factory.Get());
    ComPtr<IUnknown> made;
    EXPECT_EQ(kv::CreateInstance(kClass, made), S_OK);
    EXPECT_TRUE(made);
    const auto outer = kv::Make<Made>(nullptr);
    ComPtr<IUnknown> inner;
    EXPECT_EQ(CoCreateInstance(kClass, outer->Inner(), CLSCTX_ALL, IUnknown::IID, inner.PutVoid()), S_OK);
    void* none = &none;
    EXPECT_EQ(CoGetClassObject(kClass, CLSCTX_ALL, nullptr, kOther, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(CoGetClassObject(kOther, CLSCTX_ALL, nullptr, IClassFactory::IID, &none), REGDB_E_CLASSNOTREG);

    EXPECT_EQ(CoRevokeClassObject(cookie), S_OK);
    EXPECT_EQ(CoRevokeClassObject(cookie), CO_E_OBJNOTREG);
    ASSERT_EQ(CoGetClassObject(kClass, CLSCTX_ALL, nullptr, IClassFactory::IID, found.PutVoid()), S_OK);
    EXPECT_EQ(found.Get(), newer.Get());
    EXPECT_EQ(CoRevokeClassObject(second), S_OK);
    EXPECT_EQ(Create(), CO_E_DLLNOTFOUND);
}

TEST_F(ActivationTest, AClassObjectIsNotRegisteredHalfway)
{
    const auto factory = kv::Make<Factory>();
    DWORD cookie = 7;
    EXPECT_TRUE(FAILED(CoRegisterClassObject(kClass, nullptr, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie)));
    EXPECT_EQ(cookie, 0u);
    EXPECT_EQ(CoRegisterClassObject(kClass, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, nullptr),
              E_POINTER);
    EXPECT_EQ(Create(), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(CoRevokeClassObject(0), CO_E_OBJNOTREG);
}

} // namespace
