#include "platform/xml/Element.h"

#include "platform/automation/RealText.h"
#include "platform/xml/DataTypes.h"
#include "platform/xml/DomDocumentObject.h"
#include "platform/xml/DomEdit.h"
#include "platform/xml/NodeHandle.h"
#include "platform/xml/XmlText.h"

#include <cmath>
#include <iterator>

namespace kv {
namespace {

constexpr const char* kLabel = "Name";

void CheckText(std::string_view text)
{
    if (!IsXmlUtf8(text)) throw Error(E_INVALIDARG);
}

bool Matches(pugi::xml_node child, const XmlKey& key)
{
    return IsNamed(child, key.name) && (key.label.empty() || key.label == child.attribute(kLabel).value());
}

pugi::xml_node FindChild(pugi::xml_node parent, const XmlKey& key)
{
    pugi::xml_node child = parent.first_child();
    while (PointerOf(child) && !Matches(child, key))
        child = child.next_sibling();
    return child;
}

/// Adds a last child, with what is not empty of a data type and a text.
pugi::xml_node AddElement(DomObject& parent, const XmlKey& key, std::string_view type, std::string_view text)
{
    if (!IsXmlName(key.name)) throw Error(E_INVALIDARG);
    CheckText(key.label);
    CheckText(text);
    pugi::xml_node node = parent.Place().node;
    if (DepthOf(node) >= kMaxXmlDepth) throw Error(E_INVALIDARG);
    const pugi::xml_node element = AddNode(node, pugi::node_element, key.name, {});
    try {
        if (!key.label.empty()) AddAttribute(element, kLabel, key.label);
        if (!type.empty()) AddAttribute(element, kDataTypeAttribute, type);
        if (!text.empty()) AddNode(element, pugi::node_pcdata, {}, text);
    } catch (const std::bad_alloc&) {
        node.remove_child(element);
        throw;
    }
    return element;
}

/// Removes the matching children but one. False when there is none.
bool RemoveChildren(DomObject& parent, const XmlKey& key, pugi::xml_node but)
{
    bool removed = false;
    for (pugi::xml_node child = parent.Place().node.first_child(); child;) {
        const pugi::xml_node next = child.next_sibling();
        if (child != but && Matches(child, key)) {
            parent.Detach({child, {}});
            removed = true;
        }
        child = next;
    }
    return removed;
}

void WriteValue(DomObject& owner, pugi::xml_node element, const XmlValue& value)
{
    CheckText(value.Text());
    const pugi::xml_attribute type = element.attribute(kDataTypeAttribute);
    if (!value.Type().empty()) {
        SetAttribute(element, kDataTypeAttribute, value.Type());
    } else if (type) {
        owner.Detach({element, type});
    }
    owner.Tree().SetContent(element, value.Text(), owner.Document());
}

template <class Real>
std::string TextOfReal(Real value)
{
    if (!std::isfinite(value)) throw Error(DISP_E_TYPEMISMATCH);
    char digits[32];
    return {digits, PrintReal(digits, std::end(digits), value)};
}

} // namespace

XmlValue::XmlValue(LONG value) : m_type(DataTypeName(VT_I4)), m_text(std::to_string(value)) {}

XmlValue::XmlValue(ULONG value) : m_type(DataTypeName(VT_UI4)), m_text(std::to_string(value)) {}

XmlValue::XmlValue(float value) : m_type(DataTypeName(VT_R4)), m_text(TextOfReal(value)) {}

XmlValue::XmlValue(double value) : m_type(DataTypeName(VT_R8)), m_text(TextOfReal(value)) {}

XmlValue::XmlValue(std::u16string_view utf16) : m_type(DataTypeName(VT_BSTR))
{
    if (!ToXmlUtf8(utf16, m_text)) throw Error(E_INVALIDARG);
}

XmlValue::XmlValue(const VARIANT& value) : m_type(DataTypeName(value.vt))
{
    if (value.vt == VT_EMPTY || value.vt == VT_NULL) return;
    if (m_type.empty()) throw Error(DISP_E_TYPEMISMATCH);
    if (!ToXmlUtf8(FormatTyped(m_type, value), m_text)) throw Error(E_INVALIDARG);
}

XmlNode::XmlNode(IUnknown* node) : m_object(ObjectOf(node))
{
    if (!m_object || m_object->IsAttribute()) return;
    const pugi::xml_node place = m_object->Place().node;
    if (place.type() == pugi::node_element || kv::IsText(place)) m_node = m_object->Node();
}

DomObject& XmlNode::Object() const
{
    if (!m_node) throw Error(E_POINTER);
    return *m_object;
}

bool XmlNode::IsText() const
{
    return m_node && kv::IsText(m_object->Place().node);
}

std::string XmlNode::Text() const
{
    std::string buffer;
    return m_node ? std::string(TextOf(m_object->Place().node, buffer)) : buffer;
}

void XmlNode::SetText(std::string_view text)
{
    CheckText(text);
    Object().WriteText(std::string(text));
}

XmlElement XmlNode::Parent() const
{
    ComPtr<IXMLDOMNode> parent;
    if (m_node) parent = m_object->ObjectFor({m_object->Place().node.parent(), {}});
    return XmlElement(parent.Get());
}

void XmlNode::Remove()
{
    DomObject& object = Object();
    const bool isPart = !object.Tree().IsDocument() && object.Place().node.parent() == object.Tree().Root();
    if (!isPart) object.Detach(object.Place());
}

XmlElement::XmlElement(IUnknown* node) : XmlNode(node)
{
    if (IsText()) m_node.Reset();
}

XmlElement::XmlElement(ComPtr<IXMLDOMNode> element)
{
    if (!element) return;
    m_object = static_cast<DomElement*>(element.Get());
    m_node = std::move(element);
}

XmlElement XmlElement::New(std::string_view name)
{
    if (!IsXmlName(name)) throw Error(E_INVALIDARG);
    const auto tree = std::make_shared<DomTree>();
    const pugi::xml_node node = AddNode(tree->Root(), pugi::node_element, name, {});
    return XmlElement(tree->ObjectAt({node, {}}, Make<DomDocument>().Get()));
}

XmlElement XmlElement::Parse(std::string text)
{
    try {
        const auto tree = DomTree::Parse(text);
        const auto isElement = [](pugi::xml_node node) { return node.type() == pugi::node_element; };
        const pugi::xml_node root = tree->Root().find_child(isElement);
        while (root.previous_sibling())
            tree->Root().remove_child(root.previous_sibling());
        while (root.next_sibling())
            tree->Root().remove_child(root.next_sibling());
        return XmlElement(tree->ObjectAt({root, {}}, Make<DomDocument>().Get()));
    } catch (const XmlError&) {
        throw Error(E_INVALIDARG);
    }
}

XmlElement XmlElement::Copy() const
{
    return m_node ? XmlElement(CopyFor(Make<DomDocument>().Get(), m_object->Place(), true)) : XmlElement();
}

ComPtr<IXMLDOMElement> XmlElement::Element() const
{
    return static_cast<IXMLDOMElement*>(m_node.Get());
}

std::string_view XmlElement::Name() const
{
    return m_node ? std::string_view(m_object->Place().node.name()) : std::string_view();
}

std::string XmlElement::Markup() const
{
    return View().Markup();
}

bool XmlElement::FitsBelow(int levels) const
{
    return !m_node || levels + HeightOf(m_object->Place().node) <= kMaxXmlDepth;
}

std::string_view XmlElement::Attribute(std::string_view name) const
{
    return m_node ? std::string_view(FindAttribute(m_object->Place().node, name).value()) : std::string_view();
}

bool XmlElement::HasAttribute(std::string_view name) const
{
    return m_node && FindAttribute(m_object->Place().node, name);
}

void XmlElement::SetAttribute(std::string_view name, std::string_view text)
{
    SetAttribute(View(), name, text);
}

bool XmlElement::RemoveAttribute(std::string_view name)
{
    return RemoveAttribute(View(), name);
}

void XmlElement::SetAttribute(const XmlView& place, std::string_view name, std::string_view text)
{
    Object();
    const pugi::xml_node element(place.m_node);
    if (element.type() != pugi::node_element || !IsXmlName(name)) throw Error(E_INVALIDARG);
    CheckText(text);
    kv::SetAttribute(element, name, text);
}

bool XmlElement::RemoveAttribute(const XmlView& place, std::string_view name)
{
    DomObject& object = Object();
    const pugi::xml_node element(place.m_node);
    const pugi::xml_attribute found = FindAttribute(element, name);
    if (found) object.Detach({element, found});
    return found;
}

XmlElement XmlElement::Child(const XmlKey& key) const
{
    return m_node ? XmlElement(m_object->ObjectFor({FindChild(m_object->Place().node, key), {}})) : XmlElement();
}

std::vector<XmlElement> XmlElement::Children(std::string_view name) const
{
    std::vector<XmlElement> children;
    if (!m_node) return children;
    for (auto child = m_object->Place().node.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element && (name.empty() || name == child.name()))
            children.push_back(XmlElement(m_object->ObjectFor({child, {}})));
    }
    return children;
}

