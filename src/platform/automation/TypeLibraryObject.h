#pragma once
// A type library over a description.

#include "platform/automation/TypeEntry.h"
#include "platform/com/Object.h"

namespace kv {

/// Keeps the module that an address belongs to loaded.
class ModulePin {
public:
    explicit ModulePin(const void* address);
    ModulePin(const ModulePin&) = delete;
    ModulePin& operator=(const ModulePin&) = delete;
    ~ModulePin();

private:
    /// Null for the program itself, which is never unloaded.
    void* m_handle = nullptr;
};

class TypeLibrary final : public Object<ITypeLib> {
public:
    /// `anchor` lies in the module of the descriptions, which stays loaded with this object.
    TypeLibrary(const LibraryDescription& description, const void* anchor);

    ULONG GetTypeInfoCount() override { return static_cast<ULONG>(m_types.size()); }
    HRESULT GetTypeInfo(ULONG index, ITypeInfo** info) override;
    HRESULT GetTypeInfoType(ULONG index, TYPEKIND* kind) override;
    HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** info) override;
    HRESULT GetLibAttr(TLIBATTR** attributes) override;
    HRESULT GetDocumentation(LONG index, BSTR* name, BSTR* help) override;
    HRESULT IsName(const OLECHAR* name, BOOL* is) override;
    HRESULT FindName(const OLECHAR* name, ULONG hash, ITypeInfo** infos, DISPID* members, USHORT* count) override;
    void ReleaseTLibAttr(TLIBATTR* attributes) override { delete attributes; }

    const LibraryDescription& Description() const { return m_description; }

    /// What types of this library refer to that type by; 0 when neither the library nor the platform has it.
    HREFTYPE Reference(std::string_view name) const;
    /// Null for a reference that was never given.
    const TypeEntry* Find(HREFTYPE reference) const;
    /// -1 for a type that is not the library's own.
    LONG IndexOf(const TypeEntry& type) const;

private:
    const ModulePin m_module;
    const LibraryDescription& m_description;
    const std::vector<TypeEntry> m_types;
};

} // namespace kv
