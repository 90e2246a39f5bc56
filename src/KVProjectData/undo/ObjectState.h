#pragma once
// Undo of a node's properties.

#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// The values that the node would write into a document, and what else of it is recorded.
class CKVObjectState final : public StateRecord<CKVObjectState, 102> {
public:
    explicit CKVObjectState(CProjectNode& node) : StateRecord(node), m_record(node.GetRecord()) {}

protected:
    Bstr Description() const override { return NodeDescription(); }

private:
    HRESULT Exchange(CProjectNode& node, DrivingUndo&) override
    {
        const SectionLock lock(node.Section());
        node.ExchangeRecord(m_record);
        return S_OK;
    }

    RecordedValues m_record;
};

} // namespace kv
