#include "platform/xml/DomLists.h"

#include "platform/xml/DomNodes.h"

#include <iterator>

namespace kv {

DomNodeList::DomNodeList(DomObject& owner, const std::vector<DomPlace>& places)
{
    m_nodes.reserve(places.size());
    for (const DomPlace& place : places)
        m_nodes.push_back(owner.ObjectFor(place));
}

HRESULT DomNodeList::get_item(LONG index, IXMLDOMNode** node)
{
    if (!node) return E_POINTER;
    *node = nullptr;
    if (index < 0 || static_cast<std::size_t>(index) >= m_nodes.size()) return S_FALSE;
    return m_nodes[static_cast<std::size_t>(index)].CopyTo(node);
}

HRESULT DomNodeList::get_length(LONG* length)
{
    if (!length) return E_POINTER;
    *length = static_cast<LONG>(m_nodes.size());
    return S_OK;
}

HRESULT DomNodeList::nextNode(IXMLDOMNode** node)
{
    const HRESULT result = get_item(static_cast<LONG>(m_next), node);
    if (result == S_OK) ++m_next;
    return result;
}

HRESULT DomNodeList::reset()
{
    m_next = 0;
    return S_OK;
}

HRESULT DomNamedNodeMap::getNamedItem(BSTR name, IXMLDOMNode** node)
{
    return Guarded([&] {
        if (!node) return E_POINTER;
        *node = nullptr;
        const pugi::xml_node element = m_element.Place().node;
        const pugi::xml_attribute found = AttributeOf(element, name);
        return found ? m_element.ObjectFor({element, found}).CopyTo(node) : S_FALSE;
    });
}

HRESULT DomNamedNodeMap::setNamedItem(IXMLDOMNode* attribute, IXMLDOMNode** previous)
{
    return Guarded([&] {
        if (previous) *previous = nullptr;
        DomObject* object = ObjectOf(attribute);
        if (!object || !object->Place().attribute || &object->Tree() != &m_element.Tree()) return E_INVALIDARG;
        const pugi::xml_node element = m_element.Place().node;
        const pugi::xml_node holder = object->Place().node;
        // An attribute of another element is not taken from it.
        if (holder == element) return S_OK;
        if (!m_element.Tree().IsDetached(holder) || *holder.name()) return E_INVALIDARG;
        if (const auto old = element.attribute(object->Place().attribute.name())) {
            if (previous) m_element.ObjectFor({element, old}).CopyTo(previous);
            RemoveAttribute(m_element.Tree(), element, old);
        }
        pugi::xml_node target = element;
        object->MoveTo({element, target.append_copy(object->Place().attribute)});
        return S_OK;
    });
}

HRESULT DomNamedNodeMap::removeNamedItem(BSTR name, IXMLDOMNode** removed)
{
    return Guarded([&] {
        if (removed) *removed = nullptr;
        const pugi::xml_node element = m_element.Place().node;
        const pugi::xml_attribute found = AttributeOf(element, name);
        if (!found) return S_FALSE;
        if (removed) m_element.ObjectFor({element, found}).CopyTo(removed);
        RemoveAttribute(m_element.Tree(), element, found);
        return S_OK;
    });
}

HRESULT DomNamedNodeMap::get_item(LONG index, IXMLDOMNode** node)
{
    return Guarded([&] {
        if (!node) return E_POINTER;
        *node = nullptr;
        const pugi::xml_node element = m_element.Place().node;
        LONG at = 0;
        for (pugi::xml_attribute attribute : element.attributes()) {
            if (at++ == index) return m_element.ObjectFor({element, attribute}).CopyTo(node);
        }
        return S_FALSE;
    });
}

HRESULT DomNamedNodeMap::get_length(LONG* length)
{
    if (!length) return E_POINTER;
    const auto attributes = m_element.Place().node.attributes();
    *length = static_cast<LONG>(std::distance(attributes.begin(), attributes.end()));
    return S_OK;
}

} // namespace kv
