#pragma once
// Undo of the commands of a command list.

#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// Keeps the commands themselves, which nobody changes once they are in a list.
class CKVCmdListState final : public StateRecord<CKVCmdListState, 106, CKVCommandList> {
public:
    explicit CKVCmdListState(CKVCommandList& list) : StateRecord(list), m_commands(list.KeepCommands()) {}

protected:
    Bstr Description() const override { return NodeDescription(); }

private:
    /// Nothing happens to a list that is locked.
    HRESULT Exchange(CKVCommandList& list, DrivingUndo&) override { return list.ExchangeCommands(m_commands); }

    CKVCommandList::Commands m_commands;
};

} // namespace kv
