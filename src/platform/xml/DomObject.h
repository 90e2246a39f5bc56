#pragma once
// What the interface objects of all kinds of nodes have in common.

#include "platform/com/Object.h"
#include "platform/xml/Dom.h"
#include "platform/xml/DomTree.h"

#include <string>

namespace kv {

class DomObject;

/// Leads from a node's public interface to its object; only objects of this document object model have it.
struct IDomObject : IUnknown {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f1ff"_guid;
    using Base = IUnknown;

    virtual DomObject& Self() = 0;
};

/// The operations of IXMLDOMNode over a place in a tree.
class DomObject {
public:
    DomObject(const DomPlace& place, DomHome home) : m_home(std::move(home)), m_place(place), m_key(place.Key()) {}
    DomObject(const DomObject&) = delete;
    DomObject& operator=(const DomObject&) = delete;
    virtual ~DomObject() = default;

    const DomPlace& Place() const { return m_place; }
    const void* Key() const { return m_key; }
    DomTree& Tree() const { return *m_home.tree; }
    virtual IXMLDOMNode* Node() = 0;
    /// A reference, unless the last one is gone already.
    virtual ComPtr<IXMLDOMNode> IfAlive() = 0;
    /// Follows the node to another tree; gives back where it was at home.
    void MoveTo(const DomPlace& place, DomHome& home)
    {
        m_place = place;
        m_key = place.Key();
        std::swap(m_home, home);
    }

    HRESULT NodeName(BSTR* name) const;
    HRESULT NodeValue(VARIANT* value) const;
    HRESULT SetNodeValue(const VARIANT& value);
    HRESULT NodeType(DOMNodeType* type) const;
    HRESULT Parent(IXMLDOMNode** parent) const;
    HRESULT Children(IXMLDOMNodeList** children) const;
    HRESULT Hand(pugi::xml_node node, IXMLDOMNode** out) const;
    HRESULT Attributes(IXMLDOMNamedNodeMap** attributes);
    HRESULT Insert(IXMLDOMNode* child, IUnknown* before, IXMLDOMNode** inserted);
    HRESULT ReplaceChild(IXMLDOMNode* child, IXMLDOMNode* old, IXMLDOMNode** replaced);
    HRESULT RemoveChild(IXMLDOMNode* child, IXMLDOMNode** removed);
    HRESULT OwnerDocument(IXMLDOMDocument** document) const;
    HRESULT Clone(bool deep, IXMLDOMNode** copy) const;
    HRESULT Text(BSTR* text) const;
    HRESULT SetText(BSTR text);
    HRESULT TypedValue(VARIANT* value) const;
    HRESULT SetTypedValue(const VARIANT& value);
    HRESULT DataType(VARIANT* type) const;
    HRESULT SetDataType(BSTR type);
    HRESULT Xml(BSTR* xml) const;
    HRESULT SelectNodes(BSTR expression, IXMLDOMNodeList** nodes) const;
    HRESULT SelectSingleNode(BSTR expression, IXMLDOMNode** node) const;

    /// The object of a place in this tree; made where there is none. Empty for an empty place.
    ComPtr<IXMLDOMNode> ObjectFor(const DomPlace& place) const;
    /// Sets the text, which is checked. Throws Error for a document, and for a text that a node of this type cannot
    /// hold.
    void WriteText(const std::string& text);
    /// Takes a part of this tree out of its parent.
    void Detach(const DomPlace& place) { Tree().Detach(place, Document()); }

    bool IsAttribute() const { return static_cast<bool>(m_place.attribute); }
    /// The document that nodes made here belong to.
    virtual IXMLDOMDocument* Document() const { return m_home.document.Get(); }

protected:
    DomHome m_home;
    DomPlace m_place;

private:
    friend class DomTable;

    std::string PlainText() const;
    /// Whether a node may stand before one of the children, or last; `leaving` is a child that is to go.
    HRESULT CheckInsertion(const DomObject& child, pugi::xml_node before, pugi::xml_node leaving) const;
    HRESULT CheckInDocument(pugi::xml_node child, pugi::xml_node before, pugi::xml_node leaving) const;
    /// Puts a node there, from wherever it stands.
    void Take(DomObject& child, pugi::xml_node before);

    const void* m_key;
    DomObject* m_nextInTable = nullptr;
};

/// The object for a place that has none yet, with its first reference.
DomObject& NewDomObject(const DomPlace& place, DomHome home);

/// A copy without a parent of a node of any tree, deep or with its attributes alone.
ComPtr<IXMLDOMNode> CopyFor(IXMLDOMDocument* document, const DomPlace& place, bool deep);

/// The object behind an interface pointer; null for null and for other implementations' objects.
DomObject* ObjectOf(IUnknown* node);

/// The object that a variant holds, borrowed; null when it holds none.
IUnknown* ObjectIn(const VARIANT& value);

/// UTF-8 of what a variant says. Throws Error(E_INVALIDARG) for text that XML cannot hold.
std::string XmlTextOf(const VARIANT& value);
std::string XmlTextOf(BSTR text);
/// Throws Error(E_INVALIDARG) for what is no name.
std::string XmlNameOf(BSTR name);

} // namespace kv
