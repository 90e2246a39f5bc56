#pragma once
// Undo of a node's properties.

#include "KVProjectData/undo/RecordedNode.h"
#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// The values that the node would write into a document, and what else of it is recorded.
class CKVObjectState final : public StateRecord<CKVObjectState, 102> {
public:
    explicit CKVObjectState(CProjectNode& node) : m_node(node), m_record(node.GetRecord()) {}

protected:
    Bstr Description() const override { return m_node.Description(); }

private:
    HRESULT Exchange(DrivingUndo& driving) override
    {
        CProjectNode* node = m_node.Find(driving);
        if (!node) return S_FALSE;
        const SectionLock lock(node->Section());
        node->ExchangeRecord(m_record);
        return S_OK;
    }

    const RecordedNode<> m_node;
    RecordedValues m_record;
};

} // namespace kv
