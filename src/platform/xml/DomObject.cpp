#include "platform/xml/DomObject.h"

#include "platform/xml/DataTypes.h"
#include "platform/xml/DomDocumentObject.h"
#include "platform/xml/DomEdit.h"
#include "platform/xml/DomLists.h"
#include "platform/xml/DomNodes.h"
#include "platform/xml/XPath.h"
#include "platform/xml/XmlChecker.h"
#include "platform/xml/XmlText.h"
#include "platform/xml/XmlWriter.h"

namespace kv {
ComPtr<IXMLDOMNode> DomObject::ObjectFor(const DomPlace& place) const
{
    if (!place.node) return nullptr;
    if (!place.attribute && place.node.type() == pugi::node_document)
        return Tree().IsDocument() ? ComPtr<IXMLDOMNode>(Document()) : nullptr;
    return m_home.tree->ObjectAt(place, Document());
}

HRESULT DomObject::Hand(pugi::xml_node node, IXMLDOMNode** out) const
{
    return Guarded([&] {
        if (!out) return E_POINTER;
        *out = nullptr;
        *out = ObjectFor({node, {}}).Detach();
        return *out ? S_OK : S_FALSE;
    });
}

HRESULT DomObject::NodeName(BSTR* name) const
{
    return Guarded([&] {
        if (!name) return E_POINTER;
        *name = nullptr;
        const auto text = [&]() -> std::string_view {
            if (IsAttribute()) return m_place.attribute.name();
            switch (m_place.node.type()) {
            case pugi::node_document:
                return "#document";
            case pugi::node_pcdata:
                return "#text";
            case pugi::node_cdata:
                return "#cdata-section";
            case pugi::node_comment:
                return "#comment";
            default:
                return m_place.node.name();
            }
        };
        *name = Bstr(ToUtf16(text())).Detach();
        return S_OK;
    });
}

HRESULT DomObject::NodeValue(VARIANT* value) const
{
    return Guarded([&] {
        if (!value) return E_POINTER;
        VariantInit(value);
        const pugi::xml_node_type type = m_place.node.type();
        if (!IsAttribute() && (type == pugi::node_element || type == pugi::node_document)) {
            value->vt = VT_NULL;
            return S_FALSE;
        }
        *value = Variant(ToUtf16(PlainText())).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SetNodeValue(const VARIANT& value)
{
    return Guarded([&] {
        const pugi::xml_node_type type = m_place.node.type();
        if (!IsAttribute() && (type == pugi::node_element || type == pugi::node_document)) return E_FAIL;
        WriteText(XmlTextOf(value));
        return S_OK;
    });
}

HRESULT DomObject::NodeType(DOMNodeType* type) const
{
    if (!type) return E_POINTER;
    if (IsAttribute()) {
        *type = NODE_ATTRIBUTE;
        return S_OK;
    }
    switch (m_place.node.type()) {
    case pugi::node_element:
        *type = NODE_ELEMENT;
        break;
    case pugi::node_pcdata:
        *type = NODE_TEXT;
        break;
    case pugi::node_cdata:
        *type = NODE_CDATA_SECTION;
        break;
    case pugi::node_comment:
        *type = NODE_COMMENT;
        break;
    case pugi::node_document:
        *type = NODE_DOCUMENT;
        break;
    default:
        *type = NODE_PROCESSING_INSTRUCTION;
    }
    return S_OK;
}

HRESULT DomObject::Parent(IXMLDOMNode** parent) const
{
    return Hand(IsAttribute() ? pugi::xml_node() : m_place.node.parent(), parent);
}

HRESULT DomObject::Children(IXMLDOMNodeList** children) const
{
    return Guarded([&] {
        if (!children) return E_POINTER;
        *children = nullptr;
        std::vector<DomPlace> places;
        if (!IsAttribute()) {
            for (pugi::xml_node child : m_place.node.children())
                places.push_back({child, {}});
        }
        return ComPtr<IXMLDOMNodeList>(Make<DomNodeList>(*this, places)).CopyTo(children);
    });
}

HRESULT DomObject::Attributes(IXMLDOMNamedNodeMap** attributes)
{
    return Guarded([&] {
        if (!attributes) return E_POINTER;
        *attributes = nullptr;
        if (IsAttribute() || m_place.node.type() != pugi::node_element) return S_FALSE;
        return ComPtr<IXMLDOMNamedNodeMap>(Make<DomNamedNodeMap>(*this)).CopyTo(attributes);
    });
}

HRESULT DomObject::CheckInDocument(pugi::xml_node child, pugi::xml_node before, pugi::xml_node leaving) const
{
    if (IsText(child)) return E_INVALIDARG;
    pugi::xml_node first;
    for (pugi::xml_node sibling : m_place.node.children()) {
        if (sibling == child || sibling == leaving) continue;
        if (!first) first = sibling;
        if (child.type() == pugi::node_element && sibling.type() == pugi::node_element) return E_INVALIDARG;
    }
    // Nothing stands before the declaration, and it stands nowhere else.
    const bool becomesFirst = !first || before == first;
    return IsDeclaration(becomesFirst ? first : child) ? E_INVALIDARG : S_OK;
}

HRESULT DomObject::CheckInsertion(const DomObject& child, pugi::xml_node before, pugi::xml_node leaving) const
{
    const pugi::xml_node_type parentType = m_place.node.type();
    const pugi::xml_node node = child.m_place.node;
    if (IsAttribute() || child.IsAttribute()) return E_INVALIDARG;
    if (parentType != pugi::node_element && parentType != pugi::node_document) return E_INVALIDARG;
    if (node.type() == pugi::node_document) return E_INVALIDARG;
    if (node == m_place.node) return E_INVALIDARG;
    // A node without children stands above nothing.
    for (pugi::xml_node above = m_place.node; above && node.first_child(); above = above.parent()) {
        if (above == node) return E_INVALIDARG;
    }
    if (parentType == pugi::node_document) {
        const HRESULT allowed = CheckInDocument(node, before, leaving);
        if (FAILED(allowed)) return allowed;
    } else if (IsDeclaration(node)) {
        return E_INVALIDARG;
    }
    return DepthOf(m_place.node) + HeightOf(node) > kMaxXmlDepth ? E_INVALIDARG : S_OK;
}

void DomObject::Take(DomObject& child, pugi::xml_node before)
{
    pugi::xml_node parent = m_place.node;
    const pugi::xml_node node = child.m_place.node;
    if (&child.Tree() != &Tree()) {
        Tree().Adopt(child.Tree(), node, Document(), parent, before);
    } else if (before) {
        parent.insert_move_before(node, before);
    } else {
        parent.append_move(node);
    }
}

HRESULT DomObject::Insert(IXMLDOMNode* child, IUnknown* before, IXMLDOMNode** inserted)
{
    return Guarded([&] {
        if (inserted) *inserted = nullptr;
        DomObject* object = ObjectOf(child);
        DomObject* reference = ObjectOf(before);
        if (!object || (before && !reference)) return E_INVALIDARG;
        if (reference && (reference->IsAttribute() || reference->m_place.node.parent() != m_place.node))
            return E_INVALIDARG;
        const pugi::xml_node next = reference ? reference->m_place.node : pugi::xml_node();
        if (object != reference) {
            const HRESULT allowed = CheckInsertion(*object, next, {});
            if (FAILED(allowed)) return allowed;
            Take(*object, next);
        }
        return inserted ? ComPtr<IXMLDOMNode>(child).CopyTo(inserted) : S_OK;
    });
}

HRESULT DomObject::ReplaceChild(IXMLDOMNode* child, IXMLDOMNode* old, IXMLDOMNode** replaced)
{
    return Guarded([&] {
        if (replaced) *replaced = nullptr;
        DomObject* object = ObjectOf(child);
        DomObject* leaving = ObjectOf(old);
        if (!object || !leaving || leaving->IsAttribute() || leaving->m_place.node.parent() != m_place.node)
            return E_INVALIDARG;
        if (object == leaving) return S_OK;
        const pugi::xml_node place = leaving->m_place.node;
        pugi::xml_node next = place.next_sibling();
        if (next == object->m_place.node) next = next.next_sibling();
        const HRESULT allowed = CheckInsertion(*object, next, place);
        if (FAILED(allowed)) return allowed;
        Take(*object, place);
        Detach(leaving->m_place);
        return replaced ? ComPtr<IXMLDOMNode>(old).CopyTo(replaced) : S_OK;
    });
}

HRESULT DomObject::RemoveChild(IXMLDOMNode* child, IXMLDOMNode** removed)
{
    return Guarded([&] {
        if (removed) *removed = nullptr;
        DomObject* object = ObjectOf(child);
        if (!object || object->IsAttribute() || object->m_place.node.parent() != m_place.node) return E_INVALIDARG;
        Detach(object->m_place);
        return removed ? ComPtr<IXMLDOMNode>(child).CopyTo(removed) : S_OK;
    });
}

HRESULT DomObject::OwnerDocument(IXMLDOMDocument** document) const
{
    if (!document) return E_POINTER;
    *document = nullptr;
    return m_home.document ? m_home.document.CopyTo(document) : S_FALSE;
}

HRESULT DomObject::Clone(bool deep, IXMLDOMNode** copy) const
{
    return Guarded([&] {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        if (IsAttribute() || m_place.node.type() != pugi::node_document)
            return CopyFor(Document(), m_place, deep).CopyTo(copy);
        const auto document = Make<DomDocument>();
        if (deep) {
            for (pugi::xml_node child : m_place.node.children())
                document->Tree().Copy({child, {}}, true);
        }
        return ComPtr<IXMLDOMNode>(document->Node()).CopyTo(copy);
    });
}

std::string DomObject::PlainText() const
{
    if (IsAttribute()) return m_place.attribute.value();
    std::string buffer;
    return std::string(TextOf(m_place.node, buffer));
}

void DomObject::WriteText(const std::string& text)
{
    pugi::xml_attribute attribute = m_place.attribute;
    pugi::xml_node node = m_place.node;
    const pugi::xml_node_type type = node.type();
    if (!attribute && type == pugi::node_document) throw Error(E_FAIL);
    if (!attribute && type == pugi::node_element) return Tree().SetContent(node, text, Document());
    const bool badComment = type == pugi::node_comment && !IsXmlComment(text);
    const bool badInstruction = type == pugi::node_pi && !IsXmlInstruction(node.name(), text);
    if (badComment || badInstruction) throw Error(E_INVALIDARG);
    if (!(attribute ? attribute.set_value(text.c_str()) : node.set_value(text.c_str()))) throw std::bad_alloc();
}

HRESULT DomObject::Text(BSTR* text) const
{
    return Guarded([&] {
        if (!text) return E_POINTER;
        *text = nullptr;
        *text = Bstr(ToUtf16(PlainText())).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SetText(BSTR text)
{
    return Guarded([&] {
        WriteText(XmlTextOf(text));
        return S_OK;
    });
}

HRESULT DomObject::DataType(VARIANT* type) const
{
    return Guarded([&] {
        if (!type) return E_POINTER;
        VariantInit(type);
        type->vt = VT_NULL;
        const pugi::xml_attribute attribute =
            IsAttribute() ? pugi::xml_attribute() : m_place.node.attribute(kDataTypeAttribute);
        if (!attribute) return S_FALSE;
        *type = Variant(ToUtf16(attribute.value())).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SetDataType(BSTR type)
{
    return Guarded([&] {
        const std::string name = ToUtf8(View(type));
        if (IsAttribute() || m_place.node.type() != pugi::node_element || DataTypeOf(name) == VT_EMPTY)
            return E_INVALIDARG;
        SetAttribute(m_place.node, kDataTypeAttribute, name);
        return S_OK;
    });
}

HRESULT DomObject::TypedValue(VARIANT* value) const
{
    return Guarded([&] {
        if (!value) return E_POINTER;
        VariantInit(value);
        const bool isElement = !IsAttribute() && m_place.node.type() == pugi::node_element;
        const std::string_view type = isElement ? m_place.node.attribute(kDataTypeAttribute).value() : "string";
        *value = ParseTyped(type, PlainText()).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SetTypedValue(const VARIANT& value)
{
    return Guarded([&] {
        const std::string type = IsAttribute() ? "" : m_place.node.attribute(kDataTypeAttribute).value();
        return SetText(Bstr(FormatTyped(type, value)).Get());
    });
}

HRESULT DomObject::Xml(BSTR* xml) const
{
    return Guarded([&] {
        if (!xml) return E_POINTER;
        *xml = nullptr;
        std::string text;
        const auto append = [&text](std::string_view piece) { text += piece; };
        if (IsAttribute()) {
            WriteXml(m_place.attribute, append);
        } else if (!WriteXml(m_place.node, false, append)) {
            text.clear();
            WriteXml(m_place.node, true, append);
        }
        *xml = Bstr(ToUtf16(text)).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SelectNodes(BSTR expression, IXMLDOMNodeList** nodes) const
{
    return Guarded([&] {
        if (!nodes) return E_POINTER;
        *nodes = nullptr;
        const std::vector<DomPlace> places = SelectPlaces(Tree(), m_place, XmlTextOf(expression));
        return ComPtr<IXMLDOMNodeList>(Make<DomNodeList>(*this, places)).CopyTo(nodes);
    });
}

HRESULT DomObject::SelectSingleNode(BSTR expression, IXMLDOMNode** node) const
{
    return Guarded([&] {
        if (!node) return E_POINTER;
        *node = nullptr;
        *node = ObjectFor(SelectFirst(Tree(), m_place, XmlTextOf(expression))).Detach();
        return *node ? S_OK : S_FALSE;
    });
}

ComPtr<IXMLDOMNode> CopyFor(IXMLDOMDocument* document, const DomPlace& place, bool deep)
{
    const auto tree = std::make_shared<DomTree>();
    return tree->ObjectAt(tree->Copy(place, deep), document);
}

DomObject* ObjectOf(IUnknown* node)
{
    const auto object = Query<IDomObject>(node);
    return object ? &object->Self() : nullptr;
}

IUnknown* ObjectIn(const VARIANT& value)
{
    return value.vt == VT_UNKNOWN || value.vt == VT_DISPATCH ? value.punkVal : nullptr;
}

std::string XmlTextOf(BSTR text)
{
    std::string utf8;
    if (!ToXmlUtf8(View(text), utf8)) throw Error(E_INVALIDARG);
    return utf8;
}

std::string XmlTextOf(const VARIANT& value)
{
    if (value.vt == VT_BSTR) return XmlTextOf(value.bstrVal);
    if (value.vt == VT_EMPTY || value.vt == VT_NULL) return {};
    Variant text;
    ThrowIfFailed(VariantChangeType(&text, &value, 0, VT_BSTR));
    return XmlTextOf(text.bstrVal);
}

std::string XmlNameOf(BSTR name)
{
    std::string utf8;
    if (!ToXmlUtf8(View(name), utf8) || !IsXmlName(utf8)) throw Error(E_INVALIDARG);
    return utf8;
}

} // namespace kv
