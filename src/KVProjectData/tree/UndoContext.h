#pragma once
// What all projects of the process share for undo.

#include "KVProjectData/tree/NodeLists.h"
#include "platform/com/ComPtr.h"
#include "platform/undo/OleUndo.h"

#include <atomic>

namespace kv {

class CKVCommandList;
class CNodeList;

/// The edits of a list.
enum class ListChange : ULONG { Add = 0, Remove = 1, Move = 2 };

/// Keeps what an edit is about to replace: the open undo step.
class StateRecorder {
public:
    /// False when the state is not kept. Throws for lack of memory, before the edit.
    virtual bool KeepState(CProjectNode& node) = 0;
    virtual bool KeepCommands(CKVCommandList& commandList) = 0;
    /// `index` is where the child stands; for a move, where it came from.
    virtual bool KeepListChange(CNodeList& list, ListChange change, CProjectNode& child, LONG index) = 0;

protected:
    ~StateRecorder() = default;
};

/// The objects that a snapshot kept, handed back in the order of its document while that is loaded.
class KeptObjects {
public:
    /// The next object, when it is of that kind and stands in no list; null otherwise.
    virtual CProjectNode* TakeNext(NodeType type) = 0;

protected:
    ~KeptObjects() = default;
};

/// Steps are opened and closed, undone and redone by one thread at a time. Edits of other threads may be recorded in
/// the open step meanwhile; recording, and the end of it, run inside the section.
struct UndoContext {
    CriticalSection section;
    /// Made by the first project.
    ComPtr<IOleUndoManager> manager;
    /// The project that has a step open, from its begin to its end; not counted.
    const CProjectNode* owner = nullptr;
    /// The open step; null without one, and once a snapshot has closed it early.
    std::atomic<StateRecorder*> step{nullptr};
    /// Off while an operation runs that records for itself.
    bool recordingEnabled = true;
    /// A change of the storyboards belongs to the open step.
    std::atomic<bool> majorChange{false};
    /// The project that a snapshot is being restored in, and what the snapshot kept; null at all other times. Used
    /// inside the section.
    const CProjectNode* restored = nullptr;
    KeptObjects* kept = nullptr;
    /// Nodes whose state the open step keeps.
    CLockNodeList recordedNodes;
    /// Nodes that bind their effects anew after a storyboard's undo.
    CAttachList attachNodes;
};

UndoContext& SharedUndoContext();

} // namespace kv
