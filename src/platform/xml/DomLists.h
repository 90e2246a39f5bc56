#pragma once
// Lists and named maps of nodes.

#include "platform/xml/DomObject.h"

#include <vector>

namespace kv {

/// The nodes as they were when the list was made.
class DomNodeList final : public Object<IXMLDOMNodeList> {
public:
    /// `owner` is a node of the tree, and kept alive.
    DomNodeList(const DomObject& owner, const std::vector<DomPlace>& places);

    HRESULT get_item(LONG index, IXMLDOMNode** node) override;
    HRESULT get_length(LONG* length) override;
    HRESULT nextNode(IXMLDOMNode** node) override;
    HRESULT reset() override;

private:
    /// Each node is held, so that none goes while the list lives.
    std::vector<ComPtr<IXMLDOMNode>> m_nodes;
    std::size_t m_next = 0;
};

/// The attributes of an element, as they are.
class DomNamedNodeMap final : public Object<IXMLDOMNamedNodeMap> {
public:
    explicit DomNamedNodeMap(DomObject& element) : m_element(element), m_hold(element.Node()) {}

    HRESULT getNamedItem(BSTR name, IXMLDOMNode** node) override;
    HRESULT removeNamedItem(BSTR name, IXMLDOMNode** removed) override;
    HRESULT get_item(LONG index, IXMLDOMNode** node) override;
    HRESULT get_length(LONG* length) override;

private:
    DomObject& m_element;
    ComPtr<IXMLDOMNode> m_hold;
};

} // namespace kv
