#pragma once
// The XML document object model: a strict XML 1.0 tree without document types and external entities.
//
// A node has one interface object while anyone holds it, so that interface pointers of one node compare equal; every
// node keeps its document alive. Out-pointers that find nothing are set to null and the call returns S_FALSE.
//
// Threads. A document with all that stands in it is a tree; so is each part without a parent, that is a new node, a
// copy, or what was taken out of its parent, whatever document it belongs to.
// - Any number of threads may read a tree at once: all that changes no node, markup, copies, selection, and the save of
//   a document among it. A list that is read by nextNode, and its position, are one thread's.
// - Who changes a tree has it alone: no other thread reads or changes anything in it meanwhile. A node that goes from
//   one tree to another changes both; the same holds for a load of a document, which takes nothing from its older
//   nodes.
// - References may be taken and released on any thread at any time, also while another thread changes, moves or drops
//   the node that they are to.
// - A document makes nodes, and copies nodes of others, for any number of threads at once.

#include "platform/automation/Variant.h"
#include "platform/com/Export.h"
#include "platform/com/Unknown.h"

#include <string_view>
#include <variant>

struct IXMLDOMDocument;
struct IXMLDOMNamedNodeMap;
struct IXMLDOMNodeList;

enum DOMNodeType : LONG {
    NODE_INVALID = 0,
    NODE_ELEMENT = 1,
    NODE_ATTRIBUTE = 2,
    NODE_TEXT = 3,
    NODE_CDATA_SECTION = 4,
    NODE_PROCESSING_INSTRUCTION = 7,
    NODE_COMMENT = 8,
    NODE_DOCUMENT = 9,
};

struct IXMLDOMNode : IUnknown {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f101"_guid;
    using Base = IUnknown;

    /// "#text", "#comment", "#cdata-section", "#document" for nodes without a name of their own.
    virtual HRESULT get_nodeName(BSTR* name) = 0;
    /// The text of attributes, texts, comments and instructions; VT_NULL for elements and documents.
    virtual HRESULT get_nodeValue(VARIANT* value) = 0;
    virtual HRESULT put_nodeValue(VARIANT value) = 0;
    virtual HRESULT get_nodeType(DOMNodeType* type) = 0;
    virtual HRESULT get_parentNode(IXMLDOMNode** parent) = 0;
    virtual HRESULT get_childNodes(IXMLDOMNodeList** children) = 0;
    virtual HRESULT get_firstChild(IXMLDOMNode** child) = 0;
    virtual HRESULT get_lastChild(IXMLDOMNode** child) = 0;
    virtual HRESULT get_previousSibling(IXMLDOMNode** sibling) = 0;
    virtual HRESULT get_nextSibling(IXMLDOMNode** sibling) = 0;
    virtual HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) = 0;
    /// Before `reference` (a child, as a VT_UNKNOWN), or last when it is VT_EMPTY, VT_NULL or null. A node that stands
    /// elsewhere is moved with all below it, also from another document, to whose nodes' interface pointers nothing
    /// changes but their document. E_INVALIDARG when the tree rules forbid it, and beyond 256 levels of elements.
    virtual HRESULT insertBefore(IXMLDOMNode* child, VARIANT reference, IXMLDOMNode** inserted) = 0;
    virtual HRESULT replaceChild(IXMLDOMNode* child, IXMLDOMNode* old, IXMLDOMNode** replaced) = 0;
    virtual HRESULT removeChild(IXMLDOMNode* child, IXMLDOMNode** removed) = 0;
    virtual HRESULT appendChild(IXMLDOMNode* child, IXMLDOMNode** appended) = 0;
    virtual HRESULT hasChildNodes(VARIANT_BOOL* has) = 0;
    /// Null for a document.
    virtual HRESULT get_ownerDocument(IXMLDOMDocument** document) = 0;
    /// A copy without a parent that belongs to the same document, with the attributes and, if `deep`, the children.
    virtual HRESULT cloneNode(VARIANT_BOOL deep, IXMLDOMNode** copy) = 0;
    /// The joined text of the node and what it holds; setting it replaces the children.
    virtual HRESULT get_text(BSTR* text) = 0;
    virtual HRESULT put_text(BSTR text) = 0;
    /// The text converted to the element's "dt:dt" data type (DataTypes.h). Without one it is a string, or VT_EMPTY
    /// where there is no text either.
    virtual HRESULT get_nodeTypedValue(VARIANT* value) = 0;
    virtual HRESULT put_nodeTypedValue(VARIANT value) = 0;
    /// VT_NULL when the element has no data type.
    virtual HRESULT get_dataType(VARIANT* type) = 0;
    /// "string", "i1", "i2", "i4", "i8", "int", "ui1", "ui2", "ui4", "ui8", "r4", "r8", "float", "number", "boolean";
    /// E_INVALIDARG for any other.
    virtual HRESULT put_dataType(BSTR type) = 0;
    /// The markup of the node and its subtree. Where an element has a data type and none in the markup
    /// declares the prefix ("xmlns:dt"), the outermost one does.
    virtual HRESULT get_xml(BSTR* xml) = 0;
    /// XPath 1.0. E_INVALIDARG for an expression that does not parse or selects no nodes by its kind. A node without a
    /// way up to the document finds only what hangs together with it.
    virtual HRESULT selectNodes(BSTR expression, IXMLDOMNodeList** nodes) = 0;
    /// Searches no further than to the first in document order.
    virtual HRESULT selectSingleNode(BSTR expression, IXMLDOMNode** node) = 0;
};

