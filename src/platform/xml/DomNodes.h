#pragma once
// The interface objects of nodes.

#include "platform/xml/DomObject.h"

namespace kv {

/// Implements IXMLDOMNode, as `Interface` extends it, over a DomObject.
template <class Interface, class... More>
class DomNodeOf : public Object<Interface, IDomObject, More...>, public DomObject {
public:
    using DomObject::DomObject;

    DomObject& Self() final { return *this; }
    IXMLDOMNode* Node() final { return this; }
    ComPtr<IXMLDOMNode> IfAlive() final { return this->AddRefIfAlive() ? ComPtr<IXMLDOMNode>::Attach(this) : nullptr; }

    HRESULT get_nodeName(BSTR* name) final { return NodeName(name); }
    HRESULT get_nodeValue(VARIANT* value) final { return NodeValue(value); }
    HRESULT put_nodeValue(VARIANT value) final { return SetNodeValue(value); }
    HRESULT get_nodeType(DOMNodeType* type) final { return NodeType(type); }
    HRESULT get_parentNode(IXMLDOMNode** parent) final { return Parent(parent); }
    HRESULT get_childNodes(IXMLDOMNodeList** children) final { return Children(children); }
    HRESULT get_firstChild(IXMLDOMNode** child) final
    {
        return Hand(IsAttribute() ? pugi::xml_node() : m_place.node.first_child(), child);
    }
    HRESULT get_lastChild(IXMLDOMNode** child) final
    {
        return Hand(IsAttribute() ? pugi::xml_node() : m_place.node.last_child(), child);
    }
    HRESULT get_previousSibling(IXMLDOMNode** sibling) final
    {
        return Hand(IsAttribute() ? pugi::xml_node() : m_place.node.previous_sibling(), sibling);
    }
    HRESULT get_nextSibling(IXMLDOMNode** sibling) final
    {
        return Hand(IsAttribute() ? pugi::xml_node() : m_place.node.next_sibling(), sibling);
    }
    HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) final { return Attributes(attributes); }
    HRESULT insertBefore(IXMLDOMNode* child, VARIANT reference, IXMLDOMNode** inserted) final
    {
        return Insert(child, ObjectIn(reference), inserted);
    }
    HRESULT replaceChild(IXMLDOMNode* child, IXMLDOMNode* old, IXMLDOMNode** replaced) final
    {
        return ReplaceChild(child, old, replaced);
    }
    HRESULT removeChild(IXMLDOMNode* child, IXMLDOMNode** removed) final { return RemoveChild(child, removed); }
    HRESULT appendChild(IXMLDOMNode* child, IXMLDOMNode** appended) final { return Insert(child, nullptr, appended); }
    HRESULT hasChildNodes(VARIANT_BOOL* has) final
    {
        if (!has) return E_POINTER;
        *has = !IsAttribute() && m_place.node.first_child() ? VARIANT_TRUE : VARIANT_FALSE;
        return *has ? S_OK : S_FALSE;
    }
    HRESULT get_ownerDocument(IXMLDOMDocument** document) final { return OwnerDocument(document); }
    HRESULT cloneNode(VARIANT_BOOL deep, IXMLDOMNode** copy) final { return Clone(deep != VARIANT_FALSE, copy); }
    HRESULT get_text(BSTR* text) final { return Text(text); }
    HRESULT put_text(BSTR text) final { return SetText(text); }
    HRESULT get_nodeTypedValue(VARIANT* value) final { return TypedValue(value); }
    HRESULT put_nodeTypedValue(VARIANT value) final { return SetTypedValue(value); }
    HRESULT get_dataType(VARIANT* type) final { return DataType(type); }
    HRESULT put_dataType(BSTR type) final { return SetDataType(type); }
    HRESULT get_xml(BSTR* xml) final { return Xml(xml); }
    HRESULT selectNodes(BSTR expression, IXMLDOMNodeList** nodes) final { return SelectNodes(expression, nodes); }
    HRESULT selectSingleNode(BSTR expression, IXMLDOMNode** node) final { return SelectSingleNode(expression, node); }

private:
    void FinalRelease() final
    {
        if (m_home.document) Tree().Forget(*this);
    }
};

/// Texts, comments, instructions and attributes.
using DomLeaf = DomNodeOf<IXMLDOMNode>;

class DomElement final : public DomNodeOf<IXMLDOMElement, IXMLElementAttributes> {
public:
    using DomNodeOf::DomNodeOf;

    HRESULT get_tagName(BSTR* name) override { return NodeName(name); }
    HRESULT getAttribute(BSTR name, VARIANT* value) override;
    HRESULT setAttribute(BSTR name, VARIANT value) override;
    HRESULT removeAttribute(BSTR name) override;
    HRESULT getElementsByTagName(BSTR name, IXMLDOMNodeList** nodes) override;

    HRESULT ElementName(std::string_view* name) override;
    HRESULT ReadAttributes(XMLAttributeVisitor* visitor) override;
    HRESULT WriteAttributes(XMLAttributeSource* source) override;
};

} // namespace kv
