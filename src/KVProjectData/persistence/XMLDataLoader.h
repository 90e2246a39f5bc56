#pragma once
// Loads a document into a node.

#include "KVProjectData/persistence/ElementTable.h"
#include "KVProjectData/tree/LoadReport.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/ComPtr.h"

#include <vector>

namespace kv {

class CKVXMLDataLoader {
public:
    /// `target` is what the elements of its type are loaded into: a project, a menu or a button.
    explicit CKVXMLDataLoader(CProjectNode& target) : m_target(target) {}

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

    /// A project's elements are the project's wherever they stand. Of those of a menu or a button the first one counts
    /// that stands in no other node's.
    bool IsTarget(const ElementRow& row, const CProjectNode* parent) const
    {
        return row.type == m_target.Type() && (!row.Item() || (!parent && !m_found));
    }
    void LoadRoot(IXMLDOMNode* root);
    void LoadDocument(IXMLDOMNode& document);
    /// The node that an element fills; null when there is none. `parent` may be null.
    CProjectNode* FindNode(const ElementRow* row, std::string_view name, CProjectNode* parent);
    /// Null where none can stand or be made.
    CProjectNode* CreateItem(NodeType type, CProjectNode& parent);
    /// Loads what stands at a place. Below an element without a node only elements of the target are looked for.
    void LoadPlace(const XmlView& place, CProjectNode* parent);
    /// Loads one element, and what is below it where it was read.
    void LoadNode(const XmlView& element, CProjectNode& node, const ElementRow& row);
    /// False for a node that cannot take its element.
    bool ReadElement(const XmlView& element, CProjectNode& node);
    /// Reports what nobody takes; comments and instructions mean nothing.
    void PassOver(const XmlView& place);
    /// The same of what stands beside the project, where the first productions are the host's.
    void PassOverBeside(const XmlView& place);
    /// Of an element that has none of its own.
    void ReportAttributes(const XmlView& element);

    CProjectNode& m_target;
    bool m_found = false;
    bool m_metProductions = false;
    LoadReport m_report;
    /// Holds the tree that is being loaded.
    XmlElement m_scope;
    /// The new objects that have no ID yet.
    std::vector<Item> m_unnumbered;
};

} // namespace kv
