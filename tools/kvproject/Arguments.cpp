#include "Arguments.h"

#include "Failure.h"

#include <charconv>

namespace kvproject {
namespace {

constexpr std::string_view kBlanks = " \t\r";

/// Takes " at N" from the end; 0, which is behind the last, without it.
LONG TakePlace(std::string_view& text)
{
    constexpr std::string_view kAt = "at ";
    const std::size_t at = text.rfind(kAt);
    if (at == text.npos || (at > 0 && kBlanks.find(text[at - 1]) == kBlanks.npos)) return 0;
    const std::string_view number = Trimmed(text.substr(at + kAt.size()));
    if (number.find_first_not_of("0123456789") != number.npos) return 0;
    text = Trimmed(text.substr(0, at));
    return ParsePosition(number);
}

} // namespace

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view TakeWord(std::string_view& text)
{
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text = Trimmed(text.substr(word.size()));
    return word;
}

LONG ParsePosition(std::string_view text)
{
    LONG position = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), position);
    if (error != std::errc() || end != text.data() + text.size() || position < 1) {
        throw Failure("'" + std::string(text) + "' is no position; they count from 1");
    }
    return position;
}

Addition ParseAddition(std::string_view text)
{
    if (!text.starts_with('"')) {
        const LONG place = TakePlace(text);
        return {std::string(text), place};
    }
    const std::size_t end = text.rfind('"');
    if (end == 0) throw Failure("the closing quote is missing");
    std::string_view rest = Trimmed(text.substr(end + 1));
    const LONG place = TakePlace(rest);
    if (!rest.empty()) throw Failure("'" + std::string(rest) + "' stands behind the closing quote");
    return {std::string(text.substr(1, end - 1)), place};
}

Placement ParsePlacement(std::string_view text)
{
    constexpr std::string_view kTo = "to ";
    const LONG place = TakePlace(text);
    const std::size_t to = text.rfind(kTo);
    const bool isWord = to != text.npos && (to == 0 || kBlanks.find(text[to - 1]) != kBlanks.npos);
    // Within quotes it belongs to the name.
    const bool hasOwner = isWord && text.find('"', to) == text.npos;
    std::string_view name = hasOwner ? Trimmed(text.substr(0, to)) : text;
    const std::string_view owner = hasOwner ? Trimmed(text.substr(to + kTo.size())) : std::string_view();
    if (name.starts_with('"')) {
        if (name.size() < 2 || !name.ends_with('"')) throw Failure("the closing quote is missing");
        name = name.substr(1, name.size() - 2);
    }
    return {std::string(name), std::string(owner), place};
}

} // namespace kvproject
