#pragma once
// The document object.

#include "platform/system/AtomicFile.h"
#include "platform/xml/DomNodes.h"

#include <functional>

namespace kv {

struct XmlInsertions;

class DomDocument final : public DomNodeOf<IXMLDOMDocument> {
public:
    DomDocument();

    HRESULT get_documentElement(IXMLDOMElement** element) override;
    HRESULT putref_documentElement(IXMLDOMElement* element) override;
    HRESULT createElement(BSTR name, IXMLDOMElement** element) override;
    HRESULT createTextNode(BSTR text, IXMLDOMNode** node) override;
    HRESULT createComment(BSTR text, IXMLDOMNode** node) override;
    HRESULT createCDATASection(BSTR text, IXMLDOMNode** node) override;
    HRESULT createProcessingInstruction(BSTR target, BSTR data, IXMLDOMNode** node) override;
    HRESULT createNode(VARIANT type, BSTR name, BSTR namespaceURI, IXMLDOMNode** node) override;
    HRESULT importNode(IXMLDOMNode* node, VARIANT_BOOL deep, IXMLDOMNode** copy) override;
    HRESULT load(VARIANT source, VARIANT_BOOL* success) override;
    HRESULT loadXML(BSTR xml, VARIANT_BOOL* success) override;
    HRESULT save(VARIANT target) override;
    HRESULT get_parseError(IXMLDOMParseError** error) override;
    HRESULT get_async(VARIANT_BOOL* async) override;
    HRESULT put_async(VARIANT_BOOL async) override;

    HRESULT Save(const VARIANT& target, const XmlInsertions& insertions) const;

    IXMLDOMDocument* Document() const override { return const_cast<DomDocument*>(this); }

private:
    void SetTree(std::shared_ptr<DomTree> tree);
    pugi::xml_node DocumentElement() const;
    /// A new node in a tree of its own. The texts are checked.
    ComPtr<IXMLDOMNode> NewNode(pugi::xml_node_type type, const std::string& name, const std::string& value);
    /// As WriteXml, in the encoding that the declaration asks for.
    bool Write(AtomicFile& file, bool declarePrefix, const XmlInsertions& insertions) const;
    HRESULT CreateText(pugi::xml_node_type type, BSTR text, IXMLDOMNode** node);
    /// Puts a new tree in force, or on failure an empty one with the error noted. `read` throws what ReadXmlFile
    /// throws.
    HRESULT Parse(std::u16string_view url, const std::function<void(std::string&)>& read, VARIANT_BOOL* success);

    ComPtr<IXMLDOMParseError> m_parseError;
    VARIANT_BOOL m_async = VARIANT_FALSE;
};

} // namespace kv
