#include "KVProjectData/undo/ProjectUndo.h"

#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/com/Activation.h"

#include <algorithm>

namespace kv {
namespace {

/// A group of all storyboards; empty where one of them has to be asked for its block itself, and for none.
ComPtr<IZXEUndoGroup> NewGroup(const std::vector<ComPtr<IUnknown>>& storyboards)
{
    ComPtr<IZXEUndoGroup> group;
    if (storyboards.empty() || FAILED(CreateInstance(CLSID_ZXEUndoGroup, group))) return nullptr;
    const auto joins = [&](const auto& storyboard) { return group->AddProduction(storyboard.Get()) == S_OK; };
    return std::ranges::all_of(storyboards, joins) ? group : nullptr;
}

} // namespace

void ProjectUndo::Initialise()
{
    const DrivingUndo driving;
    ComPtr<IOleUndoManager>& shared = SharedUndoContext().manager;
    if (!shared) {
        ComPtr<IUnknown> manager;
        CreateInstance(CLSID_OleUndoManager, manager);
        shared = Query<IOleUndoManager>(manager);
    }
    m_manager = shared;
}

void ProjectUndo::Terminate()
{
    const DrivingUndo driving;
    StopRecording();
    if (m_step) m_step->Abandon();
    Release();
    CloseStoryboards(false);
    m_group.Reset();
    if (!m_manager) return;
    m_snapshotStep.Reset();
    m_snapshot.Reset();
    if (const auto removal = Query<IUndoUnitRemoval>(m_manager)) removal->RemoveUnitsOf(&m_project);
    m_manager.Reset();
}

HRESULT ProjectUndo::Begin(BSTR description)
{
    return Guarded([&] {
        if (!m_manager) return KV_E_NO_UNDO_MANAGER;
        const DrivingUndo driving;
        UndoContext& context = SharedUndoContext();
        const SectionLock projectLock(m_project.Section());
        if (context.owner) return KV_E_UNDO_STEP_OPEN;
        context.majorChange = false;
        context.attachNodes.Restart();
        ++context.stepNumber;
        auto unit = Make<ProjectStep>(m_project);
        unit->SetDescription(Bstr::CopyOf(description));
        const HRESULT opened = m_manager->Open(unit.Get());
        if (FAILED(opened)) return opened;
        m_step.emplace(*m_manager.Get(), std::move(unit));
        m_snapshotStep.Reset();
        m_snapshot.Reset();
        context.owner = &m_project;
        context.step.store(m_step->Recorder(), std::memory_order_release);
        return OpenMenus();
    });
}

HRESULT ProjectUndo::OpenMenus()
{
    const DrivingUndo driving;
    const SectionLock projectLock(m_project.Section());
    if (!m_step) return S_FALSE;
    if (OpenGroup()) return S_OK;
    for (const auto& storyboard : m_menus.MenuStoryboards()) {
        const HRESULT opened = OpenBlock(storyboard.Get());
        if (FAILED(opened)) return opened;
    }
    return S_OK;
}

HRESULT ProjectUndo::JoinStoryboard(IUnknown* storyboard)
{
    if (!SharedUndoContext().step.load(std::memory_order_acquire)) return S_FALSE;
    const DrivingUndo driving;
    const SectionLock projectLock(m_project.Section());
    if (!m_step) return S_FALSE;
    const HRESULT opened = OpenBlock(storyboard);
    return opened == ZXE_E_UNDO_BLOCK_OPEN ? S_OK : opened;
}

HRESULT ProjectUndo::TakeSnapshot(BSTR description)
{
    return Guarded([&] {
        const DrivingUndo driving;
        const SectionLock projectLock(m_project.Section());
        const HRESULT begun = Begin(description);
        if (FAILED(begun)) return begun;
        const auto snapshot = Make<CKVProjectSnapshot>(m_project);
        HRESULT added = m_step->Add(snapshot);
        // What the storyboards' blocks are going to hold belongs to the snapshot.
        if (SUCCEEDED(added) && (m_groupOpen || !m_storyboards.empty())) added = AddStoryboards();
        if (FAILED(added)) return added;
        StopRecording();
        m_snapshotStep = m_step->Unit();
        m_snapshot = snapshot;
        const HRESULT closed = m_step->Close(true);
        m_step.reset();
        return closed;
    });
}

HRESULT ProjectUndo::CancelSnapshot()
{
    ComPtr<IEnumOleUndoUnits> units;
    ComPtr<IOleUndoUnit> newest;
    const HRESULT listed = m_manager->EnumUndoable(units.Put());
    if (FAILED(listed)) return listed;
    units->Next(1, newest.Put(), nullptr);
    if (!IsSameObject(newest.Get(), m_snapshotStep->Controlling())) {
        // Other steps have come over it, or it was undone already: what is newest now is not to be taken back.
        m_snapshotStep.Reset();
        m_snapshot.Reset();
        return E_UNEXPECTED;
    }
    const HRESULT undone = Undo();
    if (FAILED(undone)) return undone;
    // A step does not tell what its units return. One that was not taken back is in its place again.
    const HRESULT restored = m_snapshot->Restored();
    if (FAILED(restored)) Redo();
    return restored;
}

HRESULT ProjectUndo::End(bool commit)
{
    return Guarded([&] {
        const DrivingUndo driving;
        {
            const SectionLock projectLock(m_project.Section());
            if (m_step && commit && SharedUndoContext().majorChange) {
                const HRESULT added = AddStoryboards();
                if (FAILED(added)) return added;
            }
            if (m_step) StopRecording();
        }
        // As in an undo, effects are what they were before the records take elements from them, or give them back.
        if (m_step && !commit) CloseStoryboards(false);
        {
            const SectionLock projectLock(m_project.Section());
            if (m_step) m_step->Close(commit);
            Release();
        }
        // A snapshot takes them back with the rest.
        CloseStoryboards(true);
        if (!commit && m_snapshotStep) {
            const HRESULT cancelled = CancelSnapshot();
            if (FAILED(cancelled)) return cancelled;
        }
        m_snapshotStep.Reset();
        m_snapshot.Reset();
        return S_OK;
    });
}

void ProjectUndo::StopRecording()
{
    UndoContext& context = SharedUndoContext();
    if (context.owner != &m_project) return;
    const SectionLock lock(context.recording);
    context.step.store(nullptr, std::memory_order_release);
}

void ProjectUndo::Release()
{
    m_step.reset();
    UndoContext& context = SharedUndoContext();
    if (context.owner == &m_project) context.owner = nullptr;
}

HRESULT ProjectUndo::BeginStoryboard(IUnknown* storyboard)
{
    return Guarded([&] {
        const DrivingUndo driving;
        const SectionLock projectLock(m_project.Section());
        if (!m_step) return S_FALSE;
        const HRESULT opened = OpenBlock(storyboard);
        if (SUCCEEDED(opened)) MarkMajorChange();
        return opened;
    });
}

bool ProjectUndo::OpenGroup()
{
    const ULONGLONG state = SharedUndoContext().storyboardState.load(std::memory_order_acquire);
    if (m_groupedAt != state) {
        // A storyboard is in one group only.
        m_group.Reset();
        m_group = NewGroup(m_menus.MenuStoryboards());
        m_groupedAt = state;
    }
    m_groupOpen = m_group && SUCCEEDED(m_group->OpenUndoBlocks());
    m_proxied = 0;
    return m_groupOpen;
}

HRESULT ProjectUndo::OpenBlock(IUnknown* storyboard)
{
    auto data = Query<IZXEProductionData>(storyboard);
    if (!data) return E_POINTER;
    m_storyboards.push_back(data);
    const HRESULT opened = data->OpenUndoBlock();
    if (FAILED(opened)) m_storyboards.pop_back();
    return opened;
}

template <class Visit>
void ProjectUndo::ForEachTouched(LONG& next, Visit&& visit)
{
    ComPtr<IUnknown> touched;
    for (; m_group->GetTouched(next, touched.Put()) == S_OK; ++next)
        if (auto storyboard = Query<IZXEProductionData>(touched)) visit(std::move(storyboard));
}

HRESULT ProjectUndo::AddStoryboards()
{
    const auto proxy = Make<CKVSbdProxy>();
    const auto append = [&](ComPtr<IZXEProductionData> storyboard) { proxy->Append(std::move(storyboard)); };
    LONG proxied = 0;
    if (m_groupOpen) ForEachTouched(proxied, append);
    std::ranges::for_each(m_storyboards, append);
    HRESULT added = proxy->Finish();
    if (SUCCEEDED(added)) added = m_step->Add(proxy);
    if (FAILED(added)) return added;
    m_proxy = proxy;
    m_proxied = proxied;
    return S_OK;
}

void ProjectUndo::CloseStoryboards(bool commit)
{
    const VARIANT_BOOL bCommit = commit ? VARIANT_TRUE : VARIANT_FALSE;
    const auto proxy = std::exchange(m_proxy, nullptr);
    if (std::exchange(m_groupOpen, false)) {
        m_group->CloseUndoBlocks(bCommit);
        // Those that were edited since the others' part was added have something to undo, too.
        if (proxy && commit) ForEachTouched(m_proxied, [&](auto storyboard) { proxy->Append(std::move(storyboard)); });
    }
    for (const auto& storyboard : std::exchange(m_storyboards, {}))
        storyboard->CloseUndoBlock(bCommit);
}

HRESULT ProjectUndo::Undo()
{
    if (!m_manager) return S_FALSE;
    const DrivingUndo driving;
    const SectionLock projectLock(m_project.Section());
    return m_manager->UndoTo(nullptr);
}

HRESULT ProjectUndo::Redo()
{
    if (!m_manager) return S_FALSE;
    const DrivingUndo driving;
    const SectionLock projectLock(m_project.Section());
    return m_manager->RedoTo(nullptr);
}

HRESULT ProjectUndo::GetManager(IOleUndoManager** manager)
{
    if (!manager) return E_POINTER;
    *manager = nullptr;
    return m_manager ? m_manager->QueryInterface(IOleUndoManager::IID, reinterpret_cast<void**>(manager))
                     : KV_E_NO_UNDO_MANAGER;
}

HRESULT ProjectUndo::Can(VARIANT_BOOL* can, HRESULT (IOleUndoManager::*describe)(BSTR*))
{
    if (!can) return S_FALSE;
    *can = VARIANT_FALSE;
    if (!m_manager) return E_POINTER;
    const DrivingUndo driving;
    Bstr description;
    if ((m_manager.Get()->*describe)(description.Put()) == S_OK) *can = VARIANT_TRUE;
    return S_OK;
}

void ProjectUndo::DiscardAll()
{
    if (m_manager) m_manager->DiscardFrom(nullptr);
    UndoContext& context = SharedUndoContext();
    if (StateRecorder* const step = context.step) step->Forget(m_project);
    if (!m_step) return;
    LeaveStoryboards();
    context.majorChange = false;
}

void ProjectUndo::LeaveStoryboards()
{
    const DrivingUndo driving;
    const SectionLock projectLock(m_project.Section());
    if (!m_step) return;
    CloseStoryboards(true);
}

} // namespace kv
