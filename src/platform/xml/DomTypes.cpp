#include "platform/xml/DomTypes.h"

#include "platform/automation/SafeArray.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kv {
namespace {

constexpr auto kTypes = std::to_array<std::pair<std::string_view, VARTYPE>>({
    {"string", VT_BSTR},
    {"i1", VT_I1},
    {"i2", VT_I2},
    {"i4", VT_I4},
    {"int", VT_I4},
    {"ui1", VT_UI1},
    {"ui2", VT_UI2},
    {"ui4", VT_UI4},
    {"r4", VT_R4},
    {"r8", VT_R8},
    {"float", VT_R8},
    {"number", VT_R8},
    {"boolean", VT_BOOL},
    {"bin.hex", VT_ARRAY | VT_UI1},
    {"bin.base64", VT_ARRAY | VT_UI1},
});

constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kHex = "0123456789abcdef";

VARTYPE TypeOf(std::string_view name)
{
    const auto found = std::ranges::find(kTypes, name, &std::pair<std::string_view, VARTYPE>::first);
    return found == kTypes.end() ? static_cast<VARTYPE>(VT_BSTR) : found->second;
}

/// Groups of `bits` in a text to bytes; blanks are passed over.
std::string Decode(std::string_view text, std::string_view digits, int bits)
{
    std::string bytes;
    unsigned pending = 0;
    int count = 0;
    for (char c : text) {
        if (c == ' ' || c == '\n' || c == '\r' || c == '\t' || (bits == 6 && c == '=')) continue;
        const char folded = bits == 4 && c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c;
        const std::size_t digit = digits.find(folded);
        if (digit == digits.npos) throw Error(DISP_E_TYPEMISMATCH);
        pending = (pending << bits | static_cast<unsigned>(digit)) & 0xffff;
        count += bits;
        if (count >= 8) bytes += static_cast<char>(pending >> (count -= 8) & 0xff);
    }
    return bytes;
}

std::u16string Encode(std::string_view bytes, std::string_view digits, int bits)
{
    std::u16string text;
    unsigned pending = 0;
    int count = 0;
    for (char c : bytes) {
        pending = (pending << 8 | static_cast<unsigned char>(c)) & 0xffff;
        for (count += 8; count >= bits;)
            text += static_cast<char16_t>(digits[pending >> (count -= bits) & ((1u << bits) - 1)]);
    }
    if (count > 0) text += static_cast<char16_t>(digits[pending << (bits - count) & ((1u << bits) - 1)]);
    while (bits == 6 && text.size() % 4)
        text += u'=';
    return text;
}

Variant BytesVariant(std::string_view bytes)
{
    SafeArray array(SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size())));
    if (!array.Get()) throw Error(E_OUTOFMEMORY);
    bytes.copy(static_cast<char*>(array.Get()->pvData), bytes.size());
    Variant value;
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array.Detach();
    return value;
}

} // namespace

bool IsDataType(std::string_view type)
{
    return std::ranges::find(kTypes, type, &std::pair<std::string_view, VARTYPE>::first) != kTypes.end();
}

Variant ParseTyped(std::string_view type, std::string_view text)
{
    const VARTYPE vt = TypeOf(type);
    if (vt == (VT_ARRAY | VT_UI1)) {
        const bool hex = type == "bin.hex";
        return BytesVariant(Decode(text, hex ? kHex : kBase64, hex ? 4 : 6));
    }
    Variant value(ToUtf16(text));
    return vt == VT_BSTR ? value : value.As(vt);
}

std::u16string FormatTyped(std::string_view type, const VARIANT& value)
{
    const VARTYPE vt = TypeOf(type);
    if (vt == (VT_ARRAY | VT_UI1)) {
        if (value.vt != vt || !value.parray) throw Error(DISP_E_TYPEMISMATCH);
        const bool hex = type == "bin.hex";
        const std::string_view bytes(static_cast<const char*>(value.parray->pvData),
                                     value.parray->rgsabound[0].cElements);
        return Encode(bytes, hex ? kHex : kBase64, hex ? 4 : 6);
    }
    Variant typed;
    ThrowIfFailed(VariantChangeType(&typed, &value, 0, vt));
    if (vt == VT_BOOL) return typed.boolVal ? u"1" : u"0";
    return std::u16string(View(typed.As(VT_BSTR).bstrVal));
}

} // namespace kv
