#include "KVProjectData/tree/AttributeTexts.h"

#include "platform/automation/RealText.h"
#include "platform/automation/Variant.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace kv {
namespace {

/// The plain decimal numbers that documents hold; everything else goes the way of variants.
template <class Number>
bool ParsePlain(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

Variant Convert(std::string_view text, VARTYPE type)
{
    return Variant(ToUtf16(text)).As(type);
}

template <class Number>
void Append(Number value, std::string& text)
{
    char digits[16];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
}

template <class Real>
void AppendReal(Real value, std::string& text)
{
    if (!std::isfinite(value)) throw Error(DISP_E_TYPEMISMATCH);
    char digits[32];
    text.append(digits, PrintReal(digits, std::end(digits), value));
}

} // namespace

LONG ParseLong(std::string_view text)
{
    LONG number = 0;
    return ParsePlain(text, number) ? number : Convert(text, VT_I4).lVal;
}

ULONG ParseULong(std::string_view text)
{
    ULONG number = 0;
    return ParsePlain(text, number) ? number : Convert(text, VT_UI4).ulVal;
}

float ParseFloat(std::string_view text)
{
    return Convert(text, VT_R4).fltVal;
}

double ParseDouble(std::string_view text)
{
    return Convert(text, VT_R8).dblVal;
}

BYTE ParseByte(std::string_view text)
{
    const ULONG number = ParseULong(text);
    if (number > std::numeric_limits<BYTE>::max()) throw Error(DISP_E_OVERFLOW);
    return static_cast<BYTE>(number);
}

LONG ParseID(std::string_view text)
{
    LONGLONG id = 0;
    if (!ParsePlain(text, id)) id = Convert(text, VT_I8).llVal;
    if (id < std::numeric_limits<LONG>::min() || id > std::numeric_limits<ULONG>::max()) throw Error(DISP_E_OVERFLOW);
    return static_cast<LONG>(id);
}

bool ParseBool(std::string_view text)
{
    LONG number = 0;
    return ParsePlain(text, number) ? number != 0 : Convert(text, VT_BOOL).boolVal != VARIANT_FALSE;
}

std::optional<ULONG> ParseLeading(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);

    // Flags are unsigned, so that a number may take all 32 bits; beyond them it stays at the limit.
    constexpr LONGLONG kHighest = std::numeric_limits<ULONG>::max();
    constexpr LONGLONG kLowest = std::numeric_limits<LONG>::min();
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (text.empty() || !isDigit(text.front())) return std::nullopt;
    LONGLONG value = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
        value = std::min(value * 10 + (text.front() - '0'), kHighest);
    }
    return static_cast<ULONG>(negative ? std::max(-value, kLowest) : value);
}

ULONG ParseHex(std::string_view text)
{
    constexpr ULONG kAll = std::numeric_limits<ULONG>::max();
    constexpr std::string_view kPrefix = "0x";
    if (!text.starts_with(kPrefix)) return kAll;
    text.remove_prefix(kPrefix.size());
    // Beyond 32 bits a pattern stays at the limit, and so it does without a digit.
    ULONG value = kAll;
    std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return value;
}

void AppendNumber(LONG value, std::string& text)
{
    Append(value, text);
}

void AppendNumber(ULONG value, std::string& text)
{
    Append(value, text);
}

void AppendNumber(float value, std::string& text)
{
    AppendReal(value, text);
}

void AppendNumber(double value, std::string& text)
{
    AppendReal(value, text);
}

void AppendHex(ULONG value, int digits, std::string& text)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr int kMost = 8;
    text += "0x";
    for (int place = kMost; place-- > 0;) {
        const ULONG left = value >> 4 * place;
        if (left != 0 || place < digits) text += kDigits[left & 0xf];
    }
}

} // namespace kv
