#pragma once
// What a server library needs for its four entry points.

#include "platform/com/Export.h"
#include "platform/com/Object.h"
#include "platform/system/CriticalSection.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kv {

/// One creatable class of a server library.
struct ServerClass {
    const CLSID* clsid;
    /// Makes an object, as `CreateObject` does.
    HRESULT (*create)(IUnknown* outer, REFIID iid, void** out);
    /// Null for a class that is reached by its identity alone; both names are set or neither.
    const char16_t* progId;
    const char16_t* versionIndependentProgId;
    const char16_t* friendlyName;
    /// What the class can be found by; null for a class without a category.
    const GUID* category = nullptr;
};

/// A server library as it describes itself. What it points to outlives the module.
struct ServerDescription {
    /// Registered in this order.
    std::span<const ServerClass> classes;
    /// The application's name, and the file name that its identity is also found by; null with `appId`.
    const char16_t* applicationName = nullptr;
    const char16_t* fileName = nullptr;
    /// Null for a server without an application identity.
    const GUID* appId = nullptr;
    /// Null for a server without a type library, which has no functions to register one either.
    const GUID* libId = nullptr;
    HRESULT (*registerTypeLibrary)(const std::u16string& modulePath) = nullptr;
    HRESULT (*unregisterTypeLibrary)() = nullptr;
    /// What is installed with the server; null where that is the server alone.
    HRESULT (*registerContent)(std::u16string_view modulePath) = nullptr;
    HRESULT (*unregisterContent)(std::u16string_view modulePath) = nullptr;
};

/// Creates a T, calls its `HRESULT Initialise()` if it has one, and hands out the interface asked for.
/// CLASS_E_NOAGGREGATION when an outer object asks for anything but IUnknown.
template <class T>
HRESULT CreateObject(IUnknown* outer, REFIID iid, void** out)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer && iid != IUnknown::IID) return CLASS_E_NOAGGREGATION;
    return Guarded([&]() -> HRESULT {
        const Aggregated<T> object = MakeInner<T>(outer);
        if constexpr (requires { object->Initialise(); }) {
            const HRESULT initialised = object->Initialise();
            if (FAILED(initialised)) return initialised;
        }
        return object->Inner()->QueryInterface(iid, out);
    });
}

class ClassObject;

/// Stands behind the entry points of one server library, which has a single one of them.
class KV_EXPORT ServerModule {
public:
    /// `locks` is the counter of the library that the call is compiled into.
    explicit ServerModule(const ServerDescription& description, std::atomic<LONG>& locks = g_moduleLocks);
    ServerModule(const ServerModule&) = delete;
    ServerModule& operator=(const ServerModule&) = delete;
    ~ServerModule();

    /// Runs once the library is loaded; class objects are handed out from then on.
    void Initialise();

    /// Lets the class objects go. Those that a client still holds create nothing any more.
    void Terminate();

    /// The class object, made when first asked for and kept. E_UNEXPECTED before `Initialise`,
    /// CLASS_E_CLASSNOTAVAILABLE for an identity that is not among the classes.
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** out);

    /// S_OK when no object lives and no lock is held, else S_FALSE. Class objects do not count.
    HRESULT CanUnloadNow() const;

    /// Writes the application identity, the classes, the type library and the place of the content into the registry in
    /// use, all of it or, after the first failure, nothing.
    HRESULT RegisterServer() const;

    /// Removes what `RegisterServer` wrote, in the order classes, type library, content, application identity: all of
    /// it or, after the first failure, nothing.
    HRESULT UnregisterServer() const;

private:
    /// The full path of the library.
    std::u16string Path() const;

    const ServerDescription m_description;
    std::atomic<LONG>& m_locks;
    CriticalSection m_section;
    bool m_initialised = false;
    /// One for each class, empty until asked for.
    std::vector<ComPtr<ClassObject>> m_classObjects;
};

} // namespace kv
