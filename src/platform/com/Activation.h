#pragma once
// Creating objects by identity, and the server libraries they live in.

#include "platform/automation/Bstr.h"
#include "platform/com/ComPtr.h"
#include "platform/com/Export.h"

#include <vector>

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_ALL = 23;
inline constexpr DWORD REGCLS_MULTIPLEUSE = 1;

/// Finds the class object: one registered by CoRegisterClassObject, else the one that the server
/// library named by the registry ("CLSID\{…}\InprocServer32" under the classes root) hands out.
/// REGDB_E_CLASSNOTREG for an unknown identity, CO_E_DLLNOTFOUND for a library that does not load,
/// CO_E_ERRORINDLL for one without the entry point.
KV_EXPORT HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* reserved, REFIID iid, void** out);
KV_EXPORT HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** out);
KV_EXPORT HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown* classObject, DWORD context, DWORD flags,
                                        DWORD* cookie);
KV_EXPORT HRESULT CoRevokeClassObject(DWORD cookie);

/// Unloads the server libraries that nobody needs any more: those whose DllCanUnloadNow has answered S_OK in every call
/// for `delay` milliseconds, this call included, and that nobody asked for anything in the meantime. Only the first
/// call starts the time, so that with a delay it takes two calls to unload a library.
///
/// Other threads may create objects meanwhile. Two things a library cannot know, and the host sees to them: a thread
/// that releases the last object must be back from Release before the library goes, which the delay is for; and who
/// creates through a class object of his own instead of CoCreateInstance locks the server before (LockServer).
KV_EXPORT void CoFreeUnusedLibrariesEx(DWORD delay, DWORD reserved);

/// The same with a delay of ten minutes.
KV_EXPORT void CoFreeUnusedLibraries();

/// CO_E_CLASSSTRING for a name that the registry does not hold, or that names no identity.
/// A version-independent name is followed through its "CurVer" when it has no "CLSID" of its own.
KV_EXPORT HRESULT CLSIDFromProgID(const OLECHAR* progId, CLSID* clsid);

/// "{01234567-89AB-CDEF-0123-456789ABCDEF}". S_OK with GUID_NULL for null, CO_E_CLASSSTRING for anything else.
KV_EXPORT HRESULT CLSIDFromString(const OLECHAR* text, CLSID* clsid);

/// A new string in task memory.
KV_EXPORT HRESULT StringFromCLSID(REFCLSID clsid, OLECHAR** text);

namespace kv {

/// The braced upper-case form of an identity.
KV_EXPORT std::u16string GuidText(REFGUID guid);

/// The registered classes of a category, in the order of their identities.
KV_EXPORT std::vector<CLSID> ClassesOfCategory(REFGUID category);

/// Loads a server library and has it write itself into the registry in use, or remove itself.
/// CO_E_DLLNOTFOUND, CO_E_ERRORINDLL, or what the library returns.
KV_EXPORT HRESULT RegisterServer(std::u16string_view libraryPath);
KV_EXPORT HRESULT UnregisterServer(std::u16string_view libraryPath);

template <class T>
HRESULT CreateInstance(REFCLSID clsid, ComPtr<T>& out)
{
    return CoCreateInstance(clsid, nullptr, CLSCTX_ALL, T::IID, out.PutVoid());
}

} // namespace kv
