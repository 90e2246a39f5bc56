#pragma once
// What the interface objects of all kinds of nodes have in common.

#include "platform/com/Object.h"
#include "platform/xml/Dom.h"
#include "platform/xml/DomTree.h"

#include <memory>
#include <string>

namespace kv {

class DomDocument;
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
    DomObject(std::shared_ptr<DomTree> tree, DomPlace place, DomDocument* document);
    DomObject(const DomObject&) = delete;
    DomObject& operator=(const DomObject&) = delete;
    virtual ~DomObject();

    const DomPlace& Place() const { return m_place; }
    DomTree& Tree() const { return *m_tree; }
    virtual IXMLDOMNode* Node() = 0;

    HRESULT NodeName(BSTR* name) const;
    HRESULT NodeValue(VARIANT* value) const;
    HRESULT SetNodeValue(const VARIANT& value);
    HRESULT NodeType(DOMNodeType* type) const;
    HRESULT Parent(IXMLDOMNode** parent);
    HRESULT Children(IXMLDOMNodeList** children);
    HRESULT Hand(pugi::xml_node node, IXMLDOMNode** out);
    HRESULT Attributes(IXMLDOMNamedNodeMap** attributes);
    HRESULT Insert(IXMLDOMNode* child, IUnknown* before, IXMLDOMNode** inserted);
    HRESULT ReplaceChild(IXMLDOMNode* child, IXMLDOMNode* old, IXMLDOMNode** replaced);
    HRESULT RemoveChild(IXMLDOMNode* child, IXMLDOMNode** removed);
    HRESULT OwnerDocument(IXMLDOMDocument** document) const;
    HRESULT Clone(bool deep, IXMLDOMNode** copy);
    HRESULT Text(BSTR* text) const;
    HRESULT SetText(BSTR text);
    HRESULT TypedValue(VARIANT* value) const;
    HRESULT SetTypedValue(const VARIANT& value);
    HRESULT DataType(VARIANT* type) const;
    HRESULT SetDataType(BSTR type);
    HRESULT Xml(BSTR* xml) const;
    HRESULT SelectNodes(BSTR expression, IXMLDOMNodeList** nodes);
    HRESULT SelectSingleNode(BSTR expression, IXMLDOMNode** node);

    /// The object of a place in this tree; made where there is none. Empty for an empty place.
    ComPtr<IXMLDOMNode> ObjectFor(const DomPlace& place);
    pugi::xml_node FirstVisible() const { return m_tree->Visible(m_place.node.first_child()); }
    /// A copy of a node, of this or another tree, in the nursery of this one.
    DomPlace CopyOf(const DomPlace& source, bool deep);
    /// Follows an attribute that left its element.
    void MoveTo(const DomPlace& place);

protected:
    bool IsAttribute() const { return static_cast<bool>(m_place.attribute); }
    /// The document that nodes made here belong to.
    virtual DomDocument* Document() const;
    void SetTree(std::shared_ptr<DomTree> tree);

    std::shared_ptr<DomTree> m_tree;
    DomPlace m_place;

private:
    std::string PlainText() const;
    void SetPlainText(const std::string& text);
    /// Whether a node may stand before one of the children, or last.
    HRESULT CheckInsertion(const DomObject& child, pugi::xml_node before) const;
    HRESULT CheckInDocument(pugi::xml_node child, pugi::xml_node before) const;

    /// Null for the document itself.
    ComPtr<DomDocument> m_document;
};

/// The object behind an interface pointer; null for null and for other implementations' objects.
DomObject* ObjectOf(IUnknown* node);

/// The object that a variant holds, borrowed; null when it holds none.
IUnknown* ObjectIn(const VARIANT& value);

/// Empty when the element has none by this name.
pugi::xml_attribute AttributeOf(pugi::xml_node element, BSTR name);

/// UTF-8 of what a variant says. Throws Error(E_INVALIDARG) for text that XML cannot hold.
std::string XmlTextOf(const VARIANT& value);
std::string XmlTextOf(BSTR text);
/// Throws Error(E_INVALIDARG) for what is no name.
std::string XmlNameOf(BSTR name);

} // namespace kv
