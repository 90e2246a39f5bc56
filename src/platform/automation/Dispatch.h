#pragma once
// Late binding for every class that implements a dual interface.

#include "platform/automation/TypeLibrary.h"
#include "platform/com/Export.h"

namespace kv {

/// Invoke over a description. A member that fails gives DISP_E_EXCEPTION with its result in
/// `exception->scode` when the caller passes `exception`, else its own result; its success codes pass
/// unchanged. Wrong use gives DISP_E_MEMBERNOTFOUND, DISP_E_BADPARAMCOUNT, DISP_E_PARAMNOTFOUND,
/// DISP_E_PARAMNOTOPTIONAL, DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW before the member runs.
KV_EXPORT HRESULT InvokeMember(const InterfaceDescription& description, void* self, DISPID member, REFIID reserved,
                               WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                               ULONG* badArgument);

/// GetIDsOfNames over a description; a parameter's identity is its position.
KV_EXPORT HRESULT FindMemberNames(const InterfaceDescription& description, OLECHAR** names, ULONG count, DISPID* ids);

/// The type library of the server library that this code is compiled into; null where there is none.
/// Each server library that has one defines it.
const LibraryDescription* ModuleTypeLibrary();

/// Implements IDispatch for a dual interface from its member table.
template <class Interface>
class Dual : public Interface {
public:
    HRESULT GetTypeInfoCount(ULONG* count) override
    {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }

    HRESULT GetTypeInfo(ULONG index, LCID, ITypeInfo** info) override;

    HRESULT GetIDsOfNames(REFIID reserved, OLECHAR** names, ULONG count, LCID, DISPID* ids) override
    {
        if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        return FindMemberNames(kInterfaceDescription<Interface>, names, count, ids);
    }

    HRESULT Invoke(DISPID member, REFIID reserved, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                   EXCEPINFO* exception, ULONG* badArgument) override
    {
        return InvokeMember(kInterfaceDescription<Interface>, static_cast<Interface*>(this), member, reserved, flags,
                            params, result, exception, badArgument);
    }

protected:
    ~Dual() = default;
};

template <class Interface>
HRESULT Dual<Interface>::GetTypeInfo(ULONG index, LCID, ITypeInfo** info)
{
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    return MakeTypeInfo(ModuleTypeLibrary(), kInterfaceDescription<Interface>, info);
}

} // namespace kv
