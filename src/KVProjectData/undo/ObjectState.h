#pragma once
// Undo of a node's properties.

#include "KVProjectData/undo/NodeAddress.h"
#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// The attributes that the node would write into a document.
class CKVObjectState final : public StateRecord<CKVObjectState, 102> {
public:
    explicit CKVObjectState(CProjectNode& node) : m_node(node) { node.GetAttributes(m_attributes); }

private:
    HRESULT Exchange() override
    {
        CProjectNode* node = m_node.Find();
        if (!node) return S_FALSE;
        AttributeMap current;
        node->GetAttributes(current);
        node->SetAttributes(m_attributes);
        m_attributes = std::move(current);
        return S_OK;
    }

    const NodeAddress m_node;
    AttributeMap m_attributes;
};

} // namespace kv
