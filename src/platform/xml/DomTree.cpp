#include "platform/xml/DomTree.h"

#include "platform/xml/DomEdit.h"
#include "platform/xml/DomObject.h"
#include "platform/xml/NodeHandle.h"
#include "platform/xml/XmlChecker.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

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

void AppendText(pugi::xml_node node, std::string& text)
{
    if (IsText(node)) text += node.value();
    for (pugi::xml_node child : node.children())
        AppendText(child, text);
}

bool SameText(const pugi::char_t* left, const pugi::char_t* right)
{
    return std::string_view(left) == right;
}

bool IsWholeCopy(pugi::xml_attribute own, pugi::xml_attribute copy)
{
    return copy && SameText(own.name(), copy.name()) && SameText(own.value(), copy.value());
}

/// Whether nothing of a node, without what is below it, was left out of its copy.
bool IsWholeAlone(pugi::xml_node node, pugi::xml_node copy)
{
    auto other = copy.first_attribute();
    for (auto own = node.first_attribute(); own; own = own.next_attribute()) {
        if (!IsWholeCopy(own, other)) return false;
        other = other.next_attribute();
    }
    return SameText(node.name(), copy.name()) && SameText(node.value(), copy.value());
}

bool IsWholeCopy(pugi::xml_node node, pugi::xml_node copy)
{
    pugi::xml_node other = copy.first_child();
    for (auto own = node.first_child(); own; own = own.next_sibling()) {
        if (!other || !IsWholeCopy(own, other)) return false;
        other = other.next_sibling();
    }
    return IsWholeAlone(node, copy);
}

/// What pugixml finds no memory for it leaves out of a copy without a word; the word is malloc's, which also says so
/// when it found the memory elsewhere. Then it takes a look at the copy.
class MemoryWatch {
public:
    MemoryWatch() : m_before(std::exchange(errno, 0)) {}
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;
    ~MemoryWatch() { errno = m_before; }

    bool MayLack() const { return errno == ENOMEM; }

private:
    int m_before;
};

/// Copies what a node is, without what is below it, into an empty one of its type. Throws std::bad_alloc.
void CopyAlone(pugi::xml_node node, pugi::xml_node copy)
{
    const MemoryWatch memory;
    if (*node.name()) copy.set_name(node.name());
    if (*node.value()) copy.set_value(node.value());
    for (pugi::xml_attribute attribute : node.attributes())
        copy.append_copy(attribute);
    if (memory.MayLack() && !IsWholeAlone(node, copy)) throw std::bad_alloc();
}

} // namespace

pugi::xml_node CopyTo(pugi::xml_node parent, pugi::xml_node before, pugi::xml_node node)
{
    const MemoryWatch memory;
    const pugi::xml_node copy = before ? parent.insert_copy_before(node, before) : parent.append_copy(node);
    if (copy && (!memory.MayLack() || IsWholeCopy(node, copy))) return copy;
    parent.remove_child(copy);
    throw std::bad_alloc();
}

/// Gives the objects of places in one tree to their copies in another. Both tables are locked meanwhile.
class DomTransfer {
public:
    DomTransfer(DomTree& from, DomTree& to, IXMLDOMDocument* document)
        : m_from(from), m_to(to), m_document(document), m_locks(from.m_mutex, to.m_mutex), m_left(from.m_objects.Size())
    {
    }

    void Pair(const DomPlace& place, const DomPlace& copy)
    {
        DomObject* object = m_from.m_objects.Find(place.Key());
        if (!object) return;
        --m_left;
        m_moves.push_back({object, object->IfAlive(), copy, {m_to.shared_from_this(), m_document}});
    }

    /// Pairs all that a node holds with what its copy holds, until no object is left.
    void PairAll(pugi::xml_node node, pugi::xml_node copy)
    {
        if (m_left == 0) return;
        Pair({node, {}}, {copy, {}});
        auto attributeCopy = copy.first_attribute();
        for (auto own = node.first_attribute(); own && m_left != 0; own = own.next_attribute()) {
            Pair({node, own}, {copy, attributeCopy});
            attributeCopy = attributeCopy.next_attribute();
        }
        pugi::xml_node childCopy = copy.first_child();
        for (auto child = node.first_child(); child && m_left != 0; child = child.next_sibling()) {
            PairAll(child, childCopy);
            childCopy = childCopy.next_sibling();
        }
    }

    void Commit()
    {
        for (Move& move : m_moves) {
            m_from.m_objects.Remove(*move.object);
            // An object whose last reference is gone on another thread finds itself forgotten.
            if (!move.hold) continue;
            move.object->MoveTo(move.copy, move.home);
            m_to.m_objects.Add(*move.object);
        }
    }

private:
    struct Move {
        DomObject* object;
        ComPtr<IXMLDOMNode> hold;
        DomPlace copy;
        /// The new home, then the old one.
        DomHome home;
    };

    DomTree& m_from;
    DomTree& m_to;
    IXMLDOMDocument* m_document;
    /// What is held ends behind the locks: it may be the last of an object, a tree or a document.
    std::vector<Move> m_moves;
    std::scoped_lock<std::mutex, std::mutex> m_locks;
    std::size_t m_left;
};

