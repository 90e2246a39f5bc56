#include "platform/xml/XmlText.h"

#include "platform/xml/XmlChars.h"

#include <algorithm>
#include <array>

namespace kv {
namespace {

/// For the names that nearly all names are like.
constexpr auto kIsLetter = [] {
    std::array<bool, 256> letters{};
    for (unsigned char c = 0; c < 26; ++c)
        letters['a' + c] = letters['A' + c] = true;
    return letters;
}();

} // namespace

bool ToXmlUtf8(std::u16string_view text, std::string& utf8)
{
    utf8.clear();
    utf8.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if ((c & 0xfc00) == 0xd800 && i + 1 < text.size() && (text[i + 1] & 0xfc00) == 0xdc00) {
            c = 0x10000 + ((c - 0xd800) << 10) + (text[++i] - 0xdc00u);
        }
        if (!IsXmlChar(c)) return false;
        AppendUtf8(c, utf8);
    }
    return true;
}

bool IsXmlUtf8(std::string_view text)
{
    for (std::size_t length = 1; !text.empty(); text.remove_prefix(length)) {
        const auto c = static_cast<unsigned char>(text.front());
        // Nearly all text is plain.
        length = 1;
        if (c >= 0x20 && c < 0x80) continue;
        if (!IsXmlChar(DecodeUtf8(text, length))) return false;
    }
    return true;
}

bool IsXmlName(std::string_view name)
{
    const auto isLetter = [](char c) { return kIsLetter[static_cast<unsigned char>(c)]; };
    if (!name.empty() && std::ranges::all_of(name, isLetter)) return true;
    bool first = true;
    for (std::size_t length = 0; !name.empty(); name.remove_prefix(length)) {
        const char32_t c = DecodeUtf8(name, length);
        if (c == kMalformed || !(first ? IsNameStart(c) : IsNameChar(c))) return false;
        first = false;
    }
    return !first;
}

bool IsXmlComment(std::string_view text)
{
    return text.find("--") == text.npos && !text.ends_with('-');
}

} // namespace kv