std::vector<XmlNode> XmlElement::Nodes() const
{
    std::vector<XmlNode> nodes;
    if (!m_node) return nodes;
    for (auto child = m_object->Place().node.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element || kv::IsText(child))
            nodes.push_back(XmlNode(m_object->ObjectFor({child, {}}).Get()));
    }
    return nodes;
}

XmlView XmlElement::View() const
{
    return m_node ? XmlView(PointerOf(m_object->Place().node)) : XmlView();
}

XmlView XmlElement::View(const XmlKey& key) const
{
    return m_node ? XmlView(PointerOf(FindChild(m_object->Place().node, key))) : XmlView();
}

XmlNode XmlElement::At(const XmlView& place) const
{
    return m_node ? XmlNode(m_object->ObjectFor({NodeOf(place.m_node), {}}).Get()) : XmlNode();
}

XmlElement XmlElement::Add(const XmlKey& key)
{
    DomObject& object = Object();
    return XmlElement(object.ObjectFor({AddElement(object, key, {}, {}), {}}));
}

void XmlElement::Add(const XmlKey& key, const XmlValue& value)
{
    AddElement(Object(), key, value.Type(), value.Text());
}

void XmlElement::AddText(const XmlKey& key, std::string_view text)
{
    AddElement(Object(), key, {}, text);
}

