#pragma once
// Writes nodes as markup.

#include "platform/xml/XmlBuffer.h"

#include <pugixml.hpp>

namespace kv {

class XmlMarkup;
class XmlStandIns;

/// What stands in a document without a tree.
struct XmlInsertions {
    /// In the outermost element in front of what that holds.
    const XmlMarkup* front = nullptr;
    /// In the place of elements.
    const XmlStandIns* standIns = nullptr;
};

/// Every text that a tree can hold reads back as it was, but for carriage returns in comments, for which XML has no
/// notation: they read back as line feeds. Elements that hold no text are laid out with an element a
/// line, two blanks a level; others stand as they are.
///
/// False when some element has a data type and nothing declares its prefix: markup that is to stand alone is then
/// written once more, with a declaration in the outermost element.
bool WriteXml(pugi::xml_node node, bool declarePrefix, const XmlOutput& output, const XmlInsertions& insertions = {});
/// An element as it stands at a level of a document.
void WriteXml(pugi::xml_node node, int level, XmlBuffer& buffer);
/// A node without layout and without a declaration.
void WriteCompactXml(pugi::xml_node node, const XmlOutput& output);
/// An attribute as it stands in its element.
void WriteXml(pugi::xml_attribute attribute, const XmlOutput& output);

} // namespace kv
