#pragma once
// A node's attributes, ordered by name: the unit of exchange between a node and a document.

#include "KVProjectData/tree/AttributeValue.h"

#include <cassert>
#include <string_view>
#include <vector>

namespace kv {

struct Attribute {
    /// A literal, or borrowed from the document that is being read.
    std::string_view name;
    AttributeValue value;
};

/// The values alone, in the order of their names: what an undo record keeps of a node.
class AttributeValues {
public:
    void Clear() { m_values.clear(); }
    void Reserve(std::size_t count) { m_values.reserve(count); }
    void Append(std::string_view, AttributeValue value) { m_values.push_back(std::move(value)); }
    AttributeValue& At(std::size_t index) { return m_values[index]; }

private:
    std::vector<AttributeValue> m_values;
};

class AttributeMap {
public:
    AttributeMap() = default;
    /// Takes attributes in any order; of equal names the last one counts.
    explicit AttributeMap(std::vector<Attribute> attributes);

    void Clear() { m_attributes.clear(); }
    void Reserve(std::size_t count) { m_attributes.reserve(count); }

    /// Adds one behind the others; its name follows theirs in the order.
    void Append(std::string_view name, AttributeValue value)
    {
        assert(m_attributes.empty() || m_attributes.back().name < name);
        m_attributes.push_back({name, std::move(value)});
    }

    /// Null when there is none. Asking for names in order is the cheap case: `hint` carries the position on.
    const AttributeValue* Find(std::string_view name, std::size_t& hint) const
    {
        const bool isNext = hint < m_attributes.size() && m_attributes[hint].name == name;
        return isNext ? &m_attributes[hint++].value : Search(name, hint);
    }

    std::size_t Size() const { return m_attributes.size(); }
    auto begin() const { return m_attributes.begin(); }
    auto end() const { return m_attributes.end(); }

private:
    const AttributeValue* Search(std::string_view name, std::size_t& hint) const;

    std::vector<Attribute> m_attributes;
};

} // namespace kv
