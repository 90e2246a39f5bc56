#include "platform/xml/XPath.h"

#include "platform/com/Error.h"

namespace kv {
namespace {

pugi::xpath_query Compiled(const std::string& expression)
{
    constexpr std::size_t kLongest = 4096;
    if (expression.size() > kLongest) throw Error(E_INVALIDARG);
    return pugi::xpath_query(expression.c_str());
}

pugi::xpath_node ContextOf(const DomPlace& place)
{
    return place.attribute ? pugi::xpath_node(place.attribute, place.node) : pugi::xpath_node(place.node);
}

DomPlace PlaceOf(const pugi::xpath_node& node)
{
    return {node.attribute() ? node.parent() : node.node(), node.attribute()};
}

/// The root of a part is nobody's node, nor is the element that holds an attribute alone.
bool IsSeen(const DomTree& tree, const DomPlace& place)
{
    if (place.attribute) return true;
    const pugi::xml_node_type type = place.node.type();
    return type == pugi::node_document ? tree.IsDocument() : type != pugi::node_element || *place.node.name();
}

template <class Body>
auto Refusing(Body&& body)
{
    try {
        return body();
    } catch (const pugi::xpath_exception&) {
        throw Error(E_INVALIDARG);
    }
}

} // namespace

std::vector<DomPlace> SelectPlaces(const DomTree& tree, const DomPlace& from, const std::string& expression)
{
    return Refusing([&] {
        pugi::xpath_node_set found = Compiled(expression).evaluate_node_set(ContextOf(from));
        found.sort();
        std::vector<DomPlace> places;
        places.reserve(found.size());
        for (const pugi::xpath_node& node : found) {
            if (const DomPlace place = PlaceOf(node); IsSeen(tree, place)) places.push_back(place);
        }
        return places;
    });
}

DomPlace SelectFirst(const DomTree& tree, const DomPlace& from, const std::string& expression)
{
    const DomPlace first = Refusing([&] { return PlaceOf(Compiled(expression).evaluate_node(ContextOf(from))); });
    if (!first.node || IsSeen(tree, first)) return first;
    const std::vector<DomPlace> all = SelectPlaces(tree, from, expression);
    return all.empty() ? DomPlace() : all.front();
}

} // namespace kv
