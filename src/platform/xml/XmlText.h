#pragma once
// What text XML can hold, and its encodings.

#include "platform/com/BaseTypes.h"

#include <string>
#include <string_view>

namespace kv {

/// Nesting of elements that a document may have; recursion over a tree stays within the stack.
inline constexpr int kMaxXmlDepth = 256;

/// Bytes that a document may have as a file or as UTF-8.
inline constexpr std::size_t kMaxXmlSize = std::size_t{1} << 30;

/// Why and where a text is no document. Throughout parsing an offset counts bytes of the UTF-8 text.
struct XmlError {
    const char* reason;
    std::size_t offset;
};

/// Converts to UTF-8. False for text that XML cannot hold: control characters other than tab, line feed and carriage
/// return, lone surrogates, U+FFFE and U+FFFF.
bool ToXmlUtf8(std::u16string_view text, std::string& utf8);
/// The same check for UTF-8, which must be well-formed.
bool IsXmlUtf8(std::string_view text);

bool IsXmlName(std::string_view name);

/// Decodes a file by its byte-order mark or its declaration: UTF-8 or UTF-16. Throws XmlError.
std::string DecodeXml(std::string_view bytes);

/// Checks everything that the tree builder lets through: one root, nesting, names, attributes told once, references,
/// characters, no document type. Throws XmlError.
void CheckXml(std::string_view text);

} // namespace kv
