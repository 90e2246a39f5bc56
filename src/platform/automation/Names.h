#pragma once
// How the names of types, members and parameters compare.

#include <algorithm>
#include <string_view>

namespace kv {

/// Declared names are ASCII; the case of letters does not matter.
inline bool SameName(std::string_view declared, std::u16string_view asked)
{
    const auto fold = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; };
    const auto same = [&](char left, char16_t right) { return fold(static_cast<unsigned char>(left)) == fold(right); };
    return std::ranges::equal(declared, asked, same);
}

} // namespace kv
