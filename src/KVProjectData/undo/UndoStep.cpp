#include "KVProjectData/undo/UndoStep.h"

#include "KVProjectData/undo/CommandListState.h"
#include "KVProjectData/undo/ListState.h"
#include "KVProjectData/undo/ObjectState.h"

namespace kv {

CKVSbdProxy& UndoStep::Storyboards()
{
    if (!m_storyboards) m_storyboards = Make<CKVSbdProxy>();
    return *m_storyboards;
}

HRESULT UndoStep::AddStoryboards()
{
    const HRESULT finished = Storyboards().Finish();
    return FAILED(finished) ? finished : Add(m_storyboards);
}

HRESULT UndoStep::Close(bool commit)
{
    // What a host opened within the step and did not close is part of the step.
    m_unit->EndOpenChild();
    return m_manager.Close(m_unit.Get(), commit);
}

void UndoStep::Abandon()
{
    m_unit->EndOpenChild();
    m_unit->Empty();
    m_manager.Close(m_unit.Get(), false);
}

bool UndoStep::KeepState(CProjectNode& node)
{
    return Add(Make<CKVObjectState>(node)) == S_OK;
}

bool UndoStep::KeepCommands(CKVCommandList& commandList)
{
    return Add(Make<CKVCmdListState>(commandList)) == S_OK;
}

bool UndoStep::KeepListChange(CNodeList& list, ListChange change, CProjectNode& child, LONG index)
{
    return Add(Make<CKVListState>(list, change, child, index)) == S_OK;
}

} // namespace kv
