#pragma once
// The effects of a production: what stands on its layers.
//
// Times are seconds of the production. Strings handed out are the caller's to free, objects handed out carry a
// reference of the caller's. A null out-pointer is E_POINTER; an out-pointer is set to null or 0 even when the call
// fails. Reading works at any time; every edit is ZXE_E_NOT_OPEN while the production is not in use, or gone, and
// of an object that was deleted. An edit makes a production modified.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"
#include "platform/xml/Dom.h"

/// Types of effects. Others stand on their layer and show nothing.
/// A text, which the "plugin_data" of the parameter document holds.
inline constexpr LONG ZXE_EFFECT_TEXT = 0;
/// A picture or a clip: an effect that answers for ISourceFile and INativeInfo, too.
inline constexpr LONG ZXE_EFFECT_OVERLAY = 2;

/// IEffectInfo::get_Kind of an effect that shows media.
inline constexpr LONG ZXE_KIND_MEDIA = 1;

/// Kind of IProductionObjects::GetObject: the effects, from the back to the front.
inline constexpr LONG ZXE_KIND_EFFECT = 2;

/// IEffectInfo::SetMaskFile: the file gives the alpha of the effect.
inline constexpr LONG ZXE_MASK_ALPHA = 4;

/// The mask is set, but no picture can be read from its file now. Callers take it for success.
inline constexpr HRESULT ZXE_E_MASK_NOT_READ = MakeResult(0xC2000003);

/// An effect. It also answers for ISubObject (its time span) and IParentProduction. An effect that was deleted and
/// comes back by undo is the same object.
struct IEffectInfo : IUnknown {
    static constexpr GUID IID = "ef140a39-efe0-4109-92cf-11b3661cef62"_guid;
    using Base = IUnknown;

    /// Names the effect in its production as long as that lives; from 1. It is not saved.
    virtual HRESULT get_EffectID(LONG* plEffectID) = 0;
    virtual HRESULT get_Layer(LONG* plLayer) = 0;

    /// ZXE_EFFECT_ types, as given when the effect was added.
    virtual HRESULT get_Type(LONG* plType) = 0;

    /// ZXE_KIND_MEDIA for an effect that shows media, else 0.
    virtual HRESULT get_Kind(LONG* plKind) = 0;

    /// What belongs together moves together: for an element of a button, the button's ID. 0 at first.
    virtual HRESULT get_GroupID(LONG* plGroupID) = 0;
    virtual HRESULT SetGroupID(LONG lGroupID) = 0;

    /// Null without a mask.
    virtual HRESULT get_MaskFile(BSTR* pbstrFileName) = 0;

    /// `lKind` is ZXE_MASK_ALPHA, E_INVALIDARG for any other; an empty name takes the mask away.
    /// ZXE_E_MASK_NOT_READ, with the mask set, when no picture can be read from the file.
    virtual HRESULT SetMaskFile(BSTR bstrFileName, LONG lKind) = 0;

    /// The object that answers for ISourceFile of the mask; null and S_FALSE without one.
    virtual HRESULT GetSourceObject(IUnknown** ppSource) = 0;

    /// The live parameter document: an element or a document that holds "plugin_data"; null and S_FALSE when the effect
    /// has none. It is shared with the undo history and with threads that draw, so it is read only: who edits copies
    /// it, changes the copy and sets that. A copy of a document knows nothing of its original.
    virtual HRESULT GetParameterDocument(IXMLDOMNode** ppDocument) = 0;

    /// Keeps the document itself, which must not be changed from now on, in the place of the live one. `bRefresh` is
    /// for engines that keep pictures: this one draws them when it is asked. E_POINTER for null, E_INVALIDARG for
    /// anything but an element or a document with one, and for more levels of elements than a saved production has room
    /// for.
    virtual HRESULT SetParameterDocument(IXMLDOMNode* pDocument, VARIANT_BOOL bRefresh) = 0;
};

/// Of an effect whose layer can change: an element that gets another ID takes its effect with it. An engine may do
/// without it.
struct IEffectLayer : IUnknown {
    static constexpr GUID IID = "50a9676b-f367-415f-8617-e79fe5cb694f"_guid;
    using Base = IUnknown;

    /// ZXE_E_NOT_OPEN when the effect is not in a production that is in use.
    virtual HRESULT put_Layer(LONG lLayer) = 0;
};

/// The place of an effect or a background audio in time, and of the sound of a panel or an effect. Points are finite
/// and not negative, else E_INVALIDARG; an end before the start is allowed on the way to another span, and shows
/// nothing.
struct ISubObject : IUnknown {
    static constexpr GUID IID = "e9f2cd36-85a7-43ea-81f9-55b2c3b23dae"_guid;
    using Base = IUnknown;

    /// The effect ID or audio ID; 0 for the sound of a panel or an effect.
    virtual HRESULT get_ID(LONG* plID) = 0;

    virtual HRESULT get_StartOffset(double* pdSeconds) = 0;

    /// E_NOTIMPL for the sound of a panel or an effect, which follows its owner.
    virtual HRESULT put_StartOffset(double dSeconds) = 0;

    /// The end of the production, or of the source of an audio that does not repeat, where no end was set.
    virtual HRESULT get_EndOffset(double* pdSeconds) = 0;

    /// 0 takes the end away. E_NOTIMPL as for the start.
    virtual HRESULT put_EndOffset(double dSeconds) = 0;

    /// Of an effect: of its sound. False at first.
    virtual HRESULT get_Mute(VARIANT_BOOL* pbMute) = 0;
    virtual HRESULT put_Mute(VARIANT_BOOL bMute) = 0;
};

/// The way up from an effect.
struct IParentProduction : IUnknown {
    static constexpr GUID IID = "2d6c6dba-63ef-45ac-9319-cc69f35af699"_guid;
    using Base = IUnknown;

    /// The storyboard that holds the effect or held it until it was deleted; ZXE_E_NOT_OPEN when it is gone.
    virtual HRESULT get_ParentProduction(IUnknown** ppProduction) = 0;
};
