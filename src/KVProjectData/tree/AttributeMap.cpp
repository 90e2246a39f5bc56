#include "KVProjectData/tree/AttributeMap.h"

#include <algorithm>

namespace kv {
namespace {

bool ByName(const Attribute& left, const Attribute& right)
{
    return left.name < right.name;
}

} // namespace

AttributeMap::AttributeMap(std::vector<Attribute> attributes) : m_attributes(std::move(attributes))
{
    if (!std::is_sorted(m_attributes.begin(), m_attributes.end(), ByName)) {
        std::stable_sort(m_attributes.begin(), m_attributes.end(), ByName);
    }
}

const AttributeValue* AttributeMap::Search(std::string_view name, std::size_t& hint) const
{
    const auto at =
        std::upper_bound(m_attributes.begin(), m_attributes.end(), name,
                         [](std::string_view wanted, const Attribute& attribute) { return wanted < attribute.name; });
    if (at == m_attributes.begin() || std::prev(at)->name != name) return nullptr;
    hint = static_cast<std::size_t>(at - m_attributes.begin());
    return &std::prev(at)->value;
}

} // namespace kv
