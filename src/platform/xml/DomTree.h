#pragma once
// The tree behind a document or a detached part, and the interface objects that stand for its nodes.

#include "platform/com/ComPtr.h"
#include "platform/xml/Dom.h"
#include "platform/xml/DomTable.h"

#include <memory>
#include <mutex>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace kv {

class DomObject;
class DomTree;

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

/// What an object keeps alive: the tree of its node, and the document that nodes made there belong to.
struct DomHome {
    std::shared_ptr<DomTree> tree;
    /// Null for the document itself.
    ComPtr<IXMLDOMDocument> document;
};

/// What stands in a document, or a part without a parent: a new node, a copy, or what was taken out of its parent. A
/// tree goes with the last object that stands for any of it.
///
/// Reading nodes writes nothing, so that threads may read one tree at once; the table of objects has a lock. Who edits
/// a tree has it alone, but for objects that other threads release.
class DomTree : public std::enable_shared_from_this<DomTree> {
public:
    DomTree() = default;
    DomTree(const DomTree&) = delete;
    DomTree& operator=(const DomTree&) = delete;

    /// Checks and takes UTF-8, whose names and values stay where they are. The declaration becomes an instruction.
    /// Throws XmlError, with the text as it was.
    static std::shared_ptr<DomTree> Parse(std::string& text);

    pugi::xml_document& Root() { return m_root; }
    /// Whether the root is the node of a document object. The root of a part is nobody's.
    bool IsDocument() const { return m_isDocument; }
    void SetIsDocument(bool is) { m_isDocument = is; }

    /// The object that stands for a place of this tree; made where there is none.
    ComPtr<IXMLDOMNode> ObjectAt(const DomPlace& place, IXMLDOMDocument* document);
    /// The last reference to an object is gone.
    void Forget(DomObject& object);

    /// Takes a node, or an attribute, out of its parent. When objects stand for any of it, they and it go to a tree of
    /// its own; an attribute then has an element without a name.
    void Detach(const DomPlace& place, IXMLDOMDocument* document);
    /// Replaces what an element holds by a text, which is checked.
    void SetContent(pugi::xml_node element, std::string_view text, IXMLDOMDocument* document);
    /// Moves a node with all below it into this tree, before a sibling or last in its parent. The objects that stand
    /// for any of it go with it. On lack of memory nothing is moved.
    void Adopt(DomTree& from, pugi::xml_node node, IXMLDOMDocument* document, pugi::xml_node parent,
               pugi::xml_node before);
    /// Copies a node or attribute of any tree to the root of this one, an attribute into an element without a name.
    DomPlace Copy(const DomPlace& place, bool deep);

private:
    friend class DomTransfer;

    bool IsHeld(const DomPlace& place) const;

    std::string m_text;
    pugi::xml_document m_root;
    bool m_isDocument = false;
    std::mutex m_mutex;
    DomTable m_objects;
};

bool IsText(pugi::xml_node node);

/// The joined text of a node and of what it holds, in `buffer` where it is not in one piece.
std::string_view TextOf(pugi::xml_node node, std::string& buffer);

/// The declaration of a document is an instruction named "xml".
bool IsDeclaration(pugi::xml_node node);

/// A deep copy of a node of any tree before a sibling or last in its parent, whole or none. Throws std::bad_alloc.
pugi::xml_node CopyTo(pugi::xml_node parent, pugi::xml_node before, pugi::xml_node node);

/// Levels of elements above and with a node, and below and with it.
int DepthOf(pugi::xml_node node);
int HeightOf(pugi::xml_node node);

} // namespace kv
