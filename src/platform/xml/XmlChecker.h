#pragma once
// Whether a text is a document.

#include "platform/xml/XmlText.h"

namespace kv {

/// "xml" in any case names the declaration, which XML sets apart from instructions; it is allowed here in lower case,
/// with data that makes a declaration.
bool IsXmlInstruction(std::string_view target, std::string_view data);

/// Checks everything that the tree builder lets through: size, declaration, one root, nesting, names, attributes told
/// once, references, characters, comments, no document type. Throws XmlError.
void CheckXml(const std::string& text);

} // namespace kv
