#pragma once
// The node that an undo record serves.

#include "KVProjectData/tree/UndoContext.h"

namespace kv {

template <class Node = CProjectNode>
class RecordedNode {
public:
    explicit RecordedNode(Node& node) : m_node(node), m_type(node.Type()), m_id(node.ID()) {}

    /// The node, which stays as long as undo is driven; null when it is gone.
    Node* Find(DrivingUndo& driving) const
    {
        ComPtr<IUnknown> object = m_node.Hold();
        if (!object) return nullptr;
        driving.Keep(std::move(object));
        return &*m_node;
    }

    /// Kind and ID of the node when it was recorded, for a person: "typeTitle[5]".
    Bstr Description() const
    {
        std::string text(NodeTypeName(m_type));
        text += '[' + std::to_string(m_id) + ']';
        return Bstr(ToUtf16(text));
    }

private:
    const NodeReference<Node> m_node;
    const NodeType m_type;
    const LONG m_id;
};

} // namespace kv
