#pragma once
// The characters of XML, and how UTF-8 holds them.

#include <iterator>
#include <string>
#include <string_view>
#include <utf8.h>

namespace kv {

inline bool IsXmlChar(char32_t c)
{
    return c >= 0x20 ? (c < 0xd800 || (c > 0xdfff && c < 0xfffe) || (c > 0xffff && c <= 0x10ffff))
                     : c == '\t' || c == '\n' || c == '\r';
}

inline void AppendUtf8(char32_t c, std::string& text)
{
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else {
        char bytes[4];
        text.append(bytes, utf8::unchecked::append(c, std::begin(bytes)));
    }
}

inline constexpr char32_t kMalformed = 0xffffffff;

/// Decodes the character at the start of a text and tells its length; kMalformed for what is no UTF-8.
inline char32_t DecodeUtf8(std::string_view text, std::size_t& length)
{
    length = 1;
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return first;
    try {
        const char* at = text.data();
        const char32_t c = utf8::next(at, text.data() + text.size());
        length = static_cast<std::size_t>(at - text.data());
        return c;
    } catch (const utf8::exception&) {
        return kMalformed;
    }
}

constexpr bool IsNameStart(char32_t c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           (c >= 0xc0 && c != 0xd7 && c != 0xf7 && c != 0x37e && !(c >= 0x300 && c <= 0x36f) &&
            !(c >= 0x2000 && c <= 0x206f && c != 0x200c && c != 0x200d) && !(c >= 0x2190 && c <= 0x2bff) &&
            !(c >= 0x2ff0 && c <= 0x3000) && !(c >= 0xd800 && c <= 0xf8ff) && !(c >= 0xfdd0 && c <= 0xfdef) &&
            c != 0xfffe && c != 0xffff && c <= 0xeffff);
}

constexpr bool IsNameChar(char32_t c)
{
    return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == 0xb7 ||
           (c >= 0x300 && c <= 0x36f) || c == 0x203f || c == 0x2040;
}

inline bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace kv
