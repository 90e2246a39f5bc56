#pragma once
// What all projects of the process share for undo.

#include "KVProjectData/tree/AttachList.h"
#include "platform/com/ComPtr.h"
#include "platform/undo/OleUndo.h"

#include <atomic>
#include <memory>

namespace kv {

class CKVCommandList;
class CNodeList;

/// The edits of a list.
enum class ListChange : ULONG { Add = 0, Remove = 1, Move = 2 };

/// What a node has of its own in a mode: made by the node when it is about to change its mode, filled with what it
/// leaves when it has done so, and let go with the record.
class KeptMode {
public:
    KeptMode() = default;
    KeptMode(const KeptMode&) = delete;
    KeptMode& operator=(const KeptMode&) = delete;
    virtual ~KeptMode() = default;

    /// Exchanges it for what the node has. Called while the node is held, outside of its section. S_FALSE when there is
    /// nothing to exchange with.
    virtual HRESULT Exchange() = 0;
};

/// A node's mode, and what the node has of its own in it, as a snapshot keeps them. What is kept stays in use for as
/// long as the image.
class ModeImage {
public:
    ModeImage() = default;
    ModeImage(const ModeImage&) = delete;
    ModeImage& operator=(const ModeImage&) = delete;
    virtual ~ModeImage() = default;

    /// Gives the node back mode and possession, before its values and what stands below it are restored. False when it
    /// has them still. Called inside the node's section; throws Error, and the node goes on as it was.
    virtual bool Enter() const = 0;
    /// Binds what stands below the node, once that is restored, to what `Enter` brought back.
    virtual void Bind() const = 0;
};

/// Keeps what an edit is about to replace: the open undo step.
class StateRecorder {
public:
    /// False when the state is not kept. Throws for lack of memory, before the edit.
    virtual bool KeepState(CProjectNode& node) = 0;
    virtual bool KeepCommands(CKVCommandList& commandList) = 0;
    /// `index` is where the child stands; for a move, where it came from.
    virtual bool KeepListChange(CNodeList& list, ListChange change, CProjectNode& child, LONG index) = 0;
    virtual bool KeepMode(CProjectNode& node, std::shared_ptr<KeptMode> mode) = 0;
    /// A button's properties and elements.
    virtual bool KeepButtonStyle(CProjectNode& button) = 0;
    /// The parameter document of a text.
    virtual bool KeepTextEffect(CProjectNode& text, const XmlElement& document) = 0;
    /// Lets go of what it keeps of a project and of the objects that stand in it. From here on the state of every node
    /// is kept anew. Called by the thread that drives undo.
    virtual void Forget(const CProjectNode& project) = 0;

protected:
    ~StateRecorder() = default;
};

/// Edits of any thread are recorded in the open step; recording, and the end of it, run inside `recording`, in which no
/// object of ours ends and none of our sections but the links is entered, by units that are asked whose they are: so
/// who forgets enters the links first. Where a host has a unit of its own open, its Add runs there, too, and must not
/// call the library, which would enter sections in the other order.
struct UndoContext {
    /// Entered by DrivingUndo alone, and before any node's section.
    CriticalSection driving;
    /// How often the thread that drives has entered, and what it used meanwhile.
    int drivers = 0;
    std::vector<ComPtr<IUnknown>> used;
    CriticalSection recording;
    /// Made by the first project.
    ComPtr<IOleUndoManager> manager;
    /// The project that has a step open, from its begin to its end; not counted.
    const CProjectNode* owner = nullptr;
    /// The open step; null without one, and once a snapshot has closed it early.
    std::atomic<StateRecorder*> step{nullptr};
    /// Of the step opened last, another one once that has forgotten; a node whose state it keeps bears the number.
    std::atomic<ULONG> stepNumber{0};
    /// A change of the storyboards belongs to the open step.
    std::atomic<bool> majorChange{false};
    /// Nodes that bind their effects anew after a storyboard's undo.
    CAttachList attachNodes;
    /// Another number after every change of which menus stand in projects, and of the productions that they have.
    std::atomic<ULONGLONG> storyboardState{1};
};

UndoContext& SharedUndoContext();

/// To be told when the change has been made.
inline void StoryboardsMoved()
{
    SharedUndoContext().storyboardState.fetch_add(1, std::memory_order_release);
}

/// Binds a node that has come back to its effect: now, or when the storyboard has brought the effect back.
void AttachNowOrLater(CProjectNode& node);

/// While one lives, what its thread edits is not recorded: the operation that runs records for itself.
class RecordingOff {
public:
    RecordingOff() { ++s_depth; }
    RecordingOff(const RecordingOff&) = delete;
    RecordingOff& operator=(const RecordingOff&) = delete;
    ~RecordingOff() { --s_depth; }

    static bool InForce() { return s_depth > 0; }

private:
    static inline thread_local int s_depth = 0;
};

/// Has the open step keep what an edit is about to replace; `keep` is called with the recorder inside the section of
/// recording. False without a step, and while recording is off.
template <class Keep>
bool KeepInStep(bool major, Keep&& keep)
{
    UndoContext& context = SharedUndoContext();
    if (!context.step || RecordingOff::InForce()) return false;
    const SectionLock lock(context.recording);
    StateRecorder* const step = context.step;
    if (!step) return false;
    if (major) context.majorChange = true;
    return keep(*step);
}

/// For as long as a thread opens, ends, runs or discards steps, or takes a project's out. Declared before any section
/// is entered.
class DrivingUndo {
public:
    DrivingUndo()
    {
        m_context.driving.Enter();
        ++m_context.drivers;
    }
    DrivingUndo(const DrivingUndo&) = delete;
    DrivingUndo& operator=(const DrivingUndo&) = delete;
    ~DrivingUndo()
    {
        // A project that ends with its last reference waits for its worker, which may wait for a section.
        std::vector<ComPtr<IUnknown>> used;
        if (--m_context.drivers == 0) used.swap(m_context.used);
        m_context.driving.Leave();
    }

    /// Keeps an object until all sections are left.
    void Keep(ComPtr<IUnknown> object) { m_context.used.push_back(std::move(object)); }

private:
    UndoContext& m_context = SharedUndoContext();
};

} // namespace kv
