#include "platform/xml/XPath.h"

#include "platform/com/Error.h"

#include <new>
#include <string_view>
#include <unordered_map>

namespace kv {
namespace {

/// A copy of the part of a tree to which a place belongs, without the rest of the tree.
class Extract {
public:
    Extract(DomTree& tree, const DomPlace& from) : m_from(from)
    {
        if (tree.IsDetached(from.node)) {
            pugi::xml_node top = from.node;
            while (tree.Parent(top))
                top = top.parent();
            Add(top);
        } else {
            Note(tree.Document(), m_copy);
            for (pugi::xml_node child : tree.Document().children()) {
                if (!tree.IsHidden(child)) Add(child);
            }
        }
    }

    DomPlace From() const
    {
        return {m_fromCopy, m_from.attribute ? m_fromCopy.attribute(m_from.attribute.name()) : pugi::xml_attribute()};
    }

    /// Empty for what only the copy has: the document above a detached part.
    DomPlace OriginalOf(const DomPlace& copy) const
    {
        const auto found = m_originals.find(copy.node.internal_object());
        if (found == m_originals.end()) return {};
        const pugi::xml_node node = found->second;
        return {node, copy.attribute ? node.attribute(copy.attribute.name()) : pugi::xml_attribute()};
    }

private:
    void Add(pugi::xml_node node)
    {
        const pugi::xml_node copy = m_copy.append_copy(node);
        if (!copy) throw std::bad_alloc();
        NoteAll(node, copy);
    }

    void NoteAll(pugi::xml_node node, pugi::xml_node copy)
    {
        Note(node, copy);
        pugi::xml_node childCopy = copy.first_child();
        for (pugi::xml_node child : node.children()) {
            NoteAll(child, childCopy);
            childCopy = childCopy.next_sibling();
        }
    }

    void Note(pugi::xml_node node, pugi::xml_node copy)
    {
        m_originals.emplace(copy.internal_object(), node);
        if (node == m_from.node) m_fromCopy = copy;
    }

    DomPlace m_from;
    pugi::xml_document m_copy;
    pugi::xml_node m_fromCopy;
    std::unordered_map<const void*, pugi::xml_node> m_originals;
};

std::vector<DomPlace> Run(const pugi::xpath_query& query, const DomPlace& from)
{
    const pugi::xpath_node context =
        from.attribute ? pugi::xpath_node(from.attribute, from.node) : pugi::xpath_node(from.node);
    pugi::xpath_node_set found = query.evaluate_node_set(context);
    found.sort();
    std::vector<DomPlace> places;
    places.reserve(found.size());
    for (const pugi::xpath_node& node : found)
        places.push_back({node.attribute() ? node.parent() : node.node(), node.attribute()});
    return places;
}

/// Steps that only go down from where they start come to nothing else because more stands behind the root element.
bool OnlyStepsDown(std::string_view expression)
{
    const std::size_t condition = expression.find('[');
    const bool pathInCondition = condition != expression.npos && expression.find('/', condition) != expression.npos;
    return !pathInCondition && expression.find('(') == expression.npos && expression.find("::") == expression.npos &&
           expression.find("..") == expression.npos;
}

/// Elements without a name are the nursery and the holders of new attributes.
bool IsSeen(const DomPlace& place)
{
    return place.node && (place.attribute || place.node.type() != pugi::node_element || *place.node.name());
}

} // namespace

std::vector<DomPlace> SelectPlaces(DomTree& tree, const DomPlace& from, const std::string& expression)
{
    constexpr std::size_t kLongest = 4096;
    if (expression.size() > kLongest) throw Error(E_INVALIDARG);
    try {
        const pugi::xpath_query query(expression.c_str());
        tree.DropEmptyNursery();
        const bool detached = tree.IsDetached(from.node);
        std::vector<DomPlace> places;
        if (!tree.HasDetached() || (!detached && OnlyStepsDown(expression))) {
            places = Run(query, from);
            std::erase_if(places, [&](const DomPlace& place) { return tree.IsDetached(place.node); });
        } else {
            const Extract extract(tree, from);
            places = Run(query, extract.From());
            for (DomPlace& place : places)
                place = extract.OriginalOf(place);
        }
        std::erase_if(places, [](const DomPlace& place) { return !IsSeen(place); });
        return places;
    } catch (const pugi::xpath_exception&) {
        throw Error(E_INVALIDARG);
    }
}

} // namespace kv
