#pragma once
// Writes nodes as markup.

#include <functional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace kv {

/// Receives UTF-8 in pieces that end between characters.
using XmlOutput = std::function<void(std::string_view)>;

/// Every text that a tree can hold reads back as it was, but for carriage returns in comments, for which XML has no
/// notation: they read back as line feeds. Elements that hold no text are laid out with an element a
/// line, two blanks a level; others stand as they are.
///
/// False when some element has a data type and nothing declares its prefix: markup that is to stand alone is then
/// written once more, with a declaration in the outermost element.
bool WriteXml(pugi::xml_node node, bool declarePrefix, const XmlOutput& output);
/// A node without layout and without a declaration.
void WriteCompactXml(pugi::xml_node node, const XmlOutput& output);
/// An attribute as it stands in its element.
void WriteXml(pugi::xml_attribute attribute, const XmlOutput& output);

} // namespace kv