XmlNode XmlElement::AddText(std::string_view text)
{
    CheckText(text);
    DomObject& object = Object();
    const pugi::xml_node node = AddNode(object.Place().node, pugi::node_pcdata, {}, text);
    return XmlNode(object.ObjectFor({node, {}}).Get());
}

void XmlElement::AddCopy(const XmlElement& element)
{
    if (!element) throw Error(E_POINTER);
    pugi::xml_node parent = Object().Place().node;
    if (!element.FitsBelow(DepthOf(parent))) throw Error(E_INVALIDARG);
    CopyTo(parent, {}, element.Object().Place().node);
}

void XmlElement::AddMarkup(std::string_view markup)
{
    constexpr unsigned kOptions = pugi::parse_default | pugi::parse_pi | pugi::parse_comments | pugi::parse_fragment;
    pugi::xml_node parent = Object().Place().node;
    const pugi::xml_node last = parent.last_child();
    const auto result = parent.append_buffer(markup.data(), markup.size(), kOptions, pugi::encoding_utf8);
    pugi::xml_node added = last ? last.next_sibling() : parent.first_child();
    const int room = kMaxXmlDepth - DepthOf(parent);
    bool fits = static_cast<bool>(result);
    for (pugi::xml_node node = added; node && fits; node = node.next_sibling())
        fits = HeightOf(node) <= room;
    if (fits) return;
    while (added)
        parent.remove_child(std::exchange(added, added.next_sibling()));
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    throw Error(E_INVALIDARG);
}

void XmlElement::Set(const XmlKey& key, const XmlValue& value)
{
    DomObject& object = Object();
    if (const pugi::xml_node child = FindChild(object.Place().node, key)) {
        WriteValue(object, child, value);
    } else {
        AddElement(object, key, value.Type(), value.Text());
    }
}

XmlElement XmlElement::Replace(const XmlKey& key)
{
    DomObject& object = Object();
    const pugi::xml_node added = AddElement(object, key, {}, {});
    RemoveChildren(object, key, added);
    return XmlElement(object.ObjectFor({added, {}}));
}

void XmlElement::Replace(const XmlKey& key, const XmlValue& value)
{
    DomObject& object = Object();
    RemoveChildren(object, key, AddElement(object, key, value.Type(), value.Text()));
}

void XmlElement::Replace(const XmlElement& element)
{
    Insert(element);
    RemoveChildren(Object(), element.Name(), element.Object().Place().node);
}

void XmlElement::Insert(const XmlNode& node, const XmlNode& before)
{
    ThrowIfFailed(Object().Insert(node.Get(), before.Get(), nullptr));
}

bool XmlElement::MoveLast(const XmlKey& key)
{
    pugi::xml_node node = Object().Place().node;
    const pugi::xml_node first = FindChild(node, key);
    const pugi::xml_node last = node.last_child();
    if (first == last) return static_cast<bool>(first);
    for (pugi::xml_node child = first, next; PointerOf(child); child = next) {
        next = PointerOf(child) != PointerOf(last) ? child.next_sibling() : pugi::xml_node();
        if (Matches(child, key)) node.append_move(child);
    }
    return static_cast<bool>(first);
}

bool XmlElement::Remove(const XmlKey& key)
{
    return RemoveChildren(Object(), key, {});
}

void XmlElement::Remove(const XmlView& place)
{
    Object().Detach({NodeOf(place.m_node), {}});
}

void XmlElement::Clear()
{
    DomObject& object = Object();
    const pugi::xml_node node = object.Place().node;
    while (const pugi::xml_attribute attribute = node.first_attribute())
        object.Detach({node, attribute});
    while (const pugi::xml_node child = node.first_child())
        object.Detach({child, {}});
}

void XmlElement::Move(const XmlView& place, const XmlView& parent, const XmlView& before)
{
    Object();
    const pugi::xml_node node(place.m_node);
    const pugi::xml_node next(before.m_node);
    pugi::xml_node target(parent.m_node);
    for (pugi::xml_node above = target; above; above = above.parent()) {
        if (above == node) throw Error(E_INVALIDARG);
    }
    const bool isPlace = target.type() == pugi::node_element && (!next || next.parent() == target);
    if (!isPlace || DepthOf(target) + HeightOf(node) > kMaxXmlDepth) throw Error(E_INVALIDARG);
    const pugi::xml_node moved = next ? target.insert_move_before(node, next) : target.append_move(node);
    if (!moved && next != node) throw Error(E_INVALIDARG);
}

void XmlElement::SetValue(const XmlValue& value)
{
    DomObject& object = Object();
    WriteValue(object, object.Place().node, value);
}

} // namespace kv
