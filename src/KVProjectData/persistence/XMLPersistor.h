#pragma once
// Writes a tree of nodes, below an element of a document or as markup.

#include "KVProjectData/tree/ElementArchives.h"
#include "KVProjectData/tree/Visitor.h"
#include "platform/xml/XmlMarkup.h"

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

/// What CXMLPersistor writes when it is given no flags, as markup.
class CMarkupPersistor : public CVisitor {
public:
    explicit CMarkupPersistor(XmlMarkup& target) : m_target(target) {}

    /// As CXMLPersistor; a failure leaves elements that have not ended.
    HRESULT Visit(CProjectNode& node, ULONG flags) override;

    /// Begins the node's element.
    HRESULT VisitNode(CProjectNode& node, ULONG flags) override;

private:
    XmlMarkup& m_target;
    AttributeWriter m_attributes{0};
};

} // namespace kv
