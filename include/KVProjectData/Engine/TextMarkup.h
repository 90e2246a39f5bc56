#pragma once
// How the rich text of a parameter document tells what its editors and the text plug-in must read alike.

#include "platform/com/BaseTypes.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

/// Each from 0 to 255; what is wholly transparent has 255.
struct ZXTextColour {
    BYTE red;
    BYTE green;
    BYTE blue;
    BYTE transparency;

    friend bool operator==(const ZXTextColour&, const ZXTextColour&) = default;
};

/// A text that begins with a colour's name of HTML 4, in any case; "#RRGGBBTT"; or letters with two digits each, such
/// as "RffG80T00". What is not told, or cannot be read, is 0.
inline ZXTextColour ParseTextColour(std::string_view text)
{
    constexpr std::array<std::pair<std::string_view, ZXTextColour>, 16> kNames{{
        {"Black", {0x00, 0x00, 0x00, 0}},
        {"Silver", {0xC0, 0xC0, 0xC0, 0}},
        {"Gray", {0x80, 0x80, 0x80, 0}},
        {"White", {0xFF, 0xFF, 0xFF, 0}},
        {"Maroon", {0x80, 0x00, 0x00, 0}},
        {"Red", {0xFF, 0x00, 0x00, 0}},
        {"Purple", {0x80, 0x00, 0x80, 0}},
        {"Fuchsia", {0xFF, 0x00, 0xFF, 0}},
        {"Green", {0x00, 0x80, 0x00, 0}},
        {"Lime", {0x00, 0xFF, 0x00, 0}},
        {"Olive", {0x80, 0x80, 0x00, 0}},
        {"Yellow", {0xFF, 0xFF, 0x00, 0}},
        {"Navy", {0x00, 0x00, 0x80, 0}},
        {"Blue", {0x00, 0x00, 0xFF, 0}},
        {"Teal", {0x00, 0x80, 0x80, 0}},
        {"Aqua", {0x00, 0xFF, 0xFF, 0}},
    }};
    for (const auto& [name, colour] : kNames) {
        if (kv::StartsWithText(text, name)) return colour;
    }
    // Takes two digits at most, and blanks before them.
    const auto take = [](std::string_view& rest) {
        rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
        BYTE value = 0;
        const std::string_view digits = rest.substr(0, 2);
        const char* const end = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
        rest.remove_prefix(static_cast<std::size_t>(end - digits.data()));
        return value;
    };
    if (text.starts_with('#')) {
        text.remove_prefix(1);
        const BYTE red = take(text);
        const BYTE green = take(text);
        const BYTE blue = take(text);
        return {red, green, blue, take(text)};
    }
    const auto behind = [&](char letter) {
        const std::size_t at = text.find(letter);
        std::string_view rest = at == text.npos ? std::string_view() : text.substr(at + 1);
        return take(rest);
    };
    return {behind('R'), behind('G'), behind('B'), behind('T')};
}

/// What stands behind the blanks and the "+" that a number may begin with; empty for what is none.
inline std::string_view TextNumberDigits(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    const bool hasSign = text.starts_with('+') || text.starts_with('-');
    const bool isNumber = text.size() > hasSign && std::string_view(".0123456789").find(text[hasSign]) != text.npos;
    if (!isNumber) return {};
    return text.starts_with('+') ? text.substr(1) : text;
}

/// The whole number that a height or another length begins with, such as " +42.9pt"; the nearest LONG for one that is
/// none, 0 where there is no number.
inline LONG ParseWholeTextNumber(std::string_view text)
{
    text = TextNumberDigits(text);
    LONG value = 0;
    const auto error = std::from_chars(text.data(), text.data() + text.size(), value).ec;
    if (error != std::errc::result_out_of_range) return value;
    return text.starts_with('-') ? std::numeric_limits<LONG>::min() : std::numeric_limits<LONG>::max();
}

/// The same number with its decimals; nothing where there is none.
inline std::optional<double> ParseTextLength(std::string_view text)
{
    text = TextNumberDigits(text);
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto error = std::from_chars(text.data(), end, value, std::chars_format::fixed).ec;
    if (error == std::errc::invalid_argument) return std::nullopt;
    return error == std::errc() ? value : ParseWholeTextNumber(text);
}

/// An empty text is a paragraph with the attribute "placeholder" of "1" whose whole text is this, so that it can be
/// seen, and hit, by who does not know of placeholders. A paragraph without the attribute may hold it, too, as its
/// text.
inline constexpr std::string_view kTextPlaceholder = "~";

/// Whether the text of a paragraph stands for none. `Place` is an element as kv::XmlView sees it.
template <class Place>
bool IsTextPlaceholder(const Place& paragraph)
{
    if (paragraph.Attribute("placeholder") != "1") return false;
    std::string text;
    Place place = paragraph.Following(paragraph);
    for (; place && text.size() <= kTextPlaceholder.size(); place = place.Following(paragraph)) {
        if (place.IsText()) text += place.Text().substr(0, kTextPlaceholder.size() + 1);
    }
    return text == kTextPlaceholder;
}
