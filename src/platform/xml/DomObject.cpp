#include "platform/xml/DomObject.h"

#include "platform/automation/SafeArray.h"
#include "platform/xml/DomDocumentObject.h"
#include "platform/xml/DomLists.h"
#include "platform/xml/DomNodes.h"
#include "platform/xml/DomTypes.h"
#include "platform/xml/XPath.h"
#include "platform/xml/XmlText.h"
#include "platform/xml/XmlWriter.h"

namespace kv {
namespace {

constexpr std::string_view kDataType = "dt:dt";
constexpr std::string_view kDataTypeNamespace = "urn:schemas-microsoft-com:datatypes";

bool IsText(pugi::xml_node node)
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

void AppendText(pugi::xml_node node, std::string& text)
{
    if (IsText(node)) text += node.value();
    for (pugi::xml_node child : node.children())
        AppendText(child, text);
}

/// Copies a node without its children from any tree.
void CopyShallow(pugi::xml_node from, pugi::xml_node to)
{
    bool copied = true;
    if (*from.name()) copied = to.set_name(from.name());
    if (*from.value()) copied = to.set_value(from.value()) && copied;
    for (pugi::xml_attribute attribute : from.attributes())
        copied = to.append_copy(attribute) && copied;
    if (!copied) throw std::bad_alloc();
}

void CopyChildren(pugi::xml_node from, pugi::xml_node to)
{
    for (pugi::xml_node child : from.children()) {
        if (!to.append_copy(child)) throw std::bad_alloc();
    }
}

} // namespace

DomObject::DomObject(std::shared_ptr<DomTree> tree, DomPlace place, DomDocument* document)
    : m_tree(std::move(tree)), m_place(place), m_document(document)
{
    if (document) m_tree->Add(m_place, *this);
}

DomObject::~DomObject()
{
    if (m_document) m_tree->Forget(m_place);
}

DomDocument* DomObject::Document() const
{
    return m_document.Get();
}

void DomObject::SetTree(std::shared_ptr<DomTree> tree)
{
    m_tree = std::move(tree);
    m_place = {m_tree->Document(), {}};
}

ComPtr<IXMLDOMNode> DomObject::ObjectFor(const DomPlace& place)
{
    if (!place.node) return nullptr;
    if (DomObject* object = m_tree->Find(place)) return object->Node();
    if (place.node.type() == pugi::node_document) {
        // A document that was loaded anew is no longer the parent of its old nodes.
        DomDocument* document = Document();
        return &document->Tree() == m_tree.get() ? ComPtr<IXMLDOMNode>(document) : nullptr;
    }
    if (place.node.type() == pugi::node_element && !place.attribute) {
        return Make<DomElement>(m_tree, place, Document());
    }
    return Make<DomLeaf>(m_tree, place, Document());
}

HRESULT DomObject::Hand(pugi::xml_node node, IXMLDOMNode** out)
{
    return Guarded([&] {
        if (!out) return E_POINTER;
        *out = ObjectFor({node, {}}).Detach();
        return *out ? S_OK : S_FALSE;
    });
}

DomPlace DomObject::CopyOf(const DomPlace& source, bool deep)
{
    pugi::xml_node copy = m_tree->NewNode(source.attribute ? pugi::node_element : source.node.type());
    if (source.attribute) return {copy, copy.append_copy(source.attribute)};
    CopyShallow(source.node, copy);
    if (deep) CopyChildren(source.node, copy);
    return {copy, {}};
}

void DomObject::MoveTo(const DomPlace& place)
{
    const DomPlace from = std::exchange(m_place, place);
    m_tree->Replace(from, place, *this);
    // The holder of an attribute that had no element has served.
    if (from.node.parent() == m_tree->Nursery()) m_tree->Detach(from.node);
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
        SetPlainText(XmlTextOf(value));
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

HRESULT DomObject::Parent(IXMLDOMNode** parent)
{
    return Hand(IsAttribute() ? pugi::xml_node() : m_tree->Parent(m_place.node), parent);
}

HRESULT DomObject::Children(IXMLDOMNodeList** children)
{
    return Guarded([&] {
        if (!children) return E_POINTER;
        *children = nullptr;
        std::vector<DomPlace> places;
        if (!IsAttribute()) {
            for (pugi::xml_node child : m_place.node.children()) {
                if (!m_tree->IsHidden(child)) places.push_back({child, {}});
            }
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

HRESULT DomObject::CheckInDocument(pugi::xml_node child, pugi::xml_node before) const
{
    if (IsText(child)) return E_INVALIDARG;
    pugi::xml_node first;
    for (pugi::xml_node sibling : m_place.node.children()) {
        if (sibling == child || m_tree->IsHidden(sibling)) continue;
        if (!first) first = sibling;
        if (child.type() == pugi::node_element && sibling.type() == pugi::node_element) return E_INVALIDARG;
    }
    // Nothing stands before the declaration, and it stands nowhere else.
    const bool becomesFirst = !first || before == first;
    return IsDeclaration(becomesFirst ? first : child) ? E_INVALIDARG : S_OK;
}

HRESULT DomObject::CheckInsertion(const DomObject& child, pugi::xml_node before) const
{
    const pugi::xml_node_type parentType = m_place.node.type();
    const pugi::xml_node node = child.m_place.node;
    if (IsAttribute() || child.IsAttribute() || &child.Tree() != m_tree.get()) return E_INVALIDARG;
    if (parentType != pugi::node_element && parentType != pugi::node_document) return E_INVALIDARG;
    if (node.type() == pugi::node_document) return E_INVALIDARG;
    if (node == m_place.node) return E_INVALIDARG;
    // A node without children stands above nothing.
    for (pugi::xml_node above = m_place.node; above && node.first_child(); above = above.parent()) {
        if (above == node) return E_INVALIDARG;
    }
    if (parentType == pugi::node_document) {
        const HRESULT allowed = CheckInDocument(node, before);
        if (FAILED(allowed)) return allowed;
    } else if (IsDeclaration(node)) {
        return E_INVALIDARG;
    }
    // The nursery counts as a level, which makes the bound for detached parts one lower.
    return DepthOf(m_place.node) + HeightOf(node) > kMaxXmlDepth ? E_INVALIDARG : S_OK;
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
            const HRESULT allowed = CheckInsertion(*object, next);
            if (FAILED(allowed)) return allowed;
            m_tree->Move(object->m_place.node, m_place.node, next);
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
        // The place is taken by the newcomer only when it may stand there.
        const pugi::xml_node next = m_tree->Visible(leaving->m_place.node.next_sibling());
        m_tree->Detach(leaving->m_place.node);
        const pugi::xml_node anchor = next == object->m_place.node ? m_tree->Visible(next.next_sibling()) : next;
        const HRESULT allowed = CheckInsertion(*object, anchor);
        if (FAILED(allowed)) {
            m_tree->Move(leaving->m_place.node, m_place.node, next);
            return allowed;
        }
        m_tree->Move(object->m_place.node, m_place.node, anchor);
        return replaced ? ComPtr<IXMLDOMNode>(old).CopyTo(replaced) : S_OK;
    });
}

HRESULT DomObject::RemoveChild(IXMLDOMNode* child, IXMLDOMNode** removed)
{
    return Guarded([&] {
        if (removed) *removed = nullptr;
        DomObject* object = ObjectOf(child);
        if (!object || object->IsAttribute() || object->m_place.node.parent() != m_place.node) return E_INVALIDARG;
        m_tree->Detach(object->m_place.node);
        return removed ? ComPtr<IXMLDOMNode>(child).CopyTo(removed) : S_OK;
    });
}

HRESULT DomObject::OwnerDocument(IXMLDOMDocument** document) const
{
    if (!document) return E_POINTER;
    *document = nullptr;
    return m_document ? ComPtr<IXMLDOMDocument>(m_document.Get()).CopyTo(document) : S_FALSE;
}

HRESULT DomObject::Clone(bool deep, IXMLDOMNode** copy)
{
    return Guarded([&] {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        if (!IsAttribute() && m_place.node.type() == pugi::node_document) {
            const auto document = Make<DomDocument>();
            if (deep) {
                for (pugi::xml_node child : m_place.node.children()) {
                    if (m_tree->IsHidden(child)) continue;
                    if (!document->Tree().Document().append_copy(child)) throw std::bad_alloc();
                }
            }
            return ComPtr<IXMLDOMNode>(document->Node()).CopyTo(copy);
        }
        return ObjectFor(CopyOf(m_place, deep)).CopyTo(copy);
    });
}

std::string DomObject::PlainText() const
{
    if (IsAttribute()) return m_place.attribute.value();
    switch (m_place.node.type()) {
    case pugi::node_element: {
        std::string text;
        AppendText(m_place.node, text);
        return text;
    }
    case pugi::node_document: {
        std::string text;
        for (pugi::xml_node child : m_place.node.children()) {
            if (!m_tree->IsHidden(child)) AppendText(child, text);
        }
        return text;
    }
    default:
        return m_place.node.value();
    }
}

void DomObject::SetPlainText(const std::string& text)
{
    bool set = false;
    if (pugi::xml_attribute attribute = m_place.attribute) {
        set = attribute.set_value(text.c_str());
    } else {
        const pugi::xml_node_type type = m_place.node.type();
        pugi::xml_node node = m_place.node;
        const bool badComment = type == pugi::node_comment && !IsXmlComment(text);
        const bool badInstruction = type == pugi::node_pi && !IsXmlInstruction(node.name(), text);
        if (badComment || badInstruction) throw Error(E_INVALIDARG);
        set = node.set_value(text.c_str());
    }
    if (!set) throw std::bad_alloc();
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
        const std::string plain = XmlTextOf(text);
        if (IsAttribute() || m_place.node.type() != pugi::node_element) {
            if (!IsAttribute() && m_place.node.type() == pugi::node_document) return E_FAIL;
            SetPlainText(plain);
            return S_OK;
        }
        while (const pugi::xml_node child = m_place.node.first_child())
            m_tree->Detach(child);
        if (plain.empty()) return S_OK;
        pugi::xml_node content = m_place.node.append_child(pugi::node_pcdata);
        return content && content.set_value(plain.c_str()) ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT DomObject::DataType(VARIANT* type) const
{
    return Guarded([&] {
        if (!type) return E_POINTER;
        VariantInit(type);
        type->vt = VT_NULL;
        const pugi::xml_attribute attribute =
            IsAttribute() ? pugi::xml_attribute() : m_place.node.attribute(kDataType.data());
        if (!attribute) return S_FALSE;
        *type = Variant(ToUtf16(attribute.value())).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SetDataType(BSTR type)
{
    return Guarded([&] {
        const std::string name = ToUtf8(View(type));
        if (IsAttribute() || m_place.node.type() != pugi::node_element || !IsDataType(name)) return E_INVALIDARG;
        pugi::xml_node node = m_place.node;
        pugi::xml_attribute attribute = node.attribute(kDataType.data());
        if (!attribute) {
            bool declared = false;
            for (pugi::xml_node above = node; above; above = above.parent()) {
                declared = declared || above.attribute("xmlns:dt");
            }
            if (!declared) node.append_attribute("xmlns:dt").set_value(kDataTypeNamespace.data());
            attribute = node.append_attribute(kDataType.data());
        }
        return attribute.set_value(name.c_str()) ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT DomObject::TypedValue(VARIANT* value) const
{
    return Guarded([&] {
        if (!value) return E_POINTER;
        VariantInit(value);
        const std::string_view type = IsAttribute() ? "" : m_place.node.attribute(kDataType.data()).value();
        *value = ParseTyped(type, PlainText()).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SetTypedValue(const VARIANT& value)
{
    return Guarded([&] {
        const std::string type = IsAttribute() ? "" : m_place.node.attribute(kDataType.data()).value();
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
        } else {
            WriteXml(m_place.node, m_tree->Nursery(), append);
        }
        *xml = Bstr(ToUtf16(text)).Detach();
        return S_OK;
    });
}

HRESULT DomObject::SelectNodes(BSTR expression, IXMLDOMNodeList** nodes)
{
    return Guarded([&] {
        if (!nodes) return E_POINTER;
        *nodes = nullptr;
        const std::vector<DomPlace> places = SelectPlaces(*m_tree, m_place, XmlTextOf(expression));
        return ComPtr<IXMLDOMNodeList>(Make<DomNodeList>(*this, places)).CopyTo(nodes);
    });
}

HRESULT DomObject::SelectSingleNode(BSTR expression, IXMLDOMNode** node)
{
    return Guarded([&] {
        if (!node) return E_POINTER;
        *node = nullptr;
        const std::vector<DomPlace> places = SelectPlaces(*m_tree, m_place, XmlTextOf(expression));
        if (places.empty()) return S_FALSE;
        return ObjectFor(places.front()).CopyTo(node);
    });
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

pugi::xml_attribute AttributeOf(pugi::xml_node element, BSTR name)
{
    const std::string utf8 = ToUtf8(View(name));
    return IsXmlName(utf8) ? element.attribute(utf8.c_str()) : pugi::xml_attribute();
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