struct IXMLDOMNodeList : IUnknown {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f102"_guid;
    using Base = IUnknown;

    virtual HRESULT get_item(LONG index, IXMLDOMNode** node) = 0;
    virtual HRESULT get_length(LONG* length) = 0;
    virtual HRESULT nextNode(IXMLDOMNode** node) = 0;
    virtual HRESULT reset() = 0;
};

struct IXMLDOMNamedNodeMap : IUnknown {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f103"_guid;
    using Base = IUnknown;

    virtual HRESULT getNamedItem(BSTR name, IXMLDOMNode** node) = 0;
    virtual HRESULT removeNamedItem(BSTR name, IXMLDOMNode** removed) = 0;
    virtual HRESULT get_item(LONG index, IXMLDOMNode** node) = 0;
    virtual HRESULT get_length(LONG* length) = 0;
};

struct IXMLDOMElement : IXMLDOMNode {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f104"_guid;
    using Base = IXMLDOMNode;

    virtual HRESULT get_tagName(BSTR* name) = 0;
    /// VT_NULL and S_FALSE when there is none.
    virtual HRESULT getAttribute(BSTR name, VARIANT* value) = 0;
    /// Integers become decimal text, booleans -1 or 0, reals their shortest form; strings stay as they are.
    /// E_INVALIDARG for a name that is none, and for text that XML cannot hold.
    virtual HRESULT setAttribute(BSTR name, VARIANT value) = 0;
    virtual HRESULT removeAttribute(BSTR name) = 0;
    virtual HRESULT getElementsByTagName(BSTR name, IXMLDOMNodeList** nodes) = 0;
};

/// Where and why a document did not parse.
struct IXMLDOMParseError : IUnknown {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f105"_guid;
    using Base = IUnknown;

    /// 0 when the last load succeeded.
    virtual HRESULT get_errorCode(LONG* code) = 0;
    virtual HRESULT get_url(BSTR* url) = 0;
    virtual HRESULT get_reason(BSTR* reason) = 0;
    /// The line of the error, cut to 256 characters.
    virtual HRESULT get_srcText(BSTR* text) = 0;
    /// Lines and positions in a line count from 1; 0 when unknown.
    virtual HRESULT get_line(LONG* line) = 0;
    virtual HRESULT get_linepos(LONG* position) = 0;
    /// Characters before the error in the whole input.
    virtual HRESULT get_filepos(LONG* position) = 0;
};

struct IXMLDOMDocument : IXMLDOMNode {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f106"_guid;
    using Base = IXMLDOMNode;

