#include "platform/xml/DomTree.h"

#include <algorithm>
#include <new>

namespace kv {

DomTree::DomTree()
{
    PlaceNursery();
}

pugi::xml_parse_result DomTree::Parse(std::string text)
{
    m_text = std::move(text);
    constexpr unsigned kOptions = pugi::parse_default | pugi::parse_pi | pugi::parse_comments | pugi::parse_declaration;
    const pugi::xml_parse_result result =
        m_document.load_buffer_inplace(m_text.data(), m_text.size(), kOptions, pugi::encoding_utf8);
    m_nursery = {};
    PlaceNursery();
    return result;
}

void DomTree::PlaceNursery()
{
    if (!m_nursery) {
        m_nursery = m_document.append_child(pugi::node_element);
        if (!m_nursery) throw std::bad_alloc();
    } else if (m_document.last_child() != m_nursery) {
        m_document.append_move(m_nursery);
    }
}

pugi::xml_node DomTree::Parent(pugi::xml_node node) const
{
    return Visible(node.parent());
}

bool DomTree::IsDetached(pugi::xml_node node) const
{
    while (node && node != m_nursery)
        node = node.parent();
    return static_cast<bool>(node);
}

pugi::xml_node DomTree::NewNode(pugi::xml_node_type type)
{
    const pugi::xml_node node = m_nursery.append_child(type);
    if (!node) throw std::bad_alloc();
    return node;
}

void DomTree::Detach(pugi::xml_node node)
{
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
    if (!m_nursery.first_child()) return;
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
