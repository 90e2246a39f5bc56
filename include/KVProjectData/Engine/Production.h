#pragma once
// A production: one storyboard with panels in a row, effects on layers, background audio, the settings of the picture,
// and its undo blocks. Beside the interfaces here it answers for IZXEProductionPersist, IZXEProductionMarkup,
// IZXEProductionNotify and the connection point of IZXEProductionDataEvents.
//
// Times are seconds. Strings and arrays handed out are the caller's to free, objects handed out carry a reference of
// the caller's. A null out-pointer is E_POINTER; the other out-pointers of the call are set to null or 0 even when it
// fails.

#include "platform/automation/SafeArray.h"
#include "platform/com/Unknown.h"
#include "platform/xml/Dom.h"

inline constexpr CLSID CLSID_ZXEProduction = "5f9387e1-ffca-4d9f-9bc2-c5243577bbef"_guid;

/// Bits of IZXEProductionData::get_Flags.
/// The production, or a setting of it, was edited since it was initialised or its modified state was last cleared.
inline constexpr ULONG ZXE_PRODUCTION_MODIFIED = 1;

/// An undo block is open already, or an undo or redo is running.
inline constexpr HRESULT ZXE_E_UNDO_BLOCK_OPEN = MakeResult(0xC2000011);
/// No undo block is open.
inline constexpr HRESULT ZXE_E_NO_UNDO_BLOCK = MakeResult(0xC2000012);
/// There is no block to undo or redo.
inline constexpr HRESULT ZXE_E_NOTHING_TO_UNDO = MakeResult(0xC2000013);

/// A production as its owner sees it. Reading and the settings work at any time; all other edits and all else
/// about undo but `CanUndo` and `CanRedo` are ZXE_E_NOT_OPEN before `Initialise` and after `Close`.
struct IZXEProductionData : IUnknown {
    static constexpr GUID IID = "fbadab5b-cd34-48f6-b8d1-66aa6394b34a"_guid;
    using Base = IUnknown;

    /// The object that answers for IProductionInfo and IProductionObjects.
    virtual HRESULT GetProductionObj(IUnknown** ppProduction) = 0;

    virtual HRESULT GetPanelCount(LONG* plCount) = 0;

    /// Panels count from 0; E_INVALIDARG when there is none at that index. A panel answers for ISourceFile,
    /// IBaseObject and INativeInfo. While there are none, a blank one stands at 0 all the same, which is not counted,
    /// cannot be deleted and answers for IBaseObject alone: by it a production that shows nothing but effects, such as
    /// a menu without a background, has a duration, which is 0 at first.
    virtual HRESULT GetPanelBaseObject(LONG lIndex, IUnknown** ppPanel) = 0;
    virtual HRESULT DeletePanel(LONG lIndex) = 0;

    /// Whether sources are shown with their own aspect ratio instead of the production's; false at first.
    virtual HRESULT get_UseSourceAspectRatio(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_UseSourceAspectRatio(VARIANT_BOOL newVal) = 0;

    /// Makes a new production ready for use, or a closed one again, with all that it held. S_FALSE when it is
    /// ready already.
    virtual HRESULT Initialise() = 0;

    /// Ends the use of the production before its last release: an open undo block is dropped, and all others
    /// with it; what it holds stays. S_FALSE when it is not in use.
    virtual HRESULT Close() = 0;

    /// The source of each panel, in order: strings, lower bound 0, empty without panels. The first three
    /// arguments are reserved; E_INVALIDARG unless they are 0.
    virtual HRESULT GetSourceList(LONG lReserved1, LONG lReserved2, LONG lReserved3, SAFEARRAY** ppSources) = 0;

    /// ZXE_PRODUCTION_ bits.
    virtual HRESULT get_Flags(ULONG* pdwFlags) = 0;
    virtual HRESULT ClearModified() = 0;

    /// Edits from here to `CloseUndoBlock` are undone and redone together; edits outside of a block cannot
    /// be undone. ZXE_E_UNDO_BLOCK_OPEN when one is open already: blocks do not nest.
    virtual HRESULT OpenUndoBlock() = 0;

    /// VARIANT_FALSE takes back all edits of the block. A block without edits and units leaves no trace;
    /// any other one that is kept empties what can be redone. ZXE_E_NO_UNDO_BLOCK when none is open.
    virtual HRESULT CloseUndoBlock(VARIANT_BOOL bCommit) = 0;

    /// Puts an IOleUndoUnit into the open block, which runs its `Do` with no undo manager whenever the block
    /// is undone or redone: the unit has to be its own inverse. E_POINTER for null, E_NOINTERFACE for an
    /// object that is no undo unit, ZXE_E_NO_UNDO_BLOCK when no block is open.
    virtual HRESULT AddUndoUnit(IUnknown* pUnit) = 0;

    /// The description is that of the block's last unit, or null; `pbstrDescription` may be null. Without
    /// such a block, or while one is open, the answer is VARIANT_FALSE and S_OK.
    virtual HRESULT CanUndo(VARIANT_BOOL* pbCanUndo, BSTR* pbstrDescription) = 0;
    virtual HRESULT CanRedo(VARIANT_BOOL* pbCanRedo, BSTR* pbstrDescription) = 0;

    /// Takes back the last block, or brings back the one last undone. A unit that fails stops it: what was
    /// run so far is run back, the block stays where it was, and the unit's result is returned.
    /// ZXE_E_NOTHING_TO_UNDO when there is no block, ZXE_E_UNDO_BLOCK_OPEN while one is open.
    virtual HRESULT Undo() = 0;
    virtual HRESULT Redo() = 0;
};

/// Edits of a production's content.
struct IEditData : IUnknown {
    static constexpr GUID IID = "f5d2c429-25e1-44ce-b960-24870bdd17ac"_guid;
    using Base = IUnknown;

