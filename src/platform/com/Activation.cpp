#include "platform/com/Activation.h"

#include "platform/com/BuiltInClasses.h"
#include "platform/com/Error.h"
#include "platform/com/TaskMemory.h"
#include "platform/system/CriticalSection.h"
#include "platform/system/Paths.h"
#include "platform/system/Registry.h"

#include <chrono>
#include <cstring>
#include <dlfcn.h>
#include <map>
#include <memory>
#include <optional>

namespace kv {
namespace {

using GetClassObjectEntry = HRESULT (*)(REFCLSID, REFIID, void**);
using PlainEntry = HRESULT (*)();
using Clock = std::chrono::steady_clock;

constexpr std::chrono::minutes kUnloadDelay{10};

/// A server library; unloaded with this object.
class ServerLibrary {
public:
    explicit ServerLibrary(const std::string& path) : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
    {
        if (!m_handle) throw Error(CO_E_DLLNOTFOUND);
    }
    ServerLibrary(const ServerLibrary&) = delete;
    ServerLibrary& operator=(const ServerLibrary&) = delete;
    ~ServerLibrary() { dlclose(m_handle); }

    /// Throws Error(CO_E_ERRORINDLL) when the library does not have it.
    template <class Entry>
    Entry EntryPoint(const char* name) const
    {
        void* entry = dlsym(m_handle, name);
        if (!entry) throw Error(CO_E_ERRORINDLL);
        return reinterpret_cast<Entry>(entry);
    }

    /// While it is used the library stays, whatever it says of itself.
    void BeginUse()
    {
        ++m_uses;
        m_idleSince.reset();
    }
    void EndUse() { --m_uses; }

    /// Whether the library has agreed to go for so long. Asks it, and starts the time when it agrees anew.
    bool IsIdleFor(Clock::duration delay)
    {
        if (m_uses || !CanUnloadNow()) {
            m_idleSince.reset();
            return false;
        }
        if (!m_idleSince) m_idleSince = Clock::now();
        return Clock::now() - *m_idleSince >= delay;
    }

private:
    bool CanUnloadNow() const
    {
        void* entry = dlsym(m_handle, "DllCanUnloadNow");
        return entry && reinterpret_cast<PlainEntry>(entry)() == S_OK;
    }

    void* m_handle;
    unsigned m_uses = 0;
    std::optional<Clock::time_point> m_idleSince;
};

struct RegisteredClass {
    CLSID clsid;
    ComPtr<IUnknown> object;
};

struct Servers {
    /// Held while a library is loaded or unloaded, so that one that comes back is set up after it was wound down.
    /// Entered before the section, which stays free meanwhile: the library may want it on another thread.
    CriticalSection loading;
    CriticalSection section;
    std::map<std::string, std::unique_ptr<ServerLibrary>> libraries;
    std::map<DWORD, RegisteredClass> classObjects;
    DWORD nextCookie = 1;
};

Servers& Shared()
{
    // Objects may outlive the end of the program's statics, and so must the libraries that they live in.
    static Servers* const servers = new Servers;
    return *servers;
}

ComPtr<IUnknown> RegisteredObject(REFCLSID clsid)
{
    Servers& servers = Shared();
    const SectionLock lock(servers.section);
    for (const auto& [cookie, registered] : servers.classObjects) {
        if (registered.clsid == clsid) return registered.object;
    }
    return nullptr;
}

/// Begins a use of the library when it is loaded; nullptr when it is not.
ServerLibrary* BeginUseOfLoaded(const std::string& path)
{
    Servers& servers = Shared();
    const SectionLock lock(servers.section);
    const auto loaded = servers.libraries.find(path);
    if (loaded == servers.libraries.end()) return nullptr;
    loaded->second->BeginUse();
    return loaded->second.get();
}

/// Begins a use of the library, which it loads where needed. Throws Error.
ServerLibrary* BeginUse(const std::string& path)
{
    if (ServerLibrary* const loaded = BeginUseOfLoaded(path)) return loaded;
    Servers& servers = Shared();
    const SectionLock loading(servers.loading);
    // Another thread may have been first.
    if (ServerLibrary* const loaded = BeginUseOfLoaded(path)) return loaded;
    auto library = std::make_unique<ServerLibrary>(path);
    const SectionLock lock(servers.section);
    // The library may have asked for a class of its own while it was loaded, and then is there.
    ServerLibrary* const kept = servers.libraries.try_emplace(path, std::move(library)).first->second.get();
    kept->BeginUse();
    return kept;
}

/// One use of a server library, from before it is called until what it handed out speaks for it.
class ServerUse {
public:
    /// Loads the library where needed. Throws Error.
    explicit ServerUse(const std::string& path) : m_library(BeginUse(path)) {}
    ServerUse(const ServerUse&) = delete;
    ServerUse& operator=(const ServerUse&) = delete;
    ~ServerUse()
    {
        const SectionLock lock(Shared().section);
        m_library->EndUse();
    }

