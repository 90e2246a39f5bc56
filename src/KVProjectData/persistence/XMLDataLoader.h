#pragma once
// Loads a document into a project.

#include "KVProjectData/persistence/ElementTable.h"
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
    /// Elements that no node is found for, and nodes that cannot read their element, are passed over with what is below
    /// them. Objects without an ID get theirs when all that have one are there. E_OUTOFMEMORY on lack of memory,
    /// E_UNEXPECTED when no IDs are left; what was loaded till then stays.
    HRESULT Load(IXMLDOMNode* root);

private:
    void LoadRoot(IXMLDOMNode* root);
    /// The node that an element fills; null when there is none. `parent` may be null.
    CProjectNode* FindNode(const ElementRow* row, std::string_view name, CProjectNode* parent);
    /// Loads one element, and what is below it where it was read.
    void LoadElement(IXMLDOMNode* element, CProjectNode* parent);
    /// Below an element without a node only a project is looked for.
    void LoadChildren(IXMLDOMNode* element, CProjectNode* node);

    struct Item {
        ComPtr<IUnknown> reference;
        CProjectNode* node;
    };

    CProjectNode& m_project;
    NodeFactory& m_factory;
    /// The new objects that have no ID yet.
    std::vector<Item> m_unnumbered;
};

} // namespace kv
