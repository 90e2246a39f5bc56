#include "platform/system/Locale.h"

#include "platform/automation/Bstr.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <langinfo.h>
#include <locale.h>
#include <string>

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

/// How a language writes numbers.
struct NumberRules {
    std::string_view point;
    /// Stands between groups of digits before the point; empty where there are none.
    std::string_view separator;
    /// The sizes of the groups, beginning at the point; the last one is that of all further groups.
    std::string_view groups;
};

constexpr NumberRules kNumbersUS{".", ",", "\3"};

NumberRules UserNumbers()
{
    return {nl_langinfo_l(RADIXCHAR, UserLocale()), nl_langinfo_l(THOUSEP, UserLocale()),
            nl_langinfo_l(GROUPING, UserLocale())};
}

/// The digits before the point without separators; empty where these do not part digits into groups.
std::optional<std::string> JoinGroups(std::string_view whole, const NumberRules& rules)
{
    std::string digits;
    std::string_view sizes = rules.groups;
    while (!rules.separator.empty() && !sizes.empty()) {
        const auto at = whole.rfind(rules.separator);
        if (at == whole.npos) break;
        const std::string_view group = whole.substr(at + rules.separator.size());
        if (group.size() != static_cast<std::size_t>(sizes.front())) return std::nullopt;
        digits.insert(0, group);
        whole = whole.substr(0, at);
        if (sizes.size() > 1) sizes.remove_prefix(1);
    }
    const bool grouped = !digits.empty();
    if (grouped && (whole.empty() || whole.size() > static_cast<std::size_t>(sizes.front()))) return std::nullopt;
    digits.insert(0, whole);
    if (!std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; })) return std::nullopt;
    return digits;
}

std::optional<double> ParseNumber(std::string_view text, const NumberRules& rules)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == text.npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);

    const std::string_view whole = text.substr(0, std::min(text.find(rules.point), text.find_first_of("eE")));
    const std::optional<std::string> digits = JoinGroups(whole, rules);
    if (!digits) return std::nullopt;
    std::string plain = *digits;
    text.remove_prefix(whole.size());
    if (text.starts_with(rules.point)) {
        plain += '.';
        text.remove_prefix(rules.point.size());
    }
    plain += text;

    double value = 0;
    const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (error != std::errc() || end != plain.data() + plain.size()) return std::nullopt;
    return negative ? -value : value;
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

std::optional<double> ParseDoubleUS(std::u16string_view text)
{
    return ParseNumber(ToUtf8(text), kNumbersUS);
}

std::optional<double> ParseDoubleUserLocale(std::u16string_view text)
{
    return ParseNumber(ToUtf8(text), UserNumbers());
}

} // namespace kv
