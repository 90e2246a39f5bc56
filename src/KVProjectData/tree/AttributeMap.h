#pragma once
// A node's attributes, ordered by name: the unit of exchange between a node and a document.

#include "KVProjectData/tree/AttributeValue.h"

#include <cassert>
#include <string_view>
#include <utility>
#include <vector>

namespace kv {

struct Attribute {
    /// A literal, or borrowed from the document that is being read.
    std::string_view name;
    AttributeValue value;

    template <class Value>
    Attribute(std::string_view attributeName, Value&& attributeValue)
        : name(attributeName), value(std::forward<Value>(attributeValue))
    {
    }
};

class AttributeMap {
public:
    AttributeMap() = default;
    /// Takes attributes in any order; of equal names the last one counts.
    explicit AttributeMap(std::vector<Attribute> attributes);

    void Clear() { m_attributes.clear(); }
    void Reserve(std::size_t count) { m_attributes.reserve(count); }

    /// Adds one behind the others; its name follows theirs in the order.
    template <class Value>
    void Append(std::string_view name, Value&& value)
    {
        assert(m_attributes.empty() || m_attributes.back().name < name);
        m_attributes.emplace_back(name, std::forward<Value>(value));
    }

    /// Null when there is none. Asking for names in order is the cheap case: `hint` carries the position on.
    const AttributeValue* Find(std::string_view name, std::size_t& hint) const
    {
        const bool isNext = hint < m_attributes.size() && m_attributes[hint].name == name;
        return isNext ? &m_attributes[hint++].value : Search(name, hint);
    }

    auto begin() const { return m_attributes.begin(); }
    auto end() const { return m_attributes.end(); }

private:
    const AttributeValue* Search(std::string_view name, std::size_t& hint) const;

    std::vector<Attribute> m_attributes;
};

} // namespace kv
