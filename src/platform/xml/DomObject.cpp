#include "platform/xml/DomObject.h"

#include "platform/automation/SafeArray.h"
#include "platform/xml/DomDocumentObject.h"
#include "platform/xml/DomLists.h"
#include "platform/xml/DomNodes.h"
#include "platform/xml/DomTypes.h"
#include "platform/xml/XmlText.h"
#include "platform/xml/XmlWriter.h"

#include <cstring>

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

/// What a declaration says, as the data of an instruction.
std::string DeclarationData(pugi::xml_node declaration)
{
    std::string data;
    for (pugi::xml_attribute attribute : declaration.attributes()) {
        if (!data.empty()) data += ' ';
        data.append(attribute.name()).append("=\"").append(attribute.value()).append(1, '"');
    }
    return data;
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
    if (m_tree->IsDetached(from.node)) m_tree->Detach(from.node);
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

HRESULT DomObject::CheckInsertion(const DomObject& child) const
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
        if (IsText(node)) return E_INVALIDARG;
        for (pugi::xml_node sibling : m_place.node.children()) {
            const bool isRoot = sibling.type() == pugi::node_element && !m_tree->IsHidden(sibling);
            if (node.type() == pugi::node_element && isRoot && sibling != node) return E_INVALIDARG;
        }
    }
    // The nursery counts as a level, which makes the bound for detached parts one lower.
    return DepthOf(m_place.node) + HeightOf(node) > kMaxXmlDepth ? E_INVALIDARG : S_OK;
}

HRESULT DomObject::Insert(IXMLDOMNode* child, IXMLDOMNode* before, IXMLDOMNode** inserted)
{
    return Guarded([&] {
        if (inserted) *inserted = nullptr;
        DomObject* object = ObjectOf(child);
        DomObject* reference = ObjectOf(before);
        if (!object || (before && !reference)) return E_INVALIDARG;
        const HRESULT allowed = CheckInsertion(*object);
        if (FAILED(allowed)) return allowed;
        if (reference && (reference->IsAttribute() || reference->m_place.node.parent() != m_place.node))
            return E_INVALIDARG;

        pugi::xml_node target = m_place.node;
        if (!reference && target.type() == pugi::node_document) {
            target.insert_move_before(object->m_place.node, m_tree->Nursery());
        } else if (!reference) {
            target.append_move(object->m_place.node);
        } else if (reference != object) {
            target.insert_move_before(object->m_place.node, reference->m_place.node);
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
        pugi::xml_node parent = m_place.node;
        const pugi::xml_node next = leaving->m_place.node.next_sibling();
        m_tree->Detach(leaving->m_place.node);
        const HRESULT allowed = CheckInsertion(*object);
        if (FAILED(allowed)) {
            next ? parent.insert_move_before(leaving->m_place.node, next) : parent.append_move(leaving->m_place.node);
            return allowed;
        }
        const pugi::xml_node anchor = next == object->m_place.node ? next.next_sibling() : next;
        anchor ? parent.insert_move_before(object->m_place.node, anchor) : parent.append_move(object->m_place.node);
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
                    if (!m_tree->IsHidden(child)) document->Tree().Document().append_copy(child);
                }
                document->Tree().PlaceNursery();
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
    case pugi::node_declaration:
        return DeclarationData(m_place.node);
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
        const bool badComment = type == pugi::node_comment && (text.find("--") != text.npos || text.ends_with('-'));
        const bool badInstruction = type == pugi::node_pi && text.find("?>") != text.npos;
        if (badComment || badInstruction || type == pugi::node_declaration) throw Error(E_INVALIDARG);
        pugi::xml_node node = m_place.node;
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
        if (DepthOf(m_place.node) >= kMaxXmlDepth) return E_INVALIDARG;
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
        if (IsAttribute()) {
            text = std::string(m_place.attribute.name()) + "=\"" + m_place.attribute.value() + '"';
        } else {
            WriteXml(m_place.node, m_tree->Nursery(), [&](std::string_view piece) { text += piece; });
        }
        *xml = Bstr(ToUtf16(text)).Detach();
        return S_OK;
    });
}

pugi::xpath_node_set DomObject::Select(BSTR expression) const
{
    constexpr std::size_t kLongest = 4096;
    const std::string text = ToUtf8(View(expression));
    if (text.empty() || text.size() > kLongest) throw Error(E_INVALIDARG);
    try {
        pugi::xpath_node_set found = m_place.node.select_nodes(text.c_str());
        found.sort();
        return found;
    } catch (const pugi::xpath_exception&) {
        throw Error(E_INVALIDARG);
    }
}

HRESULT DomObject::SelectNodes(BSTR expression, IXMLDOMNodeList** nodes)
{
    return Guarded([&] {
        if (!nodes) return E_POINTER;
        *nodes = nullptr;
        const bool detached = m_tree->IsDetached(m_place.node);
        std::vector<DomPlace> places;
        for (const pugi::xpath_node& found : Select(expression)) {
            const pugi::xml_node node = found.attribute() ? found.parent() : found.node();
            // Detached parts are seen from within alone.
            if (m_tree->IsHidden(node) || (!detached && m_tree->IsDetached(node))) continue;
            places.push_back({node, found.attribute()});
        }
        return ComPtr<IXMLDOMNodeList>(Make<DomNodeList>(*this, places)).CopyTo(nodes);
    });
}

HRESULT DomObject::SelectSingleNode(BSTR expression, IXMLDOMNode** node)
{
    return Guarded([&] {
        if (!node) return E_POINTER;
        *node = nullptr;
        ComPtr<IXMLDOMNodeList> nodes;
        const HRESULT result = SelectNodes(expression, nodes.Put());
        return FAILED(result) ? result : nodes->get_item(0, node);
    });
}

DomObject* ObjectOf(IUnknown* node)
{
    const auto object = Query<IDomObject>(node);
    return object ? &object->Self() : nullptr;
}

ComPtr<IXMLDOMNode> NodeIn(const VARIANT& value)
{
    const bool holds = (value.vt == VT_UNKNOWN || value.vt == VT_DISPATCH) && value.punkVal;
    return holds ? Query<IXMLDOMNode>(value.punkVal) : nullptr;
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
