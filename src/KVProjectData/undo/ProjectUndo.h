#pragma once
// A project's part in undo: its steps on the manager that all projects of the process share.

#include "KVProjectData/undo/ProjectSnapshot.h"
#include "KVProjectData/undo/StoryboardProxy.h"
#include "KVProjectData/undo/UndoStep.h"

#include <optional>
#include <vector>

namespace kv {

/// Tells which storyboards take part in every step of a project: the project, which knows its menus.
class StepStoryboards {
public:
    virtual std::vector<ComPtr<IUnknown>> MenuStoryboards() = 0;

protected:
    ~StepStoryboards() = default;
};

/// What opens, ends, undoes and redoes takes the project's section. Without an undo manager there is nothing to undo,
/// and the result codes say so.
class ProjectUndo {
public:
    ProjectUndo(CProjectNode& project, StepStoryboards& menus) : m_project(project), m_menus(menus) {}

    /// Shares the manager of the process, or makes it; where that fails the project is without one.
    void Initialise();
    /// Takes the project's steps out of the manager, as the project ends.
    void Terminate();

    /// Opens the undo blocks of the menus' storyboards, too. When one fails, its result is returned, and the step is
    /// open all the same.
    HRESULT Begin(BSTR description);
    HRESULT TakeSnapshot(BSTR description);
    HRESULT End(bool commit);
    /// The storyboards were changed within the open step.
    void MarkMajorChange()
    {
        if (m_step) SharedUndoContext().majorChange = true;
    }
    /// The menus that the project has now take part in the open step with their storyboards. S_FALSE without a step.
    HRESULT OpenMenus();
    /// The storyboard of a menu that has come into the project takes part in the open step, as far as it does not yet.
    /// S_FALSE without a step.
    HRESULT JoinStoryboard(IUnknown* storyboard);
    /// The storyboards close their blocks and keep their edits; the step knows of them no more.
    void LeaveStoryboards();
    /// `storyboard` is not null.
    HRESULT BeginStoryboard(IUnknown* storyboard);
    HRESULT Undo();
    HRESULT Redo();
    HRESULT GetManager(IOleUndoManager** manager);
    HRESULT CanUndo(VARIANT_BOOL* can) { return Can(can, &IOleUndoManager::GetLastUndoDescription); }
    HRESULT CanRedo(VARIANT_BOOL* can) { return Can(can, &IOleUndoManager::GetLastRedoDescription); }

    /// Before the project gets other contents: no step can be undone any more, of whichever project, and the open one
    /// forgets what it recorded of this project and of its storyboards.
    void DiscardAll();

private:
    /// False when the blocks of the menus' storyboards have to be opened one by one.
    bool OpenGroup();
    HRESULT OpenBlock(IUnknown* storyboard);
    /// Gives `visit` the storyboards of the group that were touched and that it was not given before.
    template <class Visit>
    void ForEachTouched(LONG& next, Visit&& visit);
    /// Puts the storyboards' part over everything that was recorded, so that undo begins with it.
    HRESULT AddStoryboards();
    HRESULT Can(VARIANT_BOOL* can, HRESULT (IOleUndoManager::*describe)(BSTR*));
    /// From here on nothing is recorded in the step; the next one records all nodes anew.
    void StopRecording();
    /// Lets other steps be opened.
    void Release();
    void CloseStoryboards(bool commit);
    /// Takes back the step that the pending snapshot consists of.
    HRESULT CancelSnapshot();

    CProjectNode& m_project;
    StepStoryboards& m_menus;
    ComPtr<IOleUndoManager> m_manager;
    std::optional<UndoStep> m_step;
    /// The step that a snapshot has closed early, and that is still to be ended; empty without one.
    ComPtr<ProjectStep> m_snapshotStep;
    ComPtr<CKVProjectSnapshot> m_snapshot;
    /// Of the menus' storyboards as they were at a state of the process's storyboards; empty where the engine has no
    /// groups, or not for all of them.
    ComPtr<IZXEUndoGroup> m_group;
    ULONGLONG m_groupedAt = 0;
    /// Its blocks are open in this step.
    bool m_groupOpen = false;
    /// Others with a block open in this step.
    std::vector<ComPtr<IZXEProductionData>> m_storyboards;
    /// The part of the storyboards in this step, once it was added, and how many of the group's it has.
    ComPtr<CKVSbdProxy> m_proxy;
    LONG m_proxied = 0;
};

} // namespace kv
