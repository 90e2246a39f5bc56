#include "ColourTexts.h"

#include "Failure.h"

#include <charconv>
#include <cstdio>
#include <optional>

namespace kvproject {
namespace {

std::optional<BYTE> ParseByte(std::string_view text, int base)
{
    BYTE value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

} // namespace

std::string ColourText(const RGBEntry& colour)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", colour.byR, colour.byG, colour.byB);
    return text;
}

RGBEntry ParseColour(std::string_view text)
{
    constexpr std::size_t kLength = 7;
    constexpr int kHexadecimal = 16;
    if (text.size() == kLength && text.front() == '#') {
        const auto red = ParseByte(text.substr(1, 2), kHexadecimal);
        const auto green = ParseByte(text.substr(3, 2), kHexadecimal);
        const auto blue = ParseByte(text.substr(5, 2), kHexadecimal);
        if (red && green && blue) return {*red, *green, *blue};
    }
    throw Failure("'" + std::string(text) + "' is no colour such as #FF8000");
}

std::string ContrastText(BYTE colour, BYTE contrast)
{
    return std::to_string(colour) + " at " + std::to_string(contrast);
}

std::pair<BYTE, BYTE> ParseContrast(std::string_view text)
{
    constexpr std::string_view kAt = " at ";
    constexpr int kDecimal = 10;
    if (const std::size_t at = text.find(kAt); at != text.npos) {
        const auto colour = ParseByte(text.substr(0, at), kDecimal);
        const auto contrast = ParseByte(text.substr(at + kAt.size()), kDecimal);
        if (colour && contrast) return {*colour, *contrast};
    }
    throw Failure("'" + std::string(text) + "' is no colour of the palette with its contrast, such as 3 at 15");
}

} // namespace kvproject
