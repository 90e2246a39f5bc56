#pragma once
// The tree behind a document, and the interface objects that stand for its nodes.

#include <pugixml.hpp>
#include <string>
#include <unordered_map>

namespace kv {

class DomObject;

/// A node of a tree, or an attribute of an element.
struct DomPlace {
    pugi::xml_node node;
    pugi::xml_attribute attribute;

    /// Stays the same while the node moves within its tree.
    const void* Key() const
    {
        return attribute ? static_cast<const void*>(attribute.internal_object())
                         : static_cast<const void*>(node.internal_object());
    }
};

/// New and removed nodes live in the nursery, an element behind everything else that nobody sees, so that a node stays
/// in one tree all its life. A detached part of the tree goes when no interface object stands for any of it.
class DomTree {
public:
    DomTree() = default;
    DomTree(const DomTree&) = delete;
    DomTree& operator=(const DomTree&) = delete;

    /// Fills a new tree from UTF-8, whose names and values stay where they are. The declaration becomes an instruction.
    pugi::xml_parse_result Parse(std::string text);

    pugi::xml_document& Document() { return m_document; }
    /// Empty before the first node was made or detached.
    pugi::xml_node Nursery() const { return m_nursery; }
    bool HasDetached() const { return static_cast<bool>(m_nursery.first_child()); }
    /// Takes the nursery out of the document until it is needed again.
    void DropEmptyNursery();

    /// The parent as others see it; empty in the nursery.
    pugi::xml_node Parent(pugi::xml_node node) const;
    bool IsDetached(pugi::xml_node node) const;
    bool IsHidden(pugi::xml_node node) const { return node == m_nursery; }
    pugi::xml_node Visible(pugi::xml_node node) const { return IsHidden(node) ? pugi::xml_node() : node; }

    /// A new node in the nursery.
    pugi::xml_node NewNode(pugi::xml_node_type type);
    /// Moves a node to a place before a sibling, or behind all that others see.
    void Move(pugi::xml_node node, pugi::xml_node parent, pugi::xml_node before);
    /// Takes a node out of its parent; it goes at once when nobody holds it or anything below it.
    void Detach(pugi::xml_node node);

    DomObject* Find(const DomPlace& place) const;
    void Add(const DomPlace& place, DomObject& object);
    void Replace(const DomPlace& from, const DomPlace& to, DomObject& object);
    /// The last holder of a node is gone.
    void Forget(const DomPlace& place);

private:
    bool IsHeld(pugi::xml_node node) const;
    void FreeIfUnheld(pugi::xml_node detached);
    void OpenNursery();

    std::string m_text;
    pugi::xml_document m_document;
    pugi::xml_node m_nursery;
    std::unordered_map<const void*, DomObject*> m_objects;
};

/// The declaration of a document is an instruction named "xml".
bool IsDeclaration(pugi::xml_node node);

/// Levels of elements above and with a node, and below and with it.
int DepthOf(pugi::xml_node node);
int HeightOf(pugi::xml_node node);

} // namespace kv
