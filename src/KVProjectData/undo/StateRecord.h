#pragma once
// What the records of a node's state have in common.

#include "KVProjectData/tree/UndoContext.h"
#include "KVProjectData/undo/UndoUnit.h"

namespace kv {

/// A record exchanges what it keeps for what is there: its own inverse. When there was nothing to exchange with, or the
/// exchange failed, its next turn, which would take that back, does nothing.
template <class Derived, ULONG kUnitType>
class StateRecord : public CStdOleUndoUnit<Derived, kUnitType, IOleUndoUnit> {
public:
    HRESULT Do(IOleUndoManager* manager) final
    {
        if (m_passOver) {
            m_passOver = false;
        } else {
            DrivingUndo driving;
            const HRESULT exchanged = Guarded([&] { return Exchange(driving); });
            m_passOver = exchanged != S_OK;
            if (FAILED(exchanged)) return exchanged;
        }
        return this->AddTo(manager);
    }

protected:
    /// S_FALSE when there is nothing to exchange with. A failure has changed nothing.
    virtual HRESULT Exchange(DrivingUndo& driving) = 0;

private:
    bool m_passOver = false;
};

} // namespace kv
