#pragma once
// Writes a tree of nodes below an element of a document.

#include "KVProjectData/tree/Visitor.h"
#include "platform/xml/Element.h"

namespace kv {

class CXMLPersistor : public CVisitor {
public:
    /// `target` is an element.
    explicit CXMLPersistor(IXMLDOMNode* target) : m_parent(target) {}

    /// Writes the node and what is below it; the first failure ends the walk and is returned.
    HRESULT Visit(CProjectNode& node, ULONG flags) override;

    /// Writes the attributes into the node's new element, which becomes the current parent.
    HRESULT VisitNode(CProjectNode& node, ULONG flags) override;

private:
    XmlElement m_parent;
};

} // namespace kv
