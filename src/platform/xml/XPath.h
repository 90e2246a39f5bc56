#pragma once
// XPath over a tree.

#include "platform/xml/DomTree.h"

#include <string>
#include <vector>

namespace kv {

/// What an expression selects from a node or attribute of a tree, in document order. Throws Error(E_INVALIDARG) for an
/// expression that does not parse, is no selection or is longer than 4096 bytes.
std::vector<DomPlace> SelectPlaces(const DomTree& tree, const DomPlace& from, const std::string& expression);

/// The first of them, without a search for the others; empty when there is none.
DomPlace SelectFirst(const DomTree& tree, const DomPlace& from, const std::string& expression);

} // namespace kv
