#include "KVProjectData/undo/UndoStep.h"

#include "KVProjectData/undo/CommandListState.h"
#include "KVProjectData/undo/ListState.h"
#include "KVProjectData/undo/ObjectState.h"

namespace kv {

HRESULT UndoStep::AddStoryboards()
{
    const HRESULT finished = m_storyboards->Finish();
    return FAILED(finished) ? finished : Add(m_storyboards);
}

HRESULT UndoStep::Close(bool commit)
{
    // What a host opened within the step and did not close is part of the step.
    m_unit->CloseOpenChild();
    return m_manager->Close(m_unit.Get(), commit);
}

void UndoStep::Abandon()
{
    m_unit->CloseOpenChild();
    m_unit->Empty();
    m_manager->Close(m_unit.Get(), false);
}

bool UndoStep::KeepState(CProjectNode& node, Bstr description)
{
    return Add(CKVObjectState::Create(std::move(description), node)) == S_OK;
}

bool UndoStep::KeepCommands(CKVCommandList& commandList, Bstr description)
{
    return Add(CKVCmdListState::Create(std::move(description), commandList)) == S_OK;
}

bool UndoStep::KeepListChange(CNodeList& list, ListChange change, CProjectNode& child, LONG index)
{
    return Add(CKVListState::Create(nullptr, list, change, child, index)) == S_OK;
}

} // namespace kv
