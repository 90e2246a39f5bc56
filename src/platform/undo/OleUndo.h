#pragma once
// The undo interfaces: units that know how to go back, and the manager that keeps them.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"

struct IOleUndoManager;

/// The state of a parent unit that takes no further units.
inline constexpr DWORD UAS_NORMAL = 0;
inline constexpr DWORD UAS_BLOCKED = 1;

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

struct IOleUndoManager : IUnknown {
    static constexpr GUID IID = "d001f200-ef97-11ce-9bc9-00aa00608e01"_guid;
    using Base = IUnknown;

    virtual HRESULT Open(IOleParentUndoUnit* parent) = 0;
    virtual HRESULT Close(IOleParentUndoUnit* parent, BOOL commit) = 0;
    virtual HRESULT Add(IOleUndoUnit* unit) = 0;
    virtual HRESULT GetOpenParentState(DWORD* state) = 0;
    virtual HRESULT DiscardFrom(IOleUndoUnit* unit) = 0;
    virtual HRESULT UndoTo(IOleUndoUnit* unit) = 0;
    virtual HRESULT RedoTo(IOleUndoUnit* unit) = 0;
    virtual HRESULT EnumUndoable(IEnumOleUndoUnits** units) = 0;
    virtual HRESULT EnumRedoable(IEnumOleUndoUnits** units) = 0;
    virtual HRESULT GetLastUndoDescription(BSTR* description) = 0;
    virtual HRESULT GetLastRedoDescription(BSTR* description) = 0;
    virtual HRESULT Enable(BOOL enable) = 0;
};