std::shared_ptr<DomTree> DomTree::Parse(std::string& text)
{
    CheckXml(text);
    auto tree = std::make_shared<DomTree>();
    tree->m_text = std::move(text);
    constexpr unsigned kOptions = pugi::parse_default | pugi::parse_pi | pugi::parse_comments | pugi::parse_declaration;
    const pugi::xml_parse_result result =
        tree->m_root.load_buffer_inplace(tree->m_text.data(), tree->m_text.size(), kOptions, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!result) throw XmlError{"the document is not well-formed", static_cast<std::size_t>(result.offset)};
    DeclarationToInstruction(tree->m_root);
    return tree;
}

ComPtr<IXMLDOMNode> DomTree::ObjectAt(const DomPlace& place, IXMLDOMDocument* document)
{
    const std::lock_guard lock(m_mutex);
    if (DomObject* known = m_objects.Find(place.Key())) {
        if (ComPtr<IXMLDOMNode> found = known->IfAlive()) return found;
        m_objects.Remove(*known);
    }
    DomObject& made = NewDomObject(place, {shared_from_this(), document});
    m_objects.Add(made);
    return ComPtr<IXMLDOMNode>::Attach(made.Node());
}

void DomTree::Forget(DomObject& object)
{
    const std::lock_guard lock(m_mutex);
    m_objects.Remove(object);
}

bool DomTree::IsHeld(const DomPlace& place) const
{
    constexpr std::size_t kFew = 8;
    if (m_objects.Size() == 0) return false;
    if (m_objects.Find(place.Key())) return true;
    if (place.attribute) return false;
    if (m_objects.Size() <= kFew) {
        return m_objects.Any([&](const DomObject& object) {
            pugi::xml_node above = object.Place().node;
            while (above && above != place.node)
                above = above.parent();
            return static_cast<bool>(above);
        });
    }
    for (auto own = place.node.first_attribute(); own; own = own.next_attribute()) {
        if (IsHeld({place.node, own})) return true;
    }
    for (auto child = place.node.first_child(); child; child = child.next_sibling()) {
        if (IsHeld({child, {}})) return true;
    }
    return false;
}

void DomTree::Detach(const DomPlace& place, IXMLDOMDocument* document)
{
    pugi::xml_node node = place.node;
    {
        const std::lock_guard lock(m_mutex);
        if (!IsHeld(place)) {
            place.attribute ? node.remove_attribute(place.attribute) : node.parent().remove_child(node);
            return;
        }
    }
    const auto part = std::make_shared<DomTree>();
    if (!place.attribute) return part->Adopt(*this, node, document, part->m_root, {});
    const DomPlace copy = part->Copy(place, false);
    DomTransfer transfer(*this, *part, document);
    transfer.Pair(place, copy);
    transfer.Commit();
    node.remove_attribute(place.attribute);
}

void DomTree::SetContent(pugi::xml_node element, std::string_view text, IXMLDOMDocument* document)
{
    pugi::xml_node content;
    if (!text.empty()) content = AddNode(element, pugi::node_pcdata, {}, text);
    while (element.first_child() != content)
        Detach({element.first_child(), {}}, document);
}

void DomTree::Adopt(DomTree& from, pugi::xml_node node, IXMLDOMDocument* document, pugi::xml_node parent,
                    pugi::xml_node before)
{
    const pugi::xml_node copy = CopyTo(parent, before, node);
    try {
        DomTransfer transfer(from, *this, document);
        transfer.PairAll(node, copy);
        transfer.Commit();
        // The tree of a part that went as a whole is seen by nobody any more, and goes with the transfer.
        const bool isWhole = !from.m_isDocument && from.m_root.first_child() == node && !node.next_sibling();
        if (!isWhole) node.parent().remove_child(node);
    } catch (const std::bad_alloc&) {
        parent.remove_child(copy);
        throw;
    }
}

DomPlace DomTree::Copy(const DomPlace& place, bool deep)
{
    if (deep && !place.attribute) return {CopyTo(m_root, {}, place.node), {}};
    pugi::xml_node copy = m_root.append_child(place.attribute ? pugi::node_element : place.node.type());
    if (!copy) throw std::bad_alloc();
    if (!place.attribute) {
        CopyAlone(place.node, copy);
        return {copy, {}};
    }
    const DomPlace attribute{copy, copy.append_copy(place.attribute)};
    if (!IsWholeCopy(place.attribute, attribute.attribute)) throw std::bad_alloc();
    return attribute;
}

bool IsText(pugi::xml_node node)
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

std::string_view TextOf(pugi::xml_node node, std::string& buffer)
{
    const pugi::xml_node first = node.first_child();
    if (!PointerOf(first)) return node.value();
    if (IsText(first) && !PointerOf(first.next_sibling())) return first.value();
    AppendText(node, buffer);
    return buffer;
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
    for (auto child = node.first_child(); PointerOf(child); child = child.next_sibling())
        below = std::max(below, HeightOf(child));
    return below + 1;
}

} // namespace kv
