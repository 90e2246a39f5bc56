#include "platform/automation/Bstr.h"

#include "platform/com/Error.h"

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <utf8.h>

namespace {

/// Stands in front of the text; its size keeps the text aligned to 8 bytes.
struct Header {
    std::uint32_t reserved;
    std::uint32_t byteLength;
};
static_assert(sizeof(Header) == 8);

/// The byte length has 32 bits.
constexpr std::size_t kMaxLength = std::numeric_limits<std::uint32_t>::max() / sizeof(OLECHAR);

constexpr char32_t kReplacement = 0xFFFD;

Header* HeaderOf(BSTR string)
{
    return reinterpret_cast<Header*>(string) - 1;
}

constexpr bool IsLeadSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsTrailSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Most text is: names, numbers, paths. It converts unit by unit.
template <class Unit>
bool IsAscii(std::basic_string_view<Unit> text)
{
    Unit bits{};
    for (const Unit unit : text)
        bits = static_cast<Unit>(bits | unit);
    return (bits & ~0x7F) == 0;
}

/// For well-formed text only. No text has more code units in UTF-16 than in UTF-8.
std::u16string Widen(std::string_view utf8)
{
    std::u16string utf16(utf8.size(), u'\0');
    const char16_t* end = utf8::unchecked::utf8to16(utf8.begin(), utf8.end(), utf16.data());
    utf16.resize(static_cast<std::size_t>(end - utf16.data()));
    return utf16;
}

} // namespace

BSTR SysAllocStringLen(const OLECHAR* text, ULONG length)
{
    if (length > kMaxLength) return nullptr;
    const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
    auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + bytes + sizeof(OLECHAR)));
    if (!header) return nullptr;
    header->byteLength = static_cast<std::uint32_t>(bytes);
    auto* string = reinterpret_cast<BSTR>(header + 1);
    if (text) std::memcpy(string, text, bytes);
    string[length] = 0;
    return string;
}

BSTR SysAllocString(const OLECHAR* text)
{
    if (!text) return nullptr;
    const std::size_t length = std::char_traits<OLECHAR>::length(text);
    return length <= kMaxLength ? SysAllocStringLen(text, static_cast<ULONG>(length)) : nullptr;
}

void SysFreeString(BSTR string)
{
    if (string) std::free(HeaderOf(string));
}

ULONG SysStringLen(BSTR string)
{
    return static_cast<ULONG>(SysStringByteLen(string) / sizeof(OLECHAR));
}

ULONG SysStringByteLen(BSTR string)
{
    return string ? HeaderOf(string)->byteLength : 0;
}

namespace kv {

std::u16string ToUtf16(std::string_view utf8)
{
    if (IsAscii(utf8)) return {utf8.begin(), utf8.end()};
    if (utf8::is_valid(utf8.begin(), utf8.end())) return Widen(utf8);
    std::string mended;
    mended.reserve(utf8.size());
    utf8::replace_invalid(utf8.begin(), utf8.end(), std::back_inserter(mended), kReplacement);
    return Widen(mended);
}

std::string ToUtf8(std::u16string_view utf16)
{
    if (IsAscii(utf16)) return {utf16.begin(), utf16.end()};
    std::string utf8;
    utf8.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t point = utf16[i];
        if (IsLeadSurrogate(point) && i + 1 < utf16.size() && IsTrailSurrogate(utf16[i + 1])) {
            point = 0x10000 + ((point - 0xD800) << 10) + (utf16[++i] - 0xDC00u);
        } else if (IsLeadSurrogate(point) || IsTrailSurrogate(point)) {
            point = kReplacement;
        }
        utf8::unchecked::append(point, std::back_inserter(utf8));
    }
    return utf8;
}

Bstr::Bstr(std::u16string_view text)
{
    if (text.size() > kMaxLength) throw Error(E_OUTOFMEMORY);
    // A view of nothing may point nowhere; the string is then still there, and empty.
    m_string = SysAllocStringLen(text.data(), static_cast<ULONG>(text.size()));
    if (!m_string) throw Error(E_OUTOFMEMORY);
}

BSTR Bstr::Copy(BSTR string)
{
    if (!string) return nullptr;
    BSTR copy = SysAllocStringLen(string, SysStringLen(string));
    if (!copy) throw Error(E_OUTOFMEMORY);
    return copy;
}

} // namespace kv
