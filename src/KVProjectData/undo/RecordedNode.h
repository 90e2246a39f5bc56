#pragma once
// The node that an undo record serves.

#include "KVProjectData/tree/ProjectNode.h"

namespace kv {

class RecordedNode {
public:
    explicit RecordedNode(CProjectNode& node) : m_node(node.Link()), m_type(node.Type()), m_id(node.ID()) {}

    /// Null when the node is gone.
    CProjectNode* Find() const { return *m_node; }

    /// Kind and ID of the node when it was recorded, for a person: "typeTitle[5]".
    Bstr Description() const;

private:
    const NodeLink m_node;
    const NodeType m_type;
    const LONG m_id;
};

} // namespace kv
