#pragma once
// The children of a compound undo unit.

#include "platform/undo/OleUndo.h"

struct ICPSUndoParentEnum : IUnknown {
    static constexpr GUID IID = "57b7f6f5-9d2e-4f5c-8a7e-5a3f3f0a9b61"_guid;
    using Base = IUnknown;

    /// The units inside a compound unit as they are and will be, the newest first. The enumerator keeps the unit alive.
    virtual HRESULT EnumChildren(IEnumOleUndoUnits** ppEnum) = 0;
};
