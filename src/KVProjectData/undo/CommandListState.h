#pragma once
// Undo of the commands of a command list.

#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/undo/RecordedNode.h"
#include "KVProjectData/undo/StateRecord.h"
#include "platform/com/TaskMemory.h"

namespace kv {

/// Commands in task memory, with the XML of each.
class SavedCommands {
public:
    SavedCommands() = default;
    /// Throws Error when they cannot be copied.
    explicit SavedCommands(CKVCommandList& list);
    SavedCommands(SavedCommands&& other) noexcept
        : m_commands(std::move(other.m_commands)), m_count(std::exchange(other.m_count, 0))
    {
    }
    SavedCommands& operator=(SavedCommands&& other) noexcept
    {
        std::swap(m_commands, other.m_commands);
        std::swap(m_count, other.m_count);
        return *this;
    }
    ~SavedCommands() { Free(); }

    HRESULT ApplyTo(CKVCommandList& list) const { return list.ReplaceCommands(m_count, m_commands.get()); }

private:
    void Free();

    UniqueTaskMem<DiscCommandParams> m_commands;
    LONG m_count = 0;
};

class CKVCmdListState final : public StateRecord<CKVCmdListState, 106> {
public:
    explicit CKVCmdListState(CKVCommandList& list) : m_list(list), m_saved(list) {}

protected:
    Bstr Description() const override { return m_list.Description(); }

private:
    /// Nothing happens to a list that is locked.
    HRESULT Exchange() override;

    const RecordedNode m_list;
    SavedCommands m_saved;
};

} // namespace kv
