#pragma once
// Late binding: the interface and the records it exchanges.

#include "platform/automation/Variant.h"
#include "platform/com/Unknown.h"

struct ITypeInfo;

/// Arguments of a late-bound call, last parameter first; the named ones stand in front.
struct DISPPARAMS {
    VARIANT* rgvarg;
    DISPID* rgdispidNamedArgs;
    ULONG cArgs;
    ULONG cNamedArgs;
};

/// What a failing late-bound call says of its failure. The receiver frees the strings.
struct EXCEPINFO {
    WORD wCode;
    BSTR bstrSource;
    BSTR bstrDescription;
    HRESULT scode;
};

inline constexpr WORD DISPATCH_METHOD = 1;
inline constexpr WORD DISPATCH_PROPERTYGET = 2;
inline constexpr WORD DISPATCH_PROPERTYPUT = 4;
inline constexpr WORD DISPATCH_PROPERTYPUTREF = 8;

inline constexpr DISPID DISPID_UNKNOWN = -1;
/// Names the new value among the arguments of a property put.
inline constexpr DISPID DISPID_PROPERTYPUT = -3;

struct IDispatch : IUnknown {
    static constexpr GUID IID = "00020400-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    virtual HRESULT GetTypeInfoCount(ULONG* count) = 0;
    virtual HRESULT GetTypeInfo(ULONG index, LCID locale, ITypeInfo** info) = 0;

    /// The first name is a member's, the others its parameters'; names compare without regard to case.
    /// DISP_E_UNKNOWNNAME when any is not known (its identity is then DISPID_UNKNOWN).
    virtual HRESULT GetIDsOfNames(REFIID reserved, OLECHAR** names, ULONG count, LCID locale, DISPID* ids) = 0;

    virtual HRESULT Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                           EXCEPINFO* exception, ULONG* badArgument) = 0;
};
