#pragma once
// Additions to a tree of texts that were checked. Each is made or not: on lack of memory they throw std::bad_alloc.

#include "platform/xml/Dom.h"

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace kv {

/// The text of an attribute as checked UTF-8, in `buffer` where it is not that already. False when XML cannot hold it.
bool CheckedText(const XMLAttribute& attribute, std::string& buffer, std::string_view& text);

/// A new last child.
pugi::xml_node AddNode(pugi::xml_node parent, pugi::xml_node_type type, std::string_view name, std::string_view value);

/// A new attribute, by a name that the element does not have.
void AddAttribute(pugi::xml_node element, std::string_view name, std::string_view value);

/// Sets an attribute, or adds it.
void SetAttribute(pugi::xml_node element, std::string_view name, std::string_view value);

/// Empty when the element has none by this name. No attribute is without a name, and the name of none is empty: who
/// walks over attributes need not ask each whether it is one.
pugi::xml_attribute FindAttribute(pugi::xml_node element, std::string_view name);

/// Compares with a text that ends with a zero, whose length costs more to find than its first difference.
inline bool IsText(const char* terminated, std::string_view text)
{
    for (const char c : text) {
        if (*terminated++ != c) return false;
    }
    return !*terminated;
}

/// Whether a node is an element of a name. Most have another one, which tells at once.
inline bool IsNamed(pugi::xml_node node, std::string_view name)
{
    return IsText(node.name(), name) && node.type() == pugi::node_element;
}

} // namespace kv
