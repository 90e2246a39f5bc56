#pragma once
// Texts compared without regard to the case of ASCII letters. Any other character equals itself alone.

#include <algorithm>
#include <string_view>

namespace kv {

/// The small letter for a capital one; any other character as it is.
constexpr char16_t FoldCase(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

constexpr char16_t FoldCase(char c)
{
    return FoldCase(static_cast<char16_t>(static_cast<unsigned char>(c)));
}

namespace detail {

template <class Left, class Right>
constexpr bool SameText(const Left& left, const Right& right)
{
    return std::ranges::equal(left, right, [](auto a, auto b) { return FoldCase(a) == FoldCase(b); });
}

} // namespace detail

constexpr bool SameText(std::string_view left, std::string_view right)
{
    return detail::SameText(left, right);
}

constexpr bool SameText(std::u16string_view left, std::u16string_view right)
{
    return detail::SameText(left, right);
}

/// For a declared name, which is ASCII, and one that somebody asks for.
constexpr bool SameText(std::string_view declared, std::u16string_view asked)
{
    return detail::SameText(declared, asked);
}

constexpr bool StartsWithText(std::string_view text, std::string_view start)
{
    return SameText(text.substr(0, start.size()), start);
}

constexpr bool StartsWithText(std::u16string_view text, std::u16string_view start)
{
    return SameText(text.substr(0, start.size()), start);
}

} // namespace kv
