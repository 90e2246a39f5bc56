#pragma once
// The open step of a project: what its edits are recorded in.

#include "KVProjectData/tree/UndoContext.h"
#include "KVProjectData/undo/ParentUndoUnit.h"
#include "KVProjectData/undo/StoryboardProxy.h"

namespace kv {

/// The compound unit of one project's step.
class ProjectStep final : public CStdOleParentUndoUnit {
public:
    /// The project is not counted, and used for nothing but to tell its steps from others.
    explicit ProjectStep(const CProjectNode& project) : m_project(&project) {}

    bool BelongsTo(const CProjectNode& project) const { return m_project == &project; }

private:
    const CProjectNode* const m_project;
};

class UndoStep final : private StateRecorder {
public:
    /// For a unit that is open on the manager.
    UndoStep(ComPtr<IOleUndoManager> manager, ComPtr<ProjectStep> unit)
        : m_manager(std::move(manager)), m_unit(std::move(unit))
    {
    }

    StateRecorder* Recorder() { return this; }

    /// Adds a unit that is complete.
    HRESULT Add(const ComPtr<IOleUndoUnit>& unit) { return m_manager->Add(unit.Get()); }

    /// A storyboard whose undo block is open takes part in the step.
    void AppendStoryboard(ComPtr<IZXEProductionData> storyboard) { m_storyboards->Append(std::move(storyboard)); }
    /// Puts the storyboards' part over everything that was recorded, so that undo begins with it.
    HRESULT AddStoryboards();

    /// Closes the unit on the manager. Without `commit` all that it recorded is taken back.
    HRESULT Close(bool commit);
    /// Forgets what was recorded and takes nothing back.
    void Abandon();

private:
    bool KeepState(CProjectNode& node, Bstr description) override;
    bool KeepCommands(CKVCommandList& commandList, Bstr description) override;
    bool KeepListChange(CNodeList& list, ListChange change, CProjectNode& child, LONG index) override;

    const ComPtr<IOleUndoManager> m_manager;
    const ComPtr<ProjectStep> m_unit;
    const ComPtr<CKVSbdProxy> m_storyboards = Make<CKVSbdProxy>();
};

} // namespace kv