    const ServerLibrary& Library() const { return *m_library; }

private:
    ServerLibrary* m_library;
};

HRESULT ClassObjectFromServer(REFCLSID clsid, REFIID iid, void** out, std::optional<ServerUse>& use)
{
    const std::u16string path =
        Registry::QueryText(Hive::ClassesRoot, u"CLSID\\" + GuidText(clsid) + u"\\InprocServer32", {});
    if (path.empty()) return REGDB_E_CLASSNOTREG;
    use.emplace(ToHostPath(path));
    return use->Library().EntryPoint<GetClassObjectEntry>("DllGetClassObject")(clsid, iid, out);
}

/// `use` is set when the class object is a server library's.
HRESULT FindClassObject(REFCLSID clsid, DWORD context, REFIID iid, void** out, std::optional<ServerUse>& use)
{
    if (!(context & CLSCTX_INPROC_SERVER)) return REGDB_E_CLASSNOTREG;
    return Guarded([&] {
        if (const auto registered = RegisteredObject(clsid)) return registered->QueryInterface(iid, out);
        const HRESULT builtIn = GetBuiltInClassObject(clsid, iid, out);
        return builtIn == REGDB_E_CLASSNOTREG ? ClassObjectFromServer(clsid, iid, out, use) : builtIn;
    });
}

void FreeLibrariesUnusedFor(Clock::duration delay)
{
    Servers& servers = Shared();
    const SectionLock loading(servers.loading);
    // Emptied outside the section.
    decltype(servers.libraries) unused;
    const SectionLock lock(servers.section);
    for (auto next = servers.libraries.begin(); next != servers.libraries.end();) {
        const auto library = next++;
        if (library->second->IsIdleFor(delay)) unused.insert(servers.libraries.extract(library));
    }
}

/// The value of a hexadecimal digit; 16 for anything else.
unsigned DigitValue(char16_t c)
{
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10u;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10u;
    return 16;
}

bool ParseGuid(std::u16string_view text, GUID& guid)
{
    static constexpr std::u16string_view kForm = u"{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
    if (text.size() != kForm.size()) return false;
    BYTE bytes[16]{};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        if (kForm[i] != u'x') {
            if (text[i] != kForm[i]) return false;
            continue;
        }
        const unsigned digit = DigitValue(text[i]);
        if (digit > 15) return false;
        BYTE& byte = bytes[digits++ / 2];
        byte = static_cast<BYTE>(byte << 4 | digit);
    }
    guid.Data1 = static_cast<ULONG>(bytes[0]) << 24 | static_cast<ULONG>(bytes[1]) << 16 |
                 static_cast<ULONG>(bytes[2]) << 8 | bytes[3];
    guid.Data2 = static_cast<USHORT>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<USHORT>(bytes[6] << 8 | bytes[7]);
    std::memcpy(guid.Data4, bytes + 8, sizeof guid.Data4);
    return true;
}

HRESULT CallServer(std::u16string_view path, const char* entry)
{
    return Guarded([&] {
        const ServerUse use(ToHostPath(path));
        return use.Library().EntryPoint<PlainEntry>(entry)();
    });
}

} // namespace

std::u16string GuidText(REFGUID guid)
{
    static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    std::u16string text = u"{";
    const auto append = [&](ULONG value, int digits) {
        for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
            text += kDigits[value >> shift & 0xf];
    };
    append(guid.Data1, 8);
    text += u'-';
    append(guid.Data2, 4);
    text += u'-';
    append(guid.Data3, 4);
    for (std::size_t i = 0; i < 8; ++i) {
        if (i == 0 || i == 2) text += u'-';
        append(guid.Data4[i], 2);
    }
    return text += u'}';
}

