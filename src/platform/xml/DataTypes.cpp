#include "platform/xml/DataTypes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kv {
namespace {

/// The name of each type stands before its other names, and each name at the type that it reads as before others.
constexpr auto kTypes = std::to_array<std::pair<std::string_view, VARTYPE>>({
    {"string", VT_BSTR},
    {"i1", VT_I1},
    {"i2", VT_I2},
    {"i4", VT_I4},
    {"i8", VT_I8},
    {"ui1", VT_UI1},
    {"ui2", VT_UI2},
    {"ui4", VT_UI4},
    {"ui8", VT_UI8},
    {"r4", VT_R4},
    {"r8", VT_R8},
    {"boolean", VT_BOOL},
    {"int", VT_I4},
    {"float", VT_R8},
    {"number", VT_R8},
    {"i4", VT_INT},
    {"ui4", VT_UINT},
});

} // namespace

std::string_view DataTypeName(VARTYPE type)
{
    const auto found = std::ranges::find(kTypes, type, &std::pair<std::string_view, VARTYPE>::second);
    return found == kTypes.end() ? std::string_view() : found->first;
}

VARTYPE DataTypeOf(std::string_view name)
{
    const auto found = std::ranges::find(kTypes, name, &std::pair<std::string_view, VARTYPE>::first);
    return found == kTypes.end() ? static_cast<VARTYPE>(VT_EMPTY) : found->second;
}

Variant ParseTyped(std::string_view type, std::string_view text)
{
    if (type.empty() && text.empty()) return {};
    const VARTYPE vt = DataTypeOf(type);
    Variant value(ToUtf16(text));
    return vt == VT_EMPTY || vt == VT_BSTR ? value : value.As(vt);
}

std::u16string FormatTyped(std::string_view type, const VARIANT& value)
{
    const VARTYPE vt = DataTypeOf(type);
    Variant typed;
    ThrowIfFailed(VariantChangeType(&typed, &value, 0, vt == VT_EMPTY ? static_cast<VARTYPE>(VT_BSTR) : vt));
    if (vt == VT_BOOL) return typed.boolVal ? u"1" : u"0";
    return std::u16string(View(typed.As(VT_BSTR).bstrVal));
}

} // namespace kv
