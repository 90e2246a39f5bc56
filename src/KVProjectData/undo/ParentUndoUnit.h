#pragma once
// The compound unit that a step consists of.

#include "KVProjectData/ICPSUndoParentEnum.h"
#include "KVProjectData/tree/UndoContext.h"
#include "KVProjectData/undo/UndoUnit.h"
#include "platform/undo/UnitEnumerator.h"

namespace kv {

/// Keeps the units of a step, which serve for undo and redo in turn: each knows the way back from the last way.
class CStdOleParentUndoUnit
    : public CStdOleUndoUnit<CStdOleParentUndoUnit, 0, IOleParentUndoUnit, ICPSUndoParentEnum, IOwnedUndoUnit> {
public:
    explicit CStdOleParentUndoUnit(const void* owner) : m_owner(owner) {}

    /// While the units run, Open, Close and Add answer S_OK and do nothing.
    HRESULT Open(IOleParentUndoUnit* parent) override;
    /// S_FALSE when it is this unit that its manager may close, S_OK when it has rolled back or has closed a unit
    /// within it. E_INVALIDARG for any but the innermost open unit.
    HRESULT Close(IOleParentUndoUnit* parent, BOOL commit) override;
    HRESULT Add(IOleUndoUnit* unit) override;
    /// S_OK when the unit is among the children, or theirs; else S_FALSE.
    HRESULT FindUnit(IOleUndoUnit* unit) override;
    HRESULT GetParentState(DWORD* state) override;
    /// Runs every unit, whatever the others return, and goes onto the opposite stack.
    HRESULT Do(IOleUndoManager* manager) override;

    HRESULT EnumChildren(IEnumOleUndoUnits** ppEnum) override;

    HRESULT BelongsTo(const void* owner) override { return owner == m_owner ? S_OK : S_FALSE; }

    /// Takes in a unit that was opened within this one and not closed, or drops it where that cannot be.
    void EndOpenChild();
    /// Takes out the units that belong to an owner; what a unit within this one took in stays there. They end with the
    /// end of driving undo. Throws Error for lack of memory, with all of them still there.
    void RemoveUnitsOf(const void* owner, DrivingUndo& driving);
    /// Drops all units.
    void Empty();

protected:
    bool HasOpenChild() const { return static_cast<bool>(m_openChild); }

private:
    /// There is an open child; on failure it stays open.
    HRESULT CloseOpenChild();

    const void* const m_owner;
    ComPtr<IOleParentUndoUnit> m_openChild;
    UnitStack m_children;
    DWORD m_state = UAS_NORMAL;
    bool m_newestFirst = true;
};

/// The units of a compound unit, which stays alive meanwhile.
class EnumChildUnits final : public UnitEnumerator {
public:
    EnumChildUnits(ComPtr<IUnknown> parent, const UnitStack& children)
        : UnitEnumerator(std::shared_ptr<const UnitStack>(&children, [kept = std::move(parent)](const UnitStack*) {}))
    {
    }
};

} // namespace kv
