#include "platform/xml/DomLists.h"

#include "platform/xml/DomEdit.h"

#include <iterator>

namespace kv {

DomNodeList::DomNodeList(const DomObject& owner, const std::vector<DomPlace>& places)
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
        const pugi::xml_attribute found = FindAttribute(element, ToUtf8(View(name)));
        return found ? m_element.ObjectFor({element, found}).CopyTo(node) : S_FALSE;
    });
}

HRESULT DomNamedNodeMap::removeNamedItem(BSTR name, IXMLDOMNode** removed)
{
    return Guarded([&] {
        if (removed) *removed = nullptr;
        const pugi::xml_node element = m_element.Place().node;
        const pugi::xml_attribute found = FindAttribute(element, ToUtf8(View(name)));
        if (!found) return S_FALSE;
        if (removed) m_element.ObjectFor({element, found}).CopyTo(removed);
        m_element.Detach({element, found});
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
