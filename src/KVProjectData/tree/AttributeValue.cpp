#include "KVProjectData/tree/AttributeValue.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace kv {
namespace {

template <class... Handlers>
struct Match : Handlers... {
    using Handlers::operator()...;
};
template <class... Handlers>
Match(Handlers...) -> Match<Handlers...>;

template <class Number>
void AppendNumber(Number value, std::string& text)
{
    char digits[16];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    text.append(digits, end);
}

/// The plain decimal numbers that documents hold; everything else goes the way of variants.
template <class Number>
bool ParsePlain(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

/// Blanks, a sign, digits, and whatever follows.
LONG ParseLeading(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);

    // Flags are unsigned, so that a number may take all 32 bits; beyond them it stays at the limit.
    constexpr LONGLONG kHighest = std::numeric_limits<ULONG>::max();
    constexpr LONGLONG kLowest = std::numeric_limits<LONG>::min();
    LONGLONG value = 0;
    for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1)) {
        value = std::min(value * 10 + (text.front() - '0'), kHighest);
    }
    return static_cast<LONG>(negative ? std::max(-value, kLowest) : value);
}

} // namespace

Variant AttributeValue::ToVariant() const
{
    return std::visit(Match{[](NamedValue named) { return Variant(named.value); },
                            [](std::string_view text) { return Variant(ToUtf16(text)); },
                            [](const auto& value) { return Variant(value); }},
                      m_value);
}

LONG AttributeValue::ToLong() const
{
    LONG number = 0;
    const auto* text = std::get_if<std::string_view>(&m_value);
    return text && ParsePlain(*text, number) ? number : ToVariant().As(VT_I4).lVal;
}

ULONG AttributeValue::ToULong() const
{
    ULONG number = 0;
    const auto* text = std::get_if<std::string_view>(&m_value);
    return text && ParsePlain(*text, number) ? number : ToVariant().As(VT_UI4).ulVal;
}

LONG AttributeValue::ToID() const
{
    const LONGLONG id = ToVariant().As(VT_I8).llVal;
    if (id < std::numeric_limits<LONG>::min() || id > std::numeric_limits<ULONG>::max()) throw Error(DISP_E_OVERFLOW);
    return static_cast<LONG>(id);
}

bool AttributeValue::ToBool() const
{
    LONG number = 0;
    const auto* text = std::get_if<std::string_view>(&m_value);
    return text && ParsePlain(*text, number) ? number != 0 : ToVariant().As(VT_BOOL).boolVal != VARIANT_FALSE;
}

Bstr AttributeValue::ToBstr() const
{
    if (const auto* text = std::get_if<std::string_view>(&m_value)) return Bstr(ToUtf16(*text));
    return Bstr::Attach(ToVariant().As(VT_BSTR).Detach().bstrVal);
}

LONG AttributeValue::LeadingInteger() const
{
    const auto* text = std::get_if<std::string_view>(&m_value);
    return text ? ParseLeading(*text) : ParseLeading(ToUtf8(ToBstr().View()));
}

void AttributeValue::AppendText(std::string& text) const
{
    std::visit(Match{[&](LONG value) { AppendNumber(value, text); }, [&](ULONG value) { AppendNumber(value, text); },
                     [&](double) { text += ToUtf8(ToBstr().View()); }, [&](bool value) { text += value ? "-1" : "0"; },
                     [&](NamedValue named) { named.names->AppendText(named.value, text); },
                     [&](const Bstr&) { throw Error(E_UNEXPECTED); }, [&](std::string_view value) { text += value; }},
               m_value);
}

} // namespace kv
