#include "platform/automation/TypeLibrary.h"

#include "platform/automation/TypeInfoObject.h"
#include "platform/system/Paths.h"

#include <dlfcn.h>

namespace kv {

HRESULT MakeTypeLibrary(const LibraryDescription& description, ITypeLib** library)
{
    return Guarded([&] {
        if (!library) return E_POINTER;
        *library = nullptr;
        return ComPtr<ITypeLib>(Make<TypeLibrary>(description, &description)).CopyTo(library);
    });
}

HRESULT MakeTypeInfo(const LibraryDescription* library, const InterfaceDescription& description, ITypeInfo** info)
{
    static constexpr LibraryDescription kNone{{}, {}, &GUID_NULL, 0, 0, 0, {}, {}, {}, {}};
    return Guarded([&] {
        if (!info) return E_POINTER;
        *info = nullptr;
        const auto owner = Make<TypeLibrary>(library ? *library : kNone, &description);
        return ComPtr<ITypeInfo>(Make<TypeInfo>(owner, TypeEntry(&description))).CopyTo(info);
    });
}

} // namespace kv

HRESULT LoadTypeLib(const OLECHAR* path, ITypeLib** library)
{
    if (!library) return E_POINTER;
    *library = nullptr;
    if (!path) return E_INVALIDARG;
    return kv::Guarded([&] {
        using Entry = const kv::LibraryDescription* (*)();
        void* module = dlopen(kv::ToHostPath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!module) return TYPE_E_CANTLOADLIBRARY;
        void* entry = dlsym(module, "DllTypeLibrary");
        const kv::LibraryDescription* description = entry ? reinterpret_cast<Entry>(entry)() : nullptr;
        const HRESULT result = description ? kv::MakeTypeLibrary(*description, library) : TYPE_E_CANTLOADLIBRARY;
        // The type library, when there is one, keeps the module loaded by itself.
        dlclose(module);
        return result;
    });
}
