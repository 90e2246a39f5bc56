#include "platform/xml/XmlDecoder.h"

#include "platform/system/Case.h"
#include "platform/xml/XmlChars.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <sys/mman.h>
#include <utility>

namespace kv {
namespace {

/// A large buffer is touched page by page, once; large pages make that cheap where the system has them.
void UseLargePages(const std::string& buffer)
{
    constexpr std::uintptr_t kPage = std::uintptr_t{2} << 20;
    const auto start = (reinterpret_cast<std::uintptr_t>(buffer.data()) + kPage - 1) / kPage * kPage;
    const auto end = (reinterpret_cast<std::uintptr_t>(buffer.data()) + buffer.capacity()) / kPage * kPage;
    if (start < end) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

/// Characters that are decoded at once where all of them are plain; nearly all text is.
constexpr std::size_t kRun = 32;

/// Decodes a run that is all plain. False for any other.
template <bool kSwap>
bool DecodeRun(std::string_view bytes, std::array<char, kRun>& run)
{
    constexpr std::size_t kLow = kSwap ? 1 : 0;
    constexpr auto kBitsOfOthers = [] {
        std::array<unsigned char, sizeof(std::uint64_t)> mask{};
        for (std::size_t i = 0; i < mask.size(); ++i)
            mask[i] = i % 2 == kLow ? 0x80 : 0xff;
        return std::bit_cast<std::uint64_t>(mask);
    }();
    std::array<std::uint64_t, 2 * kRun / sizeof(std::uint64_t)> words;
    std::memcpy(words.data(), bytes.data(), sizeof words);
    std::uint64_t bits = 0;
    for (const std::uint64_t word : words)
        bits |= word;
    if (bits & kBitsOfOthers) return false;
    for (std::size_t k = 0; k < kRun; ++k)
        run[k] = bytes[2 * k + kLow];
    return true;
}

/// UTF-16 of either byte order to UTF-8. How many bytes were taken: all of the last piece; else the beginning of a
/// character may be left.
template <bool kSwap>
std::size_t DecodeUtf16(std::string_view bytes, std::string& text, bool last)
{
    const auto unit = [&](std::size_t i) {
        const auto low = static_cast<unsigned char>(bytes[kSwap ? i + 1 : i]);
        const auto high = static_cast<unsigned char>(bytes[kSwap ? i : i + 1]);
        return static_cast<char32_t>(high << 8 | low);
    };
    std::array<char, kRun> run;
    std::size_t i = 0;
    for (; i + 1 < bytes.size(); i += 2) {
        while (bytes.size() - i > 2 * kRun && DecodeRun<kSwap>(bytes.substr(i), run)) {
            text.append(run.data(), kRun);
            i += 2 * kRun;
        }
        char32_t c = unit(i);
        if (c < 0x80) {
            text += static_cast<char>(c);
            continue;
        }
        if ((c & 0xfc00) == 0xd800 && !last && i + 3 >= bytes.size()) return i;
        if ((c & 0xfc00) == 0xd800 && i + 3 < bytes.size() && (unit(i + 2) & 0xfc00) == 0xdc00) {
            c = 0x10000 + ((c - 0xd800) << 10) + (unit(i + 2) - 0xdc00);
            i += 2;
        } else if (c >= 0xd800 && c <= 0xdfff) {
            throw XmlError{"the UTF-16 text holds half of a surrogate pair", text.size()};
        }
        AppendUtf8(c, text);
    }
    if (last && bytes.size() % 2) throw XmlError{"the UTF-16 text ends within a character", text.size()};
    return i;
}

/// The encoding that a declaration at the start of the text names; empty when it names none.
std::string_view DeclaredEncoding(std::string_view text)
{
    if (!StartsWithDeclaration(text)) return {};
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t at = declaration.find("encoding");
    const std::size_t open = at == declaration.npos ? at : declaration.find_first_of("\"'", at);
    const std::size_t close = open == declaration.npos ? open : declaration.find(declaration[open], open + 1);
    return close == declaration.npos ? std::string_view() : declaration.substr(open + 1, close - open - 1);
}

bool IsUtf16Name(std::string_view encoding)
{
    return SameText(encoding, "utf-16") || SameText(encoding, "utf-16le") || SameText(encoding, "utf-16be");
}

} // namespace

bool StartsWithDeclaration(std::string_view text)
{
    return text.starts_with("<?xml") && text.size() > 5 && (IsBlank(text[5]) || text[5] == '?');
}

bool IsEncodingName(std::string_view encoding)
{
    return SameText(encoding, "utf-8") || SameText(encoding, "us-ascii") || IsUtf16Name(encoding);
}

XmlDecoder::XmlDecoder(std::string& text, std::size_t size) : m_text(text), m_size(size)
{
    m_text.clear();
}

XmlDecoder::Encoding XmlDecoder::Detect(std::string_view& bytes) const
{
    const auto take = [&bytes](std::string_view mark) {
        if (!bytes.starts_with(mark)) return false;
        bytes.remove_prefix(mark.size());
        return true;
    };
    if (take("\xff\xfe") || bytes.starts_with(std::string_view("<\0", 2))) return Encoding::Utf16;
    if (take("\xfe\xff") || bytes.starts_with(std::string_view("\0<", 2))) return Encoding::Utf16Swapped;
    take("\xef\xbb\xbf");
    return Encoding::Utf8;
}

void XmlDecoder::Append(std::string_view bytes)
{
    if (m_encoding == Encoding::Unknown) {
        m_encoding = Detect(bytes);
        const std::size_t expected = m_encoding == Encoding::Utf8 ? m_size : m_size / 2 + m_size / 32;
        m_text.reserve(std::min(expected, kMaxXmlSize));
        UseLargePages(m_text);
    }
    if (m_rest.empty()) {
        Decode(bytes, false);
    } else {
        Decode(std::exchange(m_rest, {}).append(bytes), false);
    }
}

void XmlDecoder::Decode(std::string_view bytes, bool last)
{
    std::size_t taken = bytes.size();
    if (m_encoding == Encoding::Utf16) {
        taken = DecodeUtf16<false>(bytes, m_text, last);
    } else if (m_encoding == Encoding::Utf16Swapped) {
        taken = DecodeUtf16<true>(bytes, m_text, last);
    } else {
        m_text += bytes;
    }
    m_rest = bytes.substr(taken);
}

void XmlDecoder::Finish()
{
    if (!m_rest.empty()) Decode(std::exchange(m_rest, {}), true);
    const std::string_view encoding = DeclaredEncoding(m_text);
    const bool isUtf16 = m_encoding != Encoding::Utf8;
    if (encoding.empty() || IsUtf16Name(encoding) == isUtf16) return;
    throw XmlError{isUtf16 ? "the document is UTF-16 but says otherwise" : "the document says UTF-16 but is not",
                   static_cast<std::size_t>(encoding.data() - m_text.data())};
}

} // namespace kv
