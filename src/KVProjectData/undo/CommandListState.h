#pragma once
// Undo of the commands of a command list.

#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/undo/RecordedNode.h"
#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// Keeps the commands themselves, which nobody changes once they are in a list.
class CKVCmdListState final : public StateRecord<CKVCmdListState, 106> {
public:
    explicit CKVCmdListState(CKVCommandList& list) : m_list(list), m_commands(list.KeepCommands()) {}

protected:
    Bstr Description() const override { return m_list.Description(); }

private:
    /// Nothing happens to a list that is locked.
    HRESULT Exchange(DrivingUndo& driving) override
    {
        CKVCommandList* list = m_list.Find(driving);
        return list ? list->ExchangeCommands(m_commands) : S_FALSE;
    }

    const RecordedNode<CKVCommandList> m_list;
    CKVCommandList::Commands m_commands;
};

} // namespace kv
