#include "Text.h"

#include "Failure.h"
#include "platform/automation/Bstr.h"
#include "platform/system/Paths.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <utf8.h>
#include <utility>

namespace kvproject {
namespace {

std::string Number(char32_t character)
{
    char number[16];
    std::snprintf(number, sizeof number, "U+%04X", static_cast<unsigned>(character));
    return number;
}

/// What XML 1.0 has as characters.
bool IsStorable(char32_t c)
{
    return c >= 0x20 ? c != 0xFFFE && c != 0xFFFF : c == '\t' || c == '\n' || c == '\r';
}

/// Control characters, separators of lines and paragraphs, marks of direction.
bool NeedsEscape(char32_t c)
{
    static constexpr std::array<std::pair<char32_t, char32_t>, 7> kRanges{{{0, 0x1F},
                                                                           {0x7F, 0x9F},
                                                                           {0x061C, 0x061C},
                                                                           {0x200E, 0x200F},
                                                                           {0x2028, 0x202E},
                                                                           {0x2066, 0x2069},
                                                                           {0xFEFF, 0xFEFF}}};
    for (const auto& [first, last] : kRanges) {
        if (c >= first && c <= last) return true;
    }
    return false;
}

std::string Escape(char32_t c)
{
    switch (c) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return "\\u" + Number(c).substr(2);
    }
}

} // namespace

void RequireUtf8(std::string_view text)
{
    const auto bad = utf8::find_invalid(text.begin(), text.end());
    if (bad == text.end()) return;
    throw Failure(Shown(std::string(text.begin(), bad)) + "...: byte " + std::to_string(bad - text.begin() + 1) +
                  " is no UTF-8");
}

void RequireStorable(std::string_view text, const std::string& what)
{
    RequireUtf8(text);
    std::size_t position = 0;
    for (auto at = text.begin(); at != text.end();) {
        const char32_t character = utf8::next(at, text.end());
        ++position;
        if (!IsStorable(character)) {
            throw Failure(what + ": character " + std::to_string(position) + " of the value is " + Number(character) +
                          ", which a project file cannot hold");
        }
    }
}

void RequireStorableName(std::string_view name)
{
    RequireStorable(name, Shown(name));
}

std::string HostPath(std::string_view name)
{
    return kv::ToHostPath(kv::ToUtf16(name));
}

std::string Shown(std::string_view text)
{
    if (!utf8::is_valid(text.begin(), text.end())) return Shown(utf8::replace_invalid(std::string(text)));
    std::string shown;
    bool escaped = text.starts_with('"');
    for (auto at = text.begin(); at != text.end();) {
        const auto first = at;
        const char32_t character = utf8::next(at, text.end());
        if (NeedsEscape(character)) {
            shown += Escape(character);
            escaped = true;
        } else {
            if (character == '"' || character == '\\') shown += '\\';
            shown.append(first, at);
        }
    }
    return escaped ? '"' + shown + '"' : std::string(text);
}

} // namespace kvproject
