#pragma once
// The undo blocks of many productions, opened and closed at once. An engine may go without: then each production is
// asked for its own.

#include "platform/com/Unknown.h"

inline constexpr CLSID CLSID_ZXEUndoGroup = "0d0b0e0a-6c5e-4a4f-9a3d-2f8b51c7e964"_guid;

/// Productions whose blocks are opened and closed together, at a cost that grows with those that were edited meanwhile,
/// not with all of them. What a production tells of its undo is the same as if its own block had been opened, which is
/// IZXEProductionData's to undo and redo. One without edits and units keeps no block; what it could redo goes all the
/// same with a block of the group that is kept and holds anything. A group that is released while its blocks are open
/// keeps them.
struct IZXEUndoGroup : IUnknown {
    static constexpr GUID IID = "b3a7c1de-52f0-4c8b-8f61-7e0d94a2c835"_guid;
    using Base = IUnknown;

    /// The group does not keep it alive. E_NOINTERFACE for what is no production of this engine, E_INVALIDARG for one
    /// that is in a group already, ZXE_E_UNDO_BLOCK_OPEN while the blocks are open.
    virtual HRESULT AddProduction(IUnknown* pProduction) = 0;

    /// From here on the block of each production is open. ZXE_E_UNDO_BLOCK_OPEN while they are, and when the block of
    /// one cannot be opened, for whatever reason; then none is open.
    virtual HRESULT OpenUndoBlocks() = 0;

    /// Closes the blocks as IZXEProductionData::CloseUndoBlock does, with the result of the first that fails.
    /// ZXE_E_NO_UNDO_BLOCK while they are not open.
    virtual HRESULT CloseUndoBlocks(VARIANT_BOOL bCommit) = 0;

    /// The productions that came to hold something since the blocks were opened last, or were closed meanwhile, in the
    /// order in which they did; `lIndex` counts from 0. Null for one that has ended. S_FALSE past the last.
    virtual HRESULT GetTouched(LONG lIndex, IUnknown** ppProduction) = 0;
};
