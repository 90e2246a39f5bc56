#pragma once
// The undo interfaces: units that know how to go back, and the manager that keeps them.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"

struct IOleUndoManager;

/// States of a parent unit. A blocked one takes no further units.
inline constexpr DWORD UAS_NORMAL = 0;
inline constexpr DWORD UAS_BLOCKED = 1;

/// The class identity of undo managers, for CoCreateInstance.
inline constexpr CLSID CLSID_OleUndoManager = "0d4cf6ae-6c35-4bb0-9c3e-52a31f1b6d20"_guid;

struct IOleUndoUnit : IUnknown {
    static constexpr GUID IID = "894ad3b0-ef97-11ce-9bc9-00aa00608e01"_guid;
    using Base = IUnknown;

    /// Restores what the unit recorded and hands the manager (which may be null) a unit for the way back.
    virtual HRESULT Do(IOleUndoManager* manager) = 0;
    virtual HRESULT GetDescription(BSTR* description) = 0;
    virtual HRESULT GetUnitType(CLSID* clsid, LONG* type) = 0;
    virtual HRESULT OnNextAdd() = 0;
};

struct IOleParentUndoUnit : IOleUndoUnit {
    static constexpr GUID IID = "a1faf330-ef97-11ce-9bc9-00aa00608e01"_guid;
    using Base = IOleUndoUnit;

    virtual HRESULT Open(IOleParentUndoUnit* parent) = 0;
    virtual HRESULT Close(IOleParentUndoUnit* parent, BOOL commit) = 0;
    virtual HRESULT Add(IOleUndoUnit* unit) = 0;
    virtual HRESULT FindUnit(IOleUndoUnit* unit) = 0;
    virtual HRESULT GetParentState(DWORD* state) = 0;
};

struct IEnumOleUndoUnits : IUnknown {
    static constexpr GUID IID = "b3e7c340-ef97-11ce-9bc9-00aa00608e01"_guid;
    using Base = IUnknown;

    virtual HRESULT Next(ULONG count, IOleUndoUnit** units, ULONG* fetched) = 0;
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumOleUndoUnits** copy) = 0;
};

/// Keeps units on an undo and a redo stack. Units that are added go into the innermost open parent, else onto the undo
/// stack, and while an undo runs onto the redo stack. What is added newly, by neither undo nor redo, empties the redo
/// stack. A disabled manager answers S_OK to Open, Close and Add and keeps nothing. E_POINTER for null, except where
/// null has a meaning.
struct IOleUndoManager : IUnknown {
    static constexpr GUID IID = "d001f200-ef97-11ce-9bc9-00aa00608e01"_guid;
    using Base = IUnknown;

    /// Units that follow go into this parent. Within an open parent it is that one's business.
    virtual HRESULT Open(IOleParentUndoUnit* parent) = 0;
    /// Closes the open parent, or a parent open within it: to the stack with `commit`, else it rolls itself back and is
    /// dropped. S_FALSE when none is open, E_INVALIDARG for a parent that is not the one to close.
    virtual HRESULT Close(IOleParentUndoUnit* parent, BOOL commit) = 0;
    virtual HRESULT Add(IOleUndoUnit* unit) = 0;
    /// That of the open parent; S_FALSE when none is open.
    virtual HRESULT GetOpenParentState(DWORD* state) = 0;
    /// Discards a unit and those older on its stack, or the parent that holds it and those older; both stacks for null.
    /// An open parent stays open. E_INVALIDARG for a unit on neither stack, E_UNEXPECTED while an undo or redo runs and
    /// of a disabled manager.
    virtual HRESULT DiscardFrom(IOleUndoUnit* unit) = 0;
    /// Undoes the units down to this one; the newest for null. When one fails, those that were undone are redone, so
    /// that the stacks are as before, and its result is returned; E_ABORT when that fails too, with both stacks empty.
    /// E_FAIL for an empty stack, E_INVALIDARG for a unit that is not on it, E_UNEXPECTED while a parent is open or an
    /// undo or redo runs, and of a disabled manager.
    virtual HRESULT UndoTo(IOleUndoUnit* unit) = 0;
    /// The same with the stacks changed.
    virtual HRESULT RedoTo(IOleUndoUnit* unit) = 0;
    /// The units as they are now, the next in turn first.
    virtual HRESULT EnumUndoable(IEnumOleUndoUnits** units) = 0;
    virtual HRESULT EnumRedoable(IEnumOleUndoUnits** units) = 0;
    /// Of the unit next in turn. E_FAIL for an empty stack.
    virtual HRESULT GetLastUndoDescription(BSTR* description) = 0;
    virtual HRESULT GetLastRedoDescription(BSTR* description) = 0;
    /// Disabling empties both stacks. E_UNEXPECTED while a parent is open or an undo or redo runs.
    virtual HRESULT Enable(BOOL enable) = 0;
};

/// Beside IOleUndoUnit: a unit that means nothing without what it belongs to.
struct IOwnedUndoUnit : IUnknown {
    static constexpr GUID IID = "0d4cf6ae-6c35-4bb0-9c3e-52a31f1b6d22"_guid;
    using Base = IUnknown;

    /// S_OK or S_FALSE. The owner is used for nothing but to be told from others.
    virtual HRESULT BelongsTo(const void* owner) = 0;
};

/// Beside IOleUndoManager: takes units out that have lost their meaning, whatever lies above or below.
struct IUndoUnitRemoval : IUnknown {
    static constexpr GUID IID = "0d4cf6ae-6c35-4bb0-9c3e-52a31f1b6d21"_guid;
    using Base = IUnknown;

    /// E_INVALIDARG for a unit on neither stack, E_UNEXPECTED while an undo or redo runs.
    virtual HRESULT RemoveUnit(IOleUndoUnit* unit) = 0;
    /// All that belong to an owner that ends; at its end while an undo or redo runs.
    virtual HRESULT RemoveUnitsOf(const void* owner) = 0;
};