    virtual HRESULT get_documentElement(IXMLDOMElement** element) = 0;
    /// Replaces the document element.
    virtual HRESULT putref_documentElement(IXMLDOMElement* element) = 0;
    /// New nodes have no parent. E_INVALIDARG for a name or text that XML does not allow: "--" in a comment, "?>" in an
    /// instruction. An instruction "xml" is the declaration, and stands nowhere but first in a document.
    virtual HRESULT createElement(BSTR name, IXMLDOMElement** element) = 0;
    virtual HRESULT createTextNode(BSTR text, IXMLDOMNode** node) = 0;
    virtual HRESULT createComment(BSTR text, IXMLDOMNode** node) = 0;
    virtual HRESULT createCDATASection(BSTR text, IXMLDOMNode** node) = 0;
    virtual HRESULT createProcessingInstruction(BSTR target, BSTR data, IXMLDOMNode** node) = 0;
    /// By node type (an integer or the name "element", "text", …), name and namespace (empty or null).
    virtual HRESULT createNode(VARIANT type, BSTR name, BSTR namespaceURI, IXMLDOMNode** node) = 0;
    /// A copy of another document's node in this one, without a parent, as cloneNode makes one.
    virtual HRESULT importNode(IXMLDOMNode* node, VARIANT_BOOL deep, IXMLDOMNode** copy) = 0;
    /// Loads a file (VT_BSTR path, read with either path separator). *success tells whether it parsed; the
    /// call then returns S_FALSE if not, and the document is empty. The encoding is taken from the
    /// byte-order mark or the declaration, which must not differ: UTF-8 or UTF-16. Only regular files are read, and
    /// documents of up to 256 MiB as UTF-8 and 256 levels of elements. E_INVALIDARG for a path that holds U+0000.
    virtual HRESULT load(VARIANT source, VARIANT_BOOL* success) = 0;
    virtual HRESULT loadXML(BSTR xml, VARIANT_BOOL* success) = 0;
    /// Writes to a temporary file in the same folder, syncs it and renames it over the target (VT_BSTR path).
    /// UTF-16 little-endian with byte-order mark when the document's xml instruction says encoding="UTF-16",
    /// else UTF-8. On failure the old file is as it was, and the result is the system's error as a result code:
    /// E_ACCESSDENIED for a write-protected target, 0x800700DF for a document too large to be loaded again.
    virtual HRESULT save(VARIANT target) = 0;
    virtual HRESULT get_parseError(IXMLDOMParseError** error) = 0;
    /// Loading is always synchronous; the flag is kept for hosts that set it.
    virtual HRESULT get_async(VARIANT_BOOL* async) = 0;
    virtual HRESULT put_async(VARIANT_BOOL async) = 0;
};

/// Receives the attributes of an element. The text is UTF-8, borrowed from the document.
class XMLAttributeVisitor {
public:
    virtual void Attribute(std::string_view name, std::string_view value) = 0;

protected:
    ~XMLAttributeVisitor() = default;
};

/// An attribute on its way to an element. The text is UTF-8 or UTF-16.
struct XMLAttribute {
    std::string_view name;
    std::variant<std::string_view, std::u16string_view> value;
};

/// Gives attributes one by one.
class XMLAttributeSource {
public:
    /// False when there is no other. The value stays until the next one is asked for, the name until all are taken.
    virtual bool Next(XMLAttribute& attribute) = 0;

protected:
    ~XMLAttributeSource() = default;
};

/// All attributes of an element without a string or an object for each: every element of this document
/// object model offers it beside IXMLDOMElement.
struct IXMLElementAttributes : IUnknown {
    static constexpr GUID IID = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f107"_guid;
    using Base = IUnknown;

    /// The name of the element, borrowed like the attributes.
    virtual HRESULT ElementName(std::string_view* name) = 0;
    /// In document order. The names and values stay valid until the element is changed or released.
    virtual HRESULT ReadAttributes(XMLAttributeVisitor* visitor) = 0;
    /// Sets each attribute as IXMLDOMElement::setAttribute does, up to the first that is refused. An element without
    /// attributes takes them fastest in the order of their names.
    virtual HRESULT WriteAttributes(XMLAttributeSource* source) = 0;
};

/// The class identity of documents, for CoCreateInstance.
inline constexpr CLSID CLSID_DOMDocument = "9d2a4c11-6b0e-4f0a-8e57-31d5c0a4f100"_guid;
