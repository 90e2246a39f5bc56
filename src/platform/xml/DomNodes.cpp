#include "platform/xml/DomNodes.h"

#include "platform/xml/DomEdit.h"
#include "platform/xml/DomLists.h"
#include "platform/xml/XmlText.h"

namespace kv {
namespace {

void CollectByName(pugi::xml_node node, std::string_view name, std::vector<DomPlace>& found)
{
    for (pugi::xml_node child : node.children()) {
        if (child.type() != pugi::node_element) continue;
        if (name == "*" || name == child.name()) found.push_back({child, {}});
        CollectByName(child, name, found);
    }
}

} // namespace

DomObject& NewDomObject(const DomPlace& place, DomHome home)
{
    if (!place.attribute && place.node.type() == pugi::node_element) return *new DomElement(place, std::move(home));
    return *new DomLeaf(place, std::move(home));
}

HRESULT DomElement::getAttribute(BSTR name, VARIANT* value)
{
    return Guarded([&] {
        if (!value) return E_POINTER;
        VariantInit(value);
        value->vt = VT_NULL;
        const pugi::xml_attribute attribute = FindAttribute(m_place.node, ToUtf8(View(name)));
        if (!attribute) return S_FALSE;
        *value = Variant(ToUtf16(attribute.value())).Detach();
        return S_OK;
    });
}

HRESULT DomElement::setAttribute(BSTR name, VARIANT value)
{
    return Guarded([&] {
        const std::string checked = XmlNameOf(name);
        SetAttribute(m_place.node, checked, XmlTextOf(value));
        return S_OK;
    });
}

HRESULT DomElement::removeAttribute(BSTR name)
{
    return Guarded([&] {
        const pugi::xml_attribute attribute = FindAttribute(m_place.node, ToUtf8(View(name)));
        if (!attribute) return S_FALSE;
        Detach({m_place.node, attribute});
        return S_OK;
    });
}

HRESULT DomElement::getElementsByTagName(BSTR name, IXMLDOMNodeList** nodes)
{
    return Guarded([&] {
        if (!nodes) return E_POINTER;
        *nodes = nullptr;
        std::vector<DomPlace> found;
        CollectByName(m_place.node, ToUtf8(View(name)), found);
        return ComPtr<IXMLDOMNodeList>(Make<DomNodeList>(*this, found)).CopyTo(nodes);
    });
}

HRESULT DomElement::ElementName(std::string_view* name)
{
    if (!name) return E_POINTER;
    *name = m_place.node.name();
    return S_OK;
}

HRESULT DomElement::ReadAttributes(XMLAttributeVisitor* visitor)
{
    if (!visitor) return E_POINTER;
    return Guarded([&] {
        for (pugi::xml_attribute attribute : m_place.node.attributes()) {
            visitor->Attribute(attribute.name(), attribute.value());
        }
        return S_OK;
    });
}

HRESULT DomElement::WriteAttributes(XMLAttributeSource* source)
{
    if (!source) return E_POINTER;
    return Guarded([&] {
        XMLAttribute next;
        std::string buffer;
        std::string_view text;
        // Names that follow one another in order need no search for one that is there already.
        bool inOrder = !m_place.node.first_attribute();
        std::string_view last;
        while (source->Next(next)) {
            if (!IsXmlName(next.name) || !CheckedText(next, buffer, text)) return E_INVALIDARG;
            inOrder = inOrder && last < next.name;
            if (inOrder) {
                AddAttribute(m_place.node, next.name, text);
            } else {
                SetAttribute(m_place.node, next.name, text);
            }
            last = next.name;
        }
        return S_OK;
    });
}

} // namespace kv