    /// Adds a panel that shows `bstrSource`, a path or a moniker, from `dInPoint` to `dOutPoint`; an out
    /// point of 0 is the end of the source. `lPosition` counts from 0, -1 appends. `lTrack` is 0.
    /// A source that cannot be read makes a panel without a length of its own. E_INVALIDARG for an empty
    /// source, a point that is negative or not finite, an out point not behind the in point, or a bad
    /// position or track. `ppPanel` may be null.
    virtual HRESULT AddSourceFile(LONG lTrack, BSTR bstrSource, double dInPoint, double dOutPoint, LONG lPosition,
                                  IUnknown** ppPanel) = 0;

    /// Adds an effect (IEffectInfo) of a ZXE_EFFECT_ type to a layer, from `dStart` to the end of the production. A
    /// layer holds any number of effects. `pParameters` is its parameter document, as
    /// IEffectInfo::SetParameterDocument takes it, or null; `bstrSource` what an overlay shows, or null. `lReserved`
    /// is 0. E_INVALIDARG for a negative type, a source for another type than an overlay, a start that is negative or
    /// not finite, and a document that is none. `ppEffect` may be null.
    virtual HRESULT AddProductionEffect(LONG lLayer, LONG lType, IXMLDOMNode* pParameters, BSTR bstrSource,
                                        LONG lReserved, double dStart, IUnknown** ppEffect) = 0;

    /// E_INVALIDARG when that layer has no effect of that ID.
    virtual HRESULT DeleteProductionEffect(LONG lLayer, LONG lEffectID) = 0;

    /// Appends a background audio, a file or a moniker (Audio.h), that starts at `dStart`. E_INVALIDARG for an empty
    /// source, a start that is negative or not finite, and any kind but ZXE_KIND_BACKGROUND_AUDIO. `ppAudio` may be
    /// null.
    virtual HRESULT AddProductionAudio(BSTR bstrSource, LONG lKind, double dStart, IUnknown** ppAudio) = 0;

    /// The ID is that of ISubObject::get_ID. E_INVALIDARG when there is no such audio.
    virtual HRESULT DeleteProductionAudio(LONG lAudioID) = 0;
};

/// What a production is made for.
struct IProductionInfo : IUnknown {
    static constexpr GUID IID = "5f654704-c0ed-45c0-9158-036474fba551"_guid;
    using Base = IUnknown;

    /// Seconds that all panels play; without panels the duration of the blank one.
    virtual HRESULT get_Duration(double* pdSeconds) = 0;

    /// Frames per second of the first panel that shows video; 0 when none does.
    virtual HRESULT get_EditingFrameRate(double* pdFrameRate) = 0;

    /// Width to height of the whole picture; 4/3 at first. E_INVALIDARG unless positive and finite.
    virtual HRESULT get_AspectRatio(double* pdAspectRatio) = 0;
    virtual HRESULT put_AspectRatio(double dAspectRatio) = 0;

    /// Whether the picture is made for two eyes; any value but 0 is true.
    virtual HRESULT get_Stereoscopic(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_Stereoscopic(VARIANT_BOOL newVal) = 0;
};

/// Finds what a production holds.
struct IProductionObjects : IUnknown {
    static constexpr GUID IID = "2efcfa8d-eecf-4107-b985-e86f68ec0f23"_guid;
    using Base = IUnknown;

    /// The effect that a layer shows in the frame at a time: of several the one that starts last, then the newest one.
    /// Frames are those of the editing frame rate, of 29.97 where that is 0, so that a start in the middle of a frame
    /// counts for the whole of it. Where the layer shows none in that frame, the next one that starts there: an effect
    /// is found at the start of its production also when the frame rate has changed since. Null and S_FALSE when there
    /// is none; E_INVALIDARG for a time that is negative or not finite.
    virtual HRESULT GetEffect(LONG lLayer, double dTime, IUnknown** ppEffect) = 0;

    /// The object of a ZXE_KIND_ at an index from 0; null and S_FALSE when there is none.
    virtual HRESULT GetObject(LONG lKind, LONG lIndex, IUnknown** ppObject) = 0;
};
