#pragma once
// The component model's scalar types, identities and result codes, under their own names.

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using BOOL = std::int32_t;
using HRESULT = std::int32_t;
using LCID = std::uint32_t;
using DISPID = std::int32_t;
using OLECHAR = char16_t;

/// Text with a 32-bit byte length in front of its first code unit; null stands for no string.
using BSTR = OLECHAR*;

/// -1 is true, 0 is false.
using VARIANT_BOOL = std::int16_t;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// The language that late-bound calls and events are made in when nobody chose one.
inline constexpr LCID LOCALE_USER_DEFAULT = 0x400;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x800;

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};

using IID = GUID;
using CLSID = GUID;
using REFIID = const GUID&;
using REFCLSID = const GUID&;
using REFGUID = const GUID&;

inline constexpr GUID GUID_NULL{};
inline constexpr GUID IID_NULL{};

namespace kv::detail {

consteval unsigned HexDigit(char digit)
{
    if (digit >= '0' && digit <= '9') return static_cast<unsigned>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a') + 10;
    if (digit >= 'A' && digit <= 'F') return static_cast<unsigned>(digit - 'A') + 10;
    throw "not a hexadecimal digit";
}

consteval unsigned HexByte(const char* digits)
{
    return HexDigit(digits[0]) * 16 + HexDigit(digits[1]);
}

} // namespace kv::detail

/// `"01234567-89ab-cdef-0123-456789abcdef"_guid`, checked while compiling.
consteval GUID operator""_guid(const char* text, std::size_t length)
{
    using kv::detail::HexByte;
    if (length != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') {
        throw "an identity reads 8-4-4-4-12 hexadecimal digits";
    }
    GUID guid{};
    guid.Data1 = HexByte(text) << 24 | HexByte(text + 2) << 16 | HexByte(text + 4) << 8 | HexByte(text + 6);
    guid.Data2 = static_cast<std::uint16_t>(HexByte(text + 9) << 8 | HexByte(text + 11));
    guid.Data3 = static_cast<std::uint16_t>(HexByte(text + 14) << 8 | HexByte(text + 16));
    guid.Data4[0] = static_cast<std::uint8_t>(HexByte(text + 19));
    guid.Data4[1] = static_cast<std::uint8_t>(HexByte(text + 21));
    for (std::size_t i = 0; i < 6; ++i) {
        guid.Data4[2 + i] = static_cast<std::uint8_t>(HexByte(text + 24 + 2 * i));
    }
    return guid;
}

constexpr bool SUCCEEDED(HRESULT result)
{
    return result >= 0;
}

constexpr bool FAILED(HRESULT result)
{
    return result < 0;
}

/// A result code from its customary hexadecimal form.
constexpr HRESULT MakeResult(std::uint32_t code)
{
    return static_cast<HRESULT>(code);
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = MakeResult(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = MakeResult(0x80004002);
inline constexpr HRESULT E_POINTER = MakeResult(0x80004003);
inline constexpr HRESULT E_ABORT = MakeResult(0x80004004);
inline constexpr HRESULT E_FAIL = MakeResult(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = MakeResult(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = MakeResult(0x80070005);
inline constexpr HRESULT E_OUTOFMEMORY = MakeResult(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = MakeResult(0x80070057);

inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = MakeResult(0x80020001);
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = MakeResult(0x80020003);
inline constexpr HRESULT DISP_E_PARAMNOTFOUND = MakeResult(0x80020004);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = MakeResult(0x80020005);
inline constexpr HRESULT DISP_E_UNKNOWNNAME = MakeResult(0x80020006);
inline constexpr HRESULT DISP_E_NONAMEDARGS = MakeResult(0x80020007);
inline constexpr HRESULT DISP_E_BADVARTYPE = MakeResult(0x80020008);
inline constexpr HRESULT DISP_E_EXCEPTION = MakeResult(0x80020009);
inline constexpr HRESULT DISP_E_OVERFLOW = MakeResult(0x8002000A);
inline constexpr HRESULT DISP_E_BADINDEX = MakeResult(0x8002000B);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = MakeResult(0x8002000E);
inline constexpr HRESULT DISP_E_PARAMNOTOPTIONAL = MakeResult(0x8002000F);
inline constexpr HRESULT TYPE_E_ELEMENTNOTFOUND = MakeResult(0x8002802B);
inline constexpr HRESULT TYPE_E_CANTLOADLIBRARY = MakeResult(0x80029C4A);
inline constexpr HRESULT TYPE_E_LIBNOTREGISTERED = MakeResult(0x8002801D);

inline constexpr HRESULT CLASS_E_NOAGGREGATION = MakeResult(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = MakeResult(0x80040111);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = MakeResult(0x80040154);
inline constexpr HRESULT CO_E_CLASSSTRING = MakeResult(0x800401F3);
inline constexpr HRESULT CO_E_DLLNOTFOUND = MakeResult(0x800401F8);
inline constexpr HRESULT CO_E_ERRORINDLL = MakeResult(0x800401F9);
inline constexpr HRESULT CO_E_OBJNOTREG = MakeResult(0x800401FB);

inline constexpr HRESULT CONNECT_E_NOCONNECTION = MakeResult(0x80040200);
inline constexpr HRESULT CONNECT_E_ADVISELIMIT = MakeResult(0x80040201);
inline constexpr HRESULT CONNECT_E_CANNOTCONNECT = MakeResult(0x80040202);
