#include "platform/xml/DomNodes.h"

#include "platform/xml/DomLists.h"
#include "platform/xml/XmlText.h"

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

/// Sets an attribute to checked text; appends it where it is empty.
void SetAttribute(pugi::xml_node element, pugi::xml_attribute attribute, const char* name, std::string_view text)
{
    if (!attribute) attribute = element.append_attribute(name);
    if (!attribute || !attribute.set_value(text.data(), text.size())) throw std::bad_alloc();
}

/// The text of an attribute as checked UTF-8, in `buffer` where it is not that already. False when XML cannot hold it.
bool CheckedText(const XMLAttribute& attribute, std::string& buffer, std::string_view& text)
{
    if (const auto* utf8 = std::get_if<std::string_view>(&attribute.value)) {
        text = *utf8;
        return IsXmlUtf8(text);
    }
    if (!ToXmlUtf8(std::get<std::u16string_view>(attribute.value), buffer)) return false;
    text = buffer;
    return true;
}

} // namespace

void RemoveAttribute(DomTree& tree, pugi::xml_node element, pugi::xml_attribute attribute)
{
    if (DomObject* object = tree.Find({element, attribute})) {
        pugi::xml_node holder = tree.NewNode(pugi::node_element);
        object->MoveTo({holder, holder.append_copy(attribute)});
    }
    element.remove_attribute(attribute);
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
        const std::string text = XmlTextOf(value);
        SetAttribute(m_place.node, m_place.node.attribute(checked.c_str()), checked.c_str(), text);
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
            const Terminated name(next.name);
            inOrder = inOrder && last < next.name;
            const pugi::xml_attribute known = inOrder ? pugi::xml_attribute() : m_place.node.attribute(name.Get());
            SetAttribute(m_place.node, known, name.Get(), text);
            last = next.name;
        }
        return S_OK;
    });
}

} // namespace kv
