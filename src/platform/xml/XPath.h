#pragma once
// XPath over a tree whose detached parts stand in the same document.

#include "platform/xml/DomTree.h"

#include <string>
#include <vector>

namespace kv {

/// What an expression selects from a node or attribute, in document order: from the document without its detached
/// parts, or from the detached part to which the place belongs. Throws Error(E_INVALIDARG) for an expression that does
/// not parse, is no selection or is longer than 4096 bytes.
std::vector<DomPlace> SelectPlaces(DomTree& tree, const DomPlace& from, const std::string& expression);

} // namespace kv
