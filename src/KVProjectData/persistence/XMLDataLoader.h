#pragma once
// Loads a document into a project.

#include "KVProjectData/persistence/ElementTable.h"
#include "KVProjectData/tree/LoadReport.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/ComPtr.h"

#include <vector>

namespace kv {

/// Creates the objects that a document names. Implemented by the project, which knows the classes.
class NodeFactory {
public:
    /// Makes an object of an item type and appends it to `parent`, without an ID. Null when there is no such
    /// object, or when the parent does not take it.
    virtual CProjectNode* CreateItem(NodeType type, CProjectNode& parent) = 0;

protected:
    ~NodeFactory() = default;
};

class CKVXMLDataLoader {
public:
    CKVXMLDataLoader(CProjectNode& project, NodeFactory& factory) : m_project(project), m_factory(factory) {}

    /// Loads a document, or an element with what is below it, in whose document string references are resolved first.
    /// Elements that no node is found for, and nodes that cannot take their element, are passed over with what is below
    /// them, and reported, as is everything else that nobody takes but comments and instructions. Objects without an ID
    /// get theirs when all that have one are there. E_OUTOFMEMORY on lack of memory, E_UNEXPECTED when no IDs are left;
    /// what was loaded till then stays.
    HRESULT Load(IXMLDOMNode* root);

private:
    struct Item {
        ComPtr<IUnknown> reference;
        CProjectNode* node;
    };

    void LoadRoot(IXMLDOMNode* root);
    void LoadDocument(IXMLDOMNode& document);
    /// The node that an element fills; null when there is none. `parent` may be null.
    CProjectNode* FindNode(const ElementRow* row, std::string_view name, CProjectNode* parent);
    /// Loads what stands at a place. Below an element without a node only projects are looked for.
    void LoadPlace(const XmlView& place, CProjectNode* parent);
    /// Loads one element, and what is below it where it was read.
    void LoadNode(const XmlView& element, CProjectNode& node, const ElementRow& row);
    /// False for a node that cannot take its element.
    bool ReadElement(const XmlView& element, CProjectNode& node);
    /// Reports what nobody takes; comments and instructions mean nothing.
    void PassOver(const XmlView& place);
    /// Of an element that has none of its own.
    void ReportAttributes(const XmlView& element);

    CProjectNode& m_project;
    NodeFactory& m_factory;
    LoadReport m_report;
    /// Holds the tree that is being loaded.
    XmlElement m_scope;
    /// The new objects that have no ID yet.
    std::vector<Item> m_unnumbered;
};

} // namespace kv
