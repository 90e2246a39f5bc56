#pragma once
// The tagged value that late-bound calls, events and documents exchange.

#include "platform/automation/Bstr.h"
#include "platform/com/ComPtr.h"
#include "platform/com/Error.h"

#include <concepts>

struct IDispatch;
struct IRecordInfo;
struct SAFEARRAY;
struct VARIANT;

using VARTYPE = std::uint16_t;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_VOID = 24,
    VT_HRESULT = 25,
    VT_PTR = 26,
    VT_USERDEFINED = 29,
    VT_RECORD = 36,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0xfff,
};

/// `vt` tells which member holds the value. A VT_BYREF value only points at storage of the caller's. A record stands in
/// task memory of its own; one by reference may come without `pRecInfo`, from callers that know what it is.
struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    DWORD wReserved2;
    union {
        LONGLONG llVal;
        ULONGLONG ullVal;
        LONG lVal;
        ULONG ulVal;
        SHORT iVal;
        USHORT uiVal;
        std::int8_t cVal;
        BYTE bVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        HRESULT scode;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        VARIANT* pvarVal;
        LONG* plVal;
        BSTR* pbstrVal;
        IUnknown** ppunkVal;
        IDispatch** ppdispVal;
        void* byref;
        void* pvRecord;
    };
    /// Of a VT_RECORD value only.
    IRecordInfo* pRecInfo;
};

/// Sets VT_EMPTY without freeing anything.
KV_EXPORT void VariantInit(VARIANT* variant);

/// Frees what the value owns and sets VT_EMPTY. DISP_E_BADVARTYPE for a type that is not known.
KV_EXPORT HRESULT VariantClear(VARIANT* variant);

/// A deep copy; `target` is cleared first.
KV_EXPORT HRESULT VariantCopy(VARIANT* target, const VARIANT* source);

/// As VariantCopy, but follows a VT_BYREF source to its value.
KV_EXPORT HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source);

/// Converts without regard to any locale: "." is the decimal point, numbers print in the shortest form
/// that reads back to the same value, booleans print as -1 and 0 and are read from numbers or from the
/// words true and false in any case. A fraction is rounded half to even on its way to an integer.
/// `target` may be `source`. DISP_E_TYPEMISMATCH where no conversion exists or text does not parse,
/// DISP_E_OVERFLOW where the value does not fit.
KV_EXPORT HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type);

namespace kv {

/// Owner of a VARIANT.
class Variant : public VARIANT {
public:
    Variant() { VariantInit(this); }
    Variant(const Variant& other) : Variant() { ThrowIfFailed(VariantCopy(this, &other)); }
    Variant(Variant&& other) noexcept : VARIANT(other) { VariantInit(&other); }
    explicit Variant(LONG value) : Variant() { vt = VT_I4, lVal = value; }
    explicit Variant(ULONG value) : Variant() { vt = VT_UI4, ulVal = value; }
    explicit Variant(LONGLONG value) : Variant() { vt = VT_I8, llVal = value; }
    explicit Variant(float value) : Variant() { vt = VT_R4, fltVal = value; }
    explicit Variant(double value) : Variant() { vt = VT_R8, dblVal = value; }
    /// Takes nothing but a bool: a pointer to text would turn into one.
    explicit Variant(std::same_as<bool> auto value) : Variant()
    {
        vt = VT_BOOL;
        boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    explicit Variant(Bstr value) : Variant() { vt = VT_BSTR, bstrVal = value.Detach(); }
    explicit Variant(std::u16string_view value) : Variant(Bstr(value)) {}
    /// Shares the object.
    explicit Variant(IUnknown* value) : Variant() { vt = VT_UNKNOWN, punkVal = ComPtr<IUnknown>(value).Detach(); }
    ~Variant() { VariantClear(this); }

    Variant& operator=(Variant other) noexcept
    {
        std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
        return *this;
    }

    /// The place where a callee stores a value for this owner.
    VARIANT* Put()
    {
        VariantClear(this);
        return this;
    }

    /// Hands the value to the caller.
    [[nodiscard]] VARIANT Detach() noexcept
    {
        const VARIANT value = *this;
        VariantInit(this);
        return value;
    }

    /// A converted copy. Throws Error with VariantChangeType's code.
    Variant As(VARTYPE type) const
    {
        Variant converted;
        ThrowIfFailed(VariantChangeType(&converted, this, 0, type));
        return converted;
    }
};

} // namespace kv
