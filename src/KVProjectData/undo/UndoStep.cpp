#include "KVProjectData/undo/UndoStep.h"

#include "KVProjectData/undo/ButtonStlState.h"
#include "KVProjectData/undo/CommandListState.h"
#include "KVProjectData/undo/ListState.h"
#include "KVProjectData/undo/NativeModeState.h"
#include "KVProjectData/undo/ObjectState.h"
#include "KVProjectData/undo/TextEffectState.h"

namespace kv {

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

template <class Record, class... Arguments>
bool UndoStep::Keep(Arguments&&... arguments)
{
    // Whoever records has entered the section.
    const HRESULT added = Guarded([&] { return m_manager.Add(Make<Record>(arguments...).Get()); });
    if (added == E_OUTOFMEMORY) throw Error(added);
    return added == S_OK;
}

bool UndoStep::KeepState(CProjectNode& node)
{
    return Keep<CKVObjectState>(node);
}

bool UndoStep::KeepCommands(CKVCommandList& commandList)
{
    return Keep<CKVCmdListState>(commandList);
}

bool UndoStep::KeepListChange(CNodeList& list, ListChange change, CProjectNode& child, LONG index)
{
    return Keep<CKVListState>(list, change, child, index);
}

bool UndoStep::KeepMode(CProjectNode& node, std::shared_ptr<KeptMode> mode)
{
    return Keep<CKVNativeModeState>(node, mode);
}

bool UndoStep::KeepButtonStyle(CProjectNode& button)
{
    return Keep<CKVButtonStlState>(button);
}

bool UndoStep::KeepTextEffect(CProjectNode& text, const XmlElement& document)
{
    return Keep<CKVTextEffectState>(text, document);
}

void UndoStep::Forget(const CProjectNode& project)
{
    DrivingUndo driving;
    UndoContext& context = SharedUndoContext();
    const SectionLock links(ParentLinks());
    const SectionLock lock(context.recording);
    m_unit->RemoveUnitsOf(&project, driving);
    ++context.stepNumber;
}

} // namespace kv
