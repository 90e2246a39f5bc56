#pragma once
// What the records of a node's state have in common.

#include "KVProjectData/undo/ChangedObject.h"
#include "KVProjectData/undo/RecordedNode.h"
#include "KVProjectData/undo/UndoUnit.h"

namespace kv {

/// A record exchanges what it keeps of a node for what is there: its own inverse. When there was nothing to exchange
/// with, or the exchange failed, its next turn, which would take that back, does nothing.
template <class Derived, ULONG kUnitType, class Node = CProjectNode>
class StateRecord : public CStdOleUndoUnit<Derived, kUnitType, IOleUndoUnit, IOwnedUndoUnit> {
public:
    HRESULT Do(IOleUndoManager* manager) final
    {
        if (m_passOver) {
            m_passOver = false;
        } else {
            DrivingUndo driving;
            const HRESULT exchanged = Guarded([&]() -> HRESULT {
                Node* const node = m_node.Find(driving);
                const HRESULT result = node ? Exchange(*node, driving) : S_FALSE;
                if (result == S_OK) Report(*node, driving);
                return result;
            });
            m_passOver = exchanged != S_OK;
            if (FAILED(exchanged)) return exchanged;
        }
        return this->AddTo(manager);
    }

    /// A record belongs to the project that its node stands in at the time.
    HRESULT BelongsTo(const void* owner) final
    {
        DrivingUndo driving;
        return Guarded([&] {
            CProjectNode* const node = m_node.Find(driving);
            const SectionLock links(ParentLinks());
            return node && &node->Root() == owner ? S_OK : S_FALSE;
        });
    }

protected:
    explicit StateRecord(Node& node) : m_node(node) {}

    /// S_FALSE when there is nothing to exchange with. A failure has changed nothing.
    virtual HRESULT Exchange(Node& node, DrivingUndo& driving) = 0;

    /// Reports what an exchange has changed.
    virtual void ReportTo(Node& node, DrivingUndo&) { ReportChange(node); }

    /// Kind and ID of the node.
    Bstr NodeDescription() const { return m_node.Description(); }

private:
    /// Without memory for the report the exchange has been made all the same.
    void Report(Node& node, DrivingUndo& driving)
    {
        Guarded([&] {
            ReportTo(node, driving);
            return S_OK;
        });
    }

    const RecordedNode<Node> m_node;
    bool m_passOver = false;
};

} // namespace kv
