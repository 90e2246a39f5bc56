#pragma once
// One type of a type library.

#include "platform/automation/TypeLibraryObject.h"

#include <memory>

namespace kv {

class TypeInfo final : public Object<ITypeInfo> {
public:
    TypeInfo(ComPtr<TypeLibrary> library, TypeEntry type) : m_library(std::move(library)), m_type(type) {}

    HRESULT GetTypeAttr(TYPEATTR** attributes) override;
    HRESULT GetFuncDesc(ULONG index, FUNCDESC** description) override;
    HRESULT GetVarDesc(ULONG index, VARDESC** description) override;
    HRESULT GetNames(DISPID member, BSTR* names, ULONG room, ULONG* count) override;
    HRESULT GetRefTypeOfImplType(ULONG index, HREFTYPE* type) override;
    HRESULT GetImplTypeFlags(ULONG index, LONG* flags) override;
    HRESULT GetIDsOfNames(OLECHAR** names, ULONG count, DISPID* ids) override;
    HRESULT Invoke(void* instance, DISPID member, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                   ULONG* badArgument) override;
    HRESULT GetDocumentation(DISPID member, BSTR* name, BSTR* help) override;
    HRESULT GetRefTypeInfo(HREFTYPE type, ITypeInfo** info) override;
    HRESULT GetContainingTypeLib(ITypeLib** library, ULONG* index) override;
    void ReleaseTypeAttr(TYPEATTR* attributes) override { delete attributes; }
    void ReleaseFuncDesc(FUNCDESC* description) override;
    void ReleaseVarDesc(VARDESC* description) override;

    /// Null when the type is none.
    const RecordDescription* Record() const;

private:
    using TypeStorage = std::vector<std::unique_ptr<TYPEDESC>>;

    /// Records handed out, with what they point at.
    struct FunctionRecord;
    struct VariableRecord;

    /// Null when the type is none.
    const InterfaceDescription* Interface() const;
    /// The names of what the type builds on, the default one first.
    std::vector<std::string_view> Implemented() const;
    TYPEDESC Describe(const TypeDescription& type, TypeStorage& storage) const;
    /// What this type refers to another one by: the library's reference, or the place where it first mentions an
    /// interface that the library does not have. 0 for anything else.
    HREFTYPE Reference(const TypeDescription& type) const;
    /// Empty for a reference that was never given.
    std::optional<TypeEntry> Find(HREFTYPE reference) const;

    const ComPtr<TypeLibrary> m_library;
    const TypeEntry m_type;
};

} // namespace kv
