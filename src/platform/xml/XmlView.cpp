#include "platform/xml/Element.h"

#include "platform/xml/DataTypes.h"
#include "platform/xml/DomEdit.h"
#include "platform/xml/DomTree.h"
#include "platform/xml/NodeHandle.h"
#include "platform/xml/XmlWriter.h"

#include <charconv>
#include <cmath>

namespace kv {
namespace {

/// What follows a node in document order below another one, beside what stands in it.
pugi::xml_node NodeBehind(pugi::xml_node node, pugi::xml_node top)
{
    for (; PointerOf(node) && PointerOf(node) != PointerOf(top); node = node.parent()) {
        const pugi::xml_node next = node.next_sibling();
        if (PointerOf(next)) return next;
    }
    return {};
}

/// The same with what stands in it.
pugi::xml_node NodeFollowing(pugi::xml_node node, pugi::xml_node top)
{
    const pugi::xml_node child = node.first_child();
    return PointerOf(child) ? child : NodeBehind(node, top);
}

/// What a number nearly always looks like is read at once, all else as VariantChangeType reads it.
template <class T>
bool ReadNumber(pugi::xml_node element, VARTYPE type, T VARIANT::*member, T& value)
{
    std::string buffer;
    const std::string_view text = TextOf(element, buffer);
    const char* const end = text.data() + text.size();
    const bool isNumber = !text.empty() && (text.front() == '-' || (text.front() >= '0' && text.front() <= '9'));
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (isNumber && stop == end && error == std::errc() && std::isfinite(static_cast<double>(value))) return true;
    Variant converted(ToUtf16(text));
    if (FAILED(VariantChangeType(&converted, &converted, 0, type))) return false;
    value = converted.*member;
    return true;
}

} // namespace

bool XmlView::IsElement() const
{
    return NodeOf(m_node).type() == pugi::node_element;
}

bool XmlView::IsText() const
{
    return kv::IsText(NodeOf(m_node));
}

std::string_view XmlView::Name() const
{
    return NodeOf(m_node).name();
}

std::string_view XmlView::Text() const
{
    return NodeOf(m_node).value();
}

std::optional<std::string_view> XmlView::Attribute(std::string_view name) const
{
    const pugi::xml_attribute found = FindAttribute(NodeOf(m_node), name);
    return found ? std::optional<std::string_view>(found.value()) : std::nullopt;
}

XmlView::Two XmlView::Attributes(const std::array<std::string_view, 2>& names) const
{
    Two texts;
    pugi::xml_attribute attribute = NodeOf(m_node).first_attribute();
    for (const char* name = attribute.name(); *name; name = attribute.name()) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (kv::IsText(name, names[i])) texts[i] = attribute.value();
        }
        attribute = attribute.next_attribute();
    }
    return texts;
}

std::vector<std::pair<std::string_view, std::string_view>> XmlView::Attributes() const
{
    std::vector<std::pair<std::string_view, std::string_view>> attributes;
    for (pugi::xml_attribute attribute : NodeOf(m_node).attributes())
        attributes.emplace_back(attribute.name(), attribute.value());
    return attributes;
}

std::string XmlView::Markup() const
{
    std::string markup;
    WriteXml(NodeOf(m_node), false, [&markup](std::string_view piece) { markup += piece; });
    return markup;
}

void XmlView::ReadAttributes(XMLAttributeVisitor& visitor) const
{
    pugi::xml_attribute attribute = NodeOf(m_node).first_attribute();
    for (std::string_view name = attribute.name(); !name.empty(); name = attribute.name()) {
        visitor.Attribute(name, attribute.value());
        attribute = attribute.next_attribute();
    }
}

std::string XmlView::CompactMarkup() const
{
    std::string markup;
    WriteCompactXml(NodeOf(m_node), [&markup](std::string_view piece) { markup += piece; });
    return markup;
}

XmlView XmlView::Parent() const
{
    return XmlView(PointerOf(NodeOf(m_node).parent()));
}

XmlView XmlView::FirstChild() const
{
    return XmlView(PointerOf(NodeOf(m_node).first_child()));
}

XmlView XmlView::Next() const
{
    return XmlView(PointerOf(NodeOf(m_node).next_sibling()));
}

XmlView XmlView::Child(std::string_view name) const
{
    pugi::xml_node node = NodeOf(m_node).first_child();
    while (PointerOf(node) && !IsNamed(node, name))
        node = node.next_sibling();
    return XmlView(PointerOf(node));
}

XmlView XmlView::Next(std::string_view name) const
{
    pugi::xml_node node = NodeOf(m_node).next_sibling();
    while (PointerOf(node) && !IsNamed(node, name))
        node = node.next_sibling();
    return XmlView(PointerOf(node));
}

XmlView XmlView::Following(const XmlView& top) const
{
    return XmlView(PointerOf(NodeFollowing(NodeOf(m_node), NodeOf(top.m_node))));
}

XmlView XmlView::Following(const XmlView& top, const std::array<std::string_view, 2>& names) const
{
    const pugi::xml_node end = NodeOf(top.m_node);
    pugi::xml_node place = NodeFollowing(NodeOf(m_node), end);
    while (PointerOf(place)) {
        const char* const name = place.name();
        const bool isNamed = kv::IsText(name, names[0]) || kv::IsText(name, names[1]);
        if (isNamed && place.type() == pugi::node_element) break;
        // Nothing stands in a text.
        place = *name ? NodeFollowing(place, end) : NodeBehind(place, end);
    }
    return XmlView(PointerOf(place));
}

bool XmlView::ReadInto(bool& value) const
{
    SHORT truth = VARIANT_FALSE;
    if (!ReadNumber(NodeOf(m_node), VT_BOOL, &VARIANT::boolVal, truth)) return false;
    value = truth != 0;
    return true;
}

bool XmlView::ReadInto(LONG& value) const
{
    return ReadNumber(NodeOf(m_node), VT_I4, &VARIANT::lVal, value);
}

bool XmlView::ReadInto(ULONG& value) const
{
    return ReadNumber(NodeOf(m_node), VT_UI4, &VARIANT::ulVal, value);
}

bool XmlView::ReadInto(float& value) const
{
    return ReadNumber(NodeOf(m_node), VT_R4, &VARIANT::fltVal, value);
}

bool XmlView::ReadInto(double& value) const
{
    return ReadNumber(NodeOf(m_node), VT_R8, &VARIANT::dblVal, value);
}

bool XmlView::ReadInto(std::string& value) const
{
    std::string buffer;
    value = TextOf(NodeOf(m_node), buffer);
    return true;
}

bool XmlView::ReadInto(Variant& value) const
{
    const pugi::xml_node element(m_node);
    std::string buffer;
    const std::string_view text = TextOf(element, buffer);
    return SUCCEEDED(Guarded([&] {
        value = ParseTyped(element.attribute(kDataTypeAttribute).value(), text);
        return S_OK;
    }));
}

} // namespace kv
