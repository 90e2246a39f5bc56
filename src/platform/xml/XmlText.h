#pragma once
// What text XML can hold.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <string>
#include <string_view>

namespace kv {

/// Nesting of elements that a document may have; recursion over a tree stays within the stack.
inline constexpr int kMaxXmlDepth = 256;

/// Bytes of UTF-8 that a document may have, whatever its encoding: 256 MiB. The tree of a document of tiny elements
/// takes many times its text.
inline constexpr std::size_t kMaxXmlSize = std::size_t{256} << 20;

/// Why and where a text is no document. Throughout parsing an offset counts bytes of the UTF-8 text.
struct XmlError {
    const char* reason;
    std::size_t offset;
};

/// Converts to UTF-8. False for text that XML cannot hold: control characters other than tab, line feed and carriage
/// return, lone surrogates, U+FFFE and U+FFFF.
KV_EXPORT bool ToXmlUtf8(std::u16string_view text, std::string& utf8);
/// The same check for UTF-8, which must be well-formed.
bool IsXmlUtf8(std::string_view text);

bool IsXmlName(std::string_view name);
/// The content of a comment must not hold or begin an end mark.
bool IsXmlComment(std::string_view text);

} // namespace kv
