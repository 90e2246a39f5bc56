#pragma once
// What all projects of the process share in their trees.

#include "KVProjectData/tree/NodeLists.h"

#include <atomic>

namespace kv {

/// Keeps the state of a node for undo: the open undo step.
class StateRecorder {
public:
    /// The description is for a person: kind and ID of the node. False when the state could not be kept.
    virtual bool KeepState(CProjectNode& node, std::string_view description) = 0;
    virtual bool KeepCommandList(CProjectNode& commandList, std::string_view description) = 0;

protected:
    ~StateRecorder() = default;
};

struct TreeState {
    /// The next ID to give out; only grows.
    std::atomic<ULONG> nextID{1};
    /// Null while no undo step is open.
    StateRecorder* openStep = nullptr;
    /// Off while an operation runs that records for itself.
    bool recordingEnabled = true;
    /// A change of the storyboards belongs to the open step.
    bool majorChange = false;
    /// Nodes whose state the open step keeps.
    CLockNodeList recordedNodes;
    /// Nodes that bind their effects anew after a storyboard's undo.
    CAttachList attachNodes;
};

TreeState& SharedTreeState();

/// Takes the next ID. Throws Error(E_UNEXPECTED) when none is left.
LONG TakeNextID();

} // namespace kv
