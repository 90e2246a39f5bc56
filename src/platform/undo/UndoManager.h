#pragma once
// The undo manager: two stacks of units, and the parent units that are open.

#include "platform/undo/UnitEnumerator.h"

namespace kv {

/// Belongs to one thread at a time. A unit is at one place only: on a stack, in an open parent, or running.
class UndoManager final : public Object<IOleUndoManager, IUndoUnitRemoval> {
public:
    using Object::Object;

    HRESULT Open(IOleParentUndoUnit* parent) override;
    HRESULT Close(IOleParentUndoUnit* parent, BOOL commit) override;
    HRESULT Add(IOleUndoUnit* unit) override;
    HRESULT GetOpenParentState(DWORD* state) override;
    HRESULT DiscardFrom(IOleUndoUnit* unit) override;
    HRESULT UndoTo(IOleUndoUnit* unit) override;
    HRESULT RedoTo(IOleUndoUnit* unit) override;
    HRESULT EnumUndoable(IEnumOleUndoUnits** units) override;
    HRESULT EnumRedoable(IEnumOleUndoUnits** units) override;
    HRESULT GetLastUndoDescription(BSTR* description) override;
    HRESULT GetLastRedoDescription(BSTR* description) override;
    HRESULT Enable(BOOL enable) override;

    HRESULT RemoveUnit(IOleUndoUnit* unit) override;
    HRESULT RemoveUnitsOf(const void* owner) override;

private:
    enum class State { Recording, Undoing, Redoing };

    UnitStack& StackFor(State state) { return state == State::Undoing ? m_redo : m_undo; }
    /// Puts a unit on the stack that the state fills.
    HRESULT Push(ComPtr<IOleUndoUnit> unit);
    HRESULT RunTo(IOleUndoUnit* unit, State state);
    /// Runs the first `count` units of a stack, the newest first. Those that ran are gone from it; one that failed is
    /// in its place again.
    HRESULT Run(UnitStack& stack, std::size_t count, State state);

    bool m_enabled = true;
    State m_state = State::Recording;
    ComPtr<IOleParentUndoUnit> m_open;
    UnitStack m_undo;
    UnitStack m_redo;
    /// Those whose units are to be removed when the run is over.
    std::vector<const void*> m_ended;
};

} // namespace kv
