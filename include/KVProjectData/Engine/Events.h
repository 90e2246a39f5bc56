#pragma once
// What a production tells, and how others have it tell.

#include "platform/com/Unknown.h"

/// What a production tells its owner, through its connection point for this interface. Calls may come on
/// any thread, and come without a lock of the production; their results are not looked at.
///
/// The connection holds an ordinary reference to the sink, taken by Advise and released by Unadvise. A sink
/// that must not be kept alive by it releases one reference of itself after connecting, and takes one back
/// before it disconnects.
struct IZXEProductionDataEvents : IUnknown {
    static constexpr GUID IID = "3b30f319-6c4a-4f3a-8542-aa47dbc1badf"_guid;
    using Base = IUnknown;

    // Indices count from 0. An audio ID names a background audio of the production.

    virtual HRESULT OnPanelAdded(LONG lIndex) = 0;
    virtual HRESULT OnPanelRemoved(LONG lIndex) = 0;
    virtual HRESULT OnPanelChanged(LONG lIndex) = 0;
    virtual HRESULT OnAudioAdded(LONG lAudioID) = 0;
    virtual HRESULT OnAudioRemoved(LONG lAudioID) = 0;
    virtual HRESULT OnAudioChanged(LONG lAudioID) = 0;

    /// An effect is not any more what its owner made it: undo, redo or a dropped undo block changed it. Its layer is
    /// the ID of a menu element; `lButtonID`, its group ID, is 0 or the button that holds the element. Edits through
    /// the effect's own interfaces do not come here, since who makes them tells of them; who edits an effect of
    /// somebody else has the production tell it (IZXEProductionNotify).
    virtual HRESULT OnEffectChanged(LONG lElementID, LONG lButtonID) = 0;

    /// All effects have to be attached anew: undo, redo or a dropped undo block added or removed some, or another
    /// production was loaded. Told once, after all other events of the same operation.
    virtual HRESULT OnEffectsInvalidated() = 0;

    /// All panels may have changed.
    virtual HRESULT OnPanelsReset() = 0;
    virtual HRESULT OnSettingsChanged() = 0;
    virtual HRESULT OnDurationChanged() = 0;

    /// 1 when the production became modified, 0 when that state was cleared.
    virtual HRESULT OnModifiedChanged(LONG lModified) = 0;
    virtual HRESULT OnEffectAdded(LONG lLayer, LONG lEffectID) = 0;
    virtual HRESULT OnEffectRemoved(LONG lLayer, LONG lEffectID) = 0;
    virtual HRESULT OnEffectMoved(LONG lEffectID, LONG lLayer) = 0;
    virtual HRESULT OnPanelMoved(LONG lFrom, LONG lTo) = 0;
    virtual HRESULT OnTransitionAdded(LONG lIndex, LONG lKind) = 0;
    virtual HRESULT OnTransitionRemoved(LONG lIndex, LONG lKind) = 0;

    /// Bit 0: something can be undone. Bit 1: something can be redone.
    virtual HRESULT OnUndoStateChanged(LONG lState) = 0;

    virtual HRESULT OnChapterAdded(LONG lIndex, LONG lFrame) = 0;
    virtual HRESULT OnChapterRemoved(LONG lIndex, LONG lFrame) = 0;
    virtual HRESULT OnRenderProgress(LONG lDone, LONG lTotal) = 0;
    virtual HRESULT OnClosed() = 0;
};

/// The positions of the methods of IZXEProductionDataEvents after those of IUnknown.
inline constexpr ULONG ZXE_EVENT_COUNT = 23;

/// Through it the parts that render and edit a production from outside have it tell its sinks. A host that edits an
/// effect which it did not make, for a menu whose elements it shows, tells OnEffectChanged with the effect's layer and
/// group ID after the edit.
struct IZXEProductionNotify : IUnknown {
    static constexpr GUID IID = "9ebe9f06-dc43-4115-911b-909a6beb3368"_guid;
    using Base = IUnknown;

    /// Calls the method of IZXEProductionDataEvents at `ulEvent` on every sink, with as many of the
    /// arguments as it takes. E_INVALIDARG for a position past the last.
    virtual HRESULT Notify(ULONG ulEvent, LONG lFirst, LONG lSecond) = 0;
};
