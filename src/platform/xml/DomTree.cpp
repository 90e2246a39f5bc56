#include "platform/xml/DomTree.h"

#include <algorithm>
#include <new>
#include <string_view>

namespace kv {
namespace {

void AppendAttribute(std::string& data, pugi::xml_attribute attribute)
{
    if (!data.empty()) data += ' ';
    data.append(attribute.name()).append("=\"").append(attribute.value()).append(1, '"');
}

/// A declaration can stand nowhere but in a document, which bars it from being moved and copied.
void DeclarationToInstruction(pugi::xml_document& document)
{
    const pugi::xml_node declaration = document.first_child();
    if (declaration.type() != pugi::node_declaration) return;
    std::string data;
    for (pugi::xml_attribute attribute : declaration.attributes())
        AppendAttribute(data, attribute);
    pugi::xml_node instruction = document.prepend_child(pugi::node_pi);
    if (!instruction.set_name(declaration.name()) || !instruction.set_value(data.c_str())) throw std::bad_alloc();
    document.remove_child(declaration);
}

} // namespace

pugi::xml_parse_result DomTree::Parse(std::string text)
{
    m_text = std::move(text);
    constexpr unsigned kOptions = pugi::parse_default | pugi::parse_pi | pugi::parse_comments | pugi::parse_declaration;
    const pugi::xml_parse_result result =
        m_document.load_buffer_inplace(m_text.data(), m_text.size(), kOptions, pugi::encoding_utf8);
    if (result) DeclarationToInstruction(m_document);
    m_nursery = {};
    return result;
}

void DomTree::OpenNursery()
{
    if (!m_nursery) m_nursery = m_document.append_child(pugi::node_element);
    if (!m_nursery) throw std::bad_alloc();
}

void DomTree::DropEmptyNursery()
{
    if (!m_nursery || HasDetached()) return;
    m_document.remove_child(m_nursery);
    m_nursery = {};
}

pugi::xml_node DomTree::Parent(pugi::xml_node node) const
{
    return Visible(node.parent());
}

bool DomTree::IsDetached(pugi::xml_node node) const
{
    if (!HasDetached()) return false;
    while (node && node != m_nursery)
        node = node.parent();
    return static_cast<bool>(node);
}

pugi::xml_node DomTree::NewNode(pugi::xml_node_type type)
{
    OpenNursery();
    const pugi::xml_node node = m_nursery.append_child(type);
    if (!node) throw std::bad_alloc();
    return node;
}

void DomTree::Move(pugi::xml_node node, pugi::xml_node parent, pugi::xml_node before)
{
    if (!before && parent == m_document) before = m_nursery;
    if (before) {
        parent.insert_move_before(node, before);
    } else {
        parent.append_move(node);
    }
}

void DomTree::Detach(pugi::xml_node node)
{
    OpenNursery();
    if (node.parent() != m_nursery) m_nursery.append_move(node);
    FreeIfUnheld(node);
}

DomObject* DomTree::Find(const DomPlace& place) const
{
    const auto found = m_objects.find(place.Key());
    return found == m_objects.end() ? nullptr : found->second;
}

void DomTree::Add(const DomPlace& place, DomObject& object)
{
    m_objects.emplace(place.Key(), &object);
}

void DomTree::Replace(const DomPlace& from, const DomPlace& to, DomObject& object)
{
    m_objects.erase(from.Key());
    Add(to, object);
}

void DomTree::Forget(const DomPlace& place)
{
    m_objects.erase(place.Key());
    if (!HasDetached()) return;
    pugi::xml_node top = place.node;
    while (top && top.parent() != m_nursery)
        top = top.parent();
    if (top) FreeIfUnheld(top);
}

bool DomTree::IsHeld(pugi::xml_node node) const
{
    if (m_objects.empty()) return false;
    if (m_objects.contains(node.internal_object())) return true;
    for (pugi::xml_attribute attribute : node.attributes()) {
        if (m_objects.contains(attribute.internal_object())) return true;
    }
    return std::ranges::any_of(node.children(), [this](pugi::xml_node child) { return IsHeld(child); });
}

void DomTree::FreeIfUnheld(pugi::xml_node detached)
{
    if (!IsHeld(detached)) m_nursery.remove_child(detached);
}

bool IsDeclaration(pugi::xml_node node)
{
    return node.type() == pugi::node_pi && std::string_view(node.name()) == "xml";
}

int DepthOf(pugi::xml_node node)
{
    int depth = 0;
    for (; node.type() == pugi::node_element; node = node.parent())
        ++depth;
    return depth;
}

int HeightOf(pugi::xml_node node)
{
    if (node.type() != pugi::node_element) return 0;
    int below = 0;
    for (pugi::xml_node child : node.children())
        below = std::max(below, HeightOf(child));
    return below + 1;
}

} // namespace kv
