#pragma once
// The encodings of documents.

#include "platform/xml/XmlText.h"

namespace kv {

/// Whether the text starts with a declaration, and not with an instruction whose name starts alike.
bool StartsWithDeclaration(std::string_view text);

/// Whether a declaration may name this encoding, in any case.
bool IsEncodingName(std::string_view encoding);

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

} // namespace kv
