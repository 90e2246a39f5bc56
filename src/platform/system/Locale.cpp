#include "platform/system/Locale.h"

#include "platform/automation/Bstr.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <langinfo.h>
#include <locale.h>
#include <string>
#include <wchar.h>

namespace {

thread_local LCID t_locale = LOCALE_USER_DEFAULT;

/// The user's locale by the environment, apart from what the host set for its process.
locale_t UserLocale()
{
    static const locale_t locale = [] {
        const locale_t user = newlocale(LC_ALL_MASK, "", nullptr);
        return user ? user : newlocale(LC_ALL_MASK, "C", nullptr);
    }();
    return locale;
}

std::wstring Wide(std::u16string_view text)
{
    std::wstring wide;
    wide.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool pair = (unit & 0xfc00) == 0xd800 && i + 1 < text.size() && (text[i + 1] & 0xfc00) == 0xdc00;
        // A zero would end the comparison; nothing else stands for itself in the private area's end.
        wide += unit == 0
                    ? L'\U0010fffd'
                    : static_cast<wchar_t>(pair ? 0x10000 + ((unit - 0xd800) << 10) + (text[++i] - 0xdc00) : unit);
    }
    return wide;
}

void Remove(std::string& text, std::string_view what)
{
    if (what.empty()) return;
    for (auto at = text.find(what); at != text.npos; at = text.find(what, at))
        text.erase(at, what.size());
}

std::optional<double> ParseDouble(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == text.npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

} // namespace

LCID GetThreadLocale()
{
    return t_locale;
}

void SetThreadLocale(LCID locale)
{
    t_locale = locale;
}

namespace kv {

int CompareStrings(std::u16string_view left, std::u16string_view right)
{
    if (left == right) return 0;
    const int order = wcscoll_l(Wide(left).c_str(), Wide(right).c_str(), UserLocale());
    // Texts that a language merely sorts together are different paths all the same.
    return order != 0 ? order : left.compare(right);
}

std::optional<double> ParseDoubleUS(std::u16string_view text)
{
    std::string plain = ToUtf8(text);
    Remove(plain, ",");
    return ParseDouble(plain);
}

std::optional<double> ParseDoubleUserLocale(std::u16string_view text)
{
    std::string plain = ToUtf8(text);
    const std::string point = nl_langinfo_l(RADIXCHAR, UserLocale());
    Remove(plain, nl_langinfo_l(THOUSEP, UserLocale()));
    if (point != ".") {
        if (plain.find('.') != plain.npos) return std::nullopt;
        const auto at = plain.find(point);
        if (at != plain.npos) plain = plain.substr(0, at) + '.' + plain.substr(at + point.size());
    }
    return ParseDouble(plain);
}

} // namespace kv
