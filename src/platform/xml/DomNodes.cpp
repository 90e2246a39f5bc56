#include "platform/xml/DomNodes.h"

#include "platform/xml/DomLists.h"
#include "platform/xml/XmlText.h"

#include <cstring>

namespace kv {
namespace {

/// A zero-terminated copy of a short text, on the stack where it fits.
class Terminated {
public:
    explicit Terminated(std::string_view text)
    {
        if (text.size() < sizeof m_short) {
            text.copy(m_short, text.size());
            m_short[text.size()] = '\0';
        } else {
            m_long = text;
        }
    }

    const char* Get() const { return m_long.empty() ? m_short : m_long.c_str(); }

private:
    char m_short[48];
    std::string m_long;
};

void CollectByName(pugi::xml_node node, std::string_view name, std::vector<DomPlace>& found)
{
    for (pugi::xml_node child : node.children()) {
        if (child.type() != pugi::node_element) continue;
        if (name == "*" || name == child.name()) found.push_back({child, {}});
        CollectByName(child, name, found);
    }
}

} // namespace

void RemoveAttribute(DomTree& tree, pugi::xml_node element, pugi::xml_attribute attribute)
{
    if (DomObject* object = tree.Find({element, attribute})) {
        pugi::xml_node holder = tree.NewNode(pugi::node_element);
        object->MoveTo({holder, holder.append_copy(attribute)});
    }
    element.remove_attribute(attribute);
    if (DomObject* object = tree.Find({element, {}})) object->AttributeRemoved();
}

void DomElement::Write(const char* name, std::string_view value)
{
    // A writer that names its attributes in order needs no search for one that is there already.
    const bool inOrder =
        m_newest && m_newest == m_place.node.last_attribute() && std::strcmp(m_newest.name(), name) < 0;
    pugi::xml_attribute attribute = inOrder ? pugi::xml_attribute() : m_place.node.attribute(name);
    if (!attribute) {
        const bool first = !m_place.node.first_attribute();
        attribute = m_place.node.append_attribute(name);
        m_newest = inOrder || first ? attribute : pugi::xml_attribute();
    }
    if (!attribute || !attribute.set_value(value.data(), value.size())) throw std::bad_alloc();
}

HRESULT DomElement::getAttribute(BSTR name, VARIANT* value)
{
    return Guarded([&] {
        if (!value) return E_POINTER;
        VariantInit(value);
        value->vt = VT_NULL;
        const pugi::xml_attribute attribute = AttributeOf(m_place.node, name);
        if (!attribute) return S_FALSE;
        *value = Variant(ToUtf16(attribute.value())).Detach();
        return S_OK;
    });
}

HRESULT DomElement::setAttribute(BSTR name, VARIANT value)
{
    return Guarded([&] {
        const std::string checked = XmlNameOf(name);
        Write(checked.c_str(), XmlTextOf(value));
        return S_OK;
    });
}

HRESULT DomElement::removeAttribute(BSTR name)
{
    return Guarded([&] {
        const pugi::xml_attribute attribute = AttributeOf(m_place.node, name);
        if (!attribute) return S_FALSE;
        RemoveAttribute(*m_tree, m_place.node, attribute);
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

HRESULT DomElement::WriteAttribute(std::string_view name, std::string_view value)
{
    return Guarded([&] {
        if (!IsXmlName(name) || !IsXmlUtf8(value)) return E_INVALIDARG;
        Write(Terminated(name).Get(), value);
        return S_OK;
    });
}

HRESULT DomElement::WriteValue(std::string_view name, const VARIANT& value)
{
    return Guarded([&] {
        if (!IsXmlName(name)) return E_INVALIDARG;
        Write(Terminated(name).Get(), XmlTextOf(value));
        return S_OK;
    });
}

} // namespace kv