std::vector<CLSID> ClassesOfCategory(REFGUID category)
{
    std::vector<std::u16string> names;
    Registry::SubKeys(Hive::ClassesRoot, u"CLSID", names);
    const std::u16string below = u"\\Implemented Categories\\" + GuidText(category);
    std::vector<CLSID> classes;
    for (const std::u16string& name : names) {
        CLSID clsid{};
        const bool isClass = SUCCEEDED(CLSIDFromString(name.c_str(), &clsid));
        if (isClass && Registry::KeyExists(Hive::ClassesRoot, u"CLSID\\" + name + below)) classes.push_back(clsid);
    }
    return classes;
}

HRESULT RegisterServer(std::u16string_view libraryPath)
{
    return CallServer(libraryPath, "DllRegisterServer");
}

HRESULT UnregisterServer(std::u16string_view libraryPath)
{
    return CallServer(libraryPath, "DllUnregisterServer");
}

} // namespace kv

HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void*, REFIID iid, void** out)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    std::optional<kv::ServerUse> use;
    return kv::FindClassObject(clsid, context, iid, out, use);
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** out)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    // Outlasts the creation: only then the new object speaks for its library.
    std::optional<kv::ServerUse> use;
    kv::ComPtr<IClassFactory> factory;
    const HRESULT result = kv::FindClassObject(clsid, context, IClassFactory::IID, factory.PutVoid(), use);
    return FAILED(result) ? result : factory->CreateInstance(outer, iid, out);
}

HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown* classObject, DWORD, DWORD, DWORD* cookie)
{
    if (!cookie) return E_POINTER;
    *cookie = 0;
    if (!classObject) return E_INVALIDARG;
    return kv::Guarded([&] {
        kv::Servers& servers = kv::Shared();
        const kv::SectionLock lock(servers.section);
        servers.classObjects.emplace(servers.nextCookie, kv::RegisteredClass{clsid, classObject});
        *cookie = servers.nextCookie++;
        return S_OK;
    });
}

HRESULT CoRevokeClassObject(DWORD cookie)
{
    kv::ComPtr<IUnknown> revoked;
    kv::Servers& servers = kv::Shared();
    const kv::SectionLock lock(servers.section);
    const auto found = servers.classObjects.find(cookie);
    if (found == servers.classObjects.end()) return CO_E_OBJNOTREG;
    revoked = std::move(found->second.object);
    servers.classObjects.erase(found);
    return S_OK;
}

void CoFreeUnusedLibrariesEx(DWORD delay, DWORD)
{
    kv::FreeLibrariesUnusedFor(std::chrono::milliseconds(delay));
}

void CoFreeUnusedLibraries()
{
    kv::FreeLibrariesUnusedFor(kv::kUnloadDelay);
}

HRESULT CLSIDFromString(const OLECHAR* text, CLSID* clsid)
{
    if (!clsid) return E_POINTER;
    *clsid = GUID_NULL;
    if (!text) return S_OK;
    return kv::ParseGuid(text, *clsid) ? S_OK : CO_E_CLASSSTRING;
}

HRESULT CLSIDFromProgID(const OLECHAR* progId, CLSID* clsid)
{
    if (!clsid) return E_POINTER;
    *clsid = GUID_NULL;
    if (!progId || !*progId) return CO_E_CLASSSTRING;
    return kv::Guarded([&] {
        const auto clsidOf = [](std::u16string_view name) {
            return kv::Registry::QueryText(kv::Hive::ClassesRoot, std::u16string(name) + u"\\CLSID", {});
        };
        std::u16string text = clsidOf(progId);
        if (text.empty()) {
            const std::u16string current =
                kv::Registry::QueryText(kv::Hive::ClassesRoot, std::u16string(progId) + u"\\CurVer", {});
            if (!current.empty()) text = clsidOf(current);
        }
        return text.empty() ? CO_E_CLASSSTRING : CLSIDFromString(text.c_str(), clsid);
    });
}

HRESULT StringFromCLSID(REFCLSID clsid, OLECHAR** text)
{
    if (!text) return E_POINTER;
    *text = nullptr;
    return kv::Guarded([&] {
        const std::u16string formatted = kv::GuidText(clsid);
        const std::size_t size = (formatted.size() + 1) * sizeof(OLECHAR);
        *text = static_cast<OLECHAR*>(CoTaskMemAlloc(size));
        if (!*text) return E_OUTOFMEMORY;
        std::memcpy(*text, formatted.c_str(), size);
        return S_OK;
    });
}
