#pragma once
// A node's attributes, ordered by name: the unit of exchange between a node and a document.

#include "KVProjectData/tree/AttributeValue.h"

#include <string_view>
#include <vector>

namespace kv {

struct Attribute {
    /// A literal, or borrowed from the document that is being read.
    std::string_view name;
    AttributeValue value;
};

class AttributeMap {
public:
    AttributeMap() = default;
    /// Takes attributes in any order; of equal names the last one counts.
    explicit AttributeMap(std::vector<Attribute> attributes);

    void Clear() { m_attributes.clear(); }
    void Reserve(std::size_t count) { m_attributes.reserve(count); }

    /// Adds or replaces one. Names that arrive in order are the cheap case.
    void Set(std::string_view name, AttributeValue value);

    /// Null when there is none. Asking for names in order is the cheap case: `hint` carries the position on.
    const AttributeValue* Find(std::string_view name, std::size_t& hint) const;

    std::size_t Size() const { return m_attributes.size(); }
    auto begin() const { return m_attributes.begin(); }
    auto end() const { return m_attributes.end(); }

private:
    std::vector<Attribute> m_attributes;
};

} // namespace kv
