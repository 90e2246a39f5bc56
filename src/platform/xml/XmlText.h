#pragma once
// What text XML can hold, and its encodings.

#include "platform/com/BaseTypes.h"

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
bool ToXmlUtf8(std::u16string_view text, std::string& utf8);
/// The same check for UTF-8, which must be well-formed.
bool IsXmlUtf8(std::string_view text);

bool IsXmlName(std::string_view name);
/// The content of a comment must not hold or begin an end mark.
bool IsXmlComment(std::string_view text);
/// "xml" in any case names the declaration, which XML sets apart from instructions; it is allowed here in lower case,
/// with data that makes a declaration.
bool IsXmlInstruction(std::string_view target, std::string_view data);

/// Decodes a file piece by piece, by its byte-order mark or its declaration: UTF-8 or UTF-16. Throws XmlError, with
/// what stands before the error in the text.
class XmlDecoder {
public:
    /// `size` is what the bytes of all pieces add up to.
    XmlDecoder(std::string& text, std::size_t size);

    /// The first piece has four bytes at least, unless it is the only one.
    void Append(std::string_view bytes);
    /// After the last piece.
    void Finish();

private:
    enum class Encoding { Unknown, Utf8, Utf16, Utf16Swapped };

    /// Takes the byte-order mark off.
    Encoding Detect(std::string_view& bytes) const;
    void Decode(std::string_view bytes, bool last);

    std::string& m_text;
    const std::size_t m_size;
    Encoding m_encoding = Encoding::Unknown;
    /// The beginning of a character that goes on in the next piece.
    std::string m_rest;
};

/// Checks everything that the tree builder lets through: size, declaration, one root, nesting, names, attributes told
/// once, references, characters, comments, no document type. Throws XmlError.
void CheckXml(std::string_view text);

} // namespace kv
