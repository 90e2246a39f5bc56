#pragma once
// What panels, effects and audio show and play.
//
// Times are seconds of the source. Strings handed out are the caller's to free, objects handed out carry a reference of
// the caller's. A null out-pointer is E_POINTER; an out-pointer is set to null or 0 even when the call fails. Every
// edit is ZXE_E_NOT_OPEN while the production is not in use, or gone, and of an object that was deleted.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"
#include "platform/xml/Dom.h"

/// A part of a source file, as a panel, an effect, its mask or a background audio shows it. What the file holds is
/// looked up when it is first asked for; one that cannot be read then counts as having neither length nor size.
struct ISourceFile : IUnknown {
    static constexpr GUID IID = "65cf5b5c-02cb-4719-b404-d0c8cebf27cf"_guid;
    using Base = IUnknown;

    /// A path or a moniker; null when nothing was set.
    virtual HRESULT get_FileName(BSTR* pbstrFileName) = 0;

    /// Also the same name makes the file be read anew. The points stay. E_INVALIDARG for an empty name, and for a
    /// moniker where only a file can be.
    virtual HRESULT put_FileName(BSTR bstrFileName) = 0;

    /// Points are finite and not negative, else E_INVALIDARG. E_FAIL past the end of a source of known length. An in
    /// point behind the out point is allowed on the way to other points, and shows nothing.
    virtual HRESULT get_InPoint(double* pdSeconds) = 0;
    virtual HRESULT put_InPoint(double dSeconds) = 0;

    /// The end of the source when no out point was given; 0 when that is not known.
    virtual HRESULT get_OutPoint(double* pdSeconds) = 0;

    /// 0 takes the out point away.
    virtual HRESULT put_OutPoint(double dSeconds) = 0;

    /// Seconds of the whole source; 0 for a still picture and for a source that cannot be read.
    virtual HRESULT get_Length(double* pdSeconds) = 0;

    /// Width to height of the picture as it is shown before it is turned; 0 for a source without pictures.
    virtual HRESULT get_AspectRatio(double* pdAspectRatio) = 0;

    /// Whether the part between the points begins anew where it ends before its owner does; else its last picture
    /// stands, and its sound is over. False at first.
    virtual HRESULT get_Repeat(VARIANT_BOOL* pbRepeat) = 0;
    virtual HRESULT put_Repeat(VARIANT_BOOL bRepeat) = 0;

    /// Degrees, clockwise; 0 at first. Pictures turn by quarters: the angle is rounded to one.
    virtual HRESULT get_Rotation(LONG* plDegrees) = 0;
    virtual HRESULT put_Rotation(LONG lDegrees) = 0;

    /// The element "ZXFPanZoom" that tells how the source is cropped and moved in its frame; null and S_FALSE without
    /// one. As with parameter documents of effects (IEffectInfo), what is handed out is read only, and what is set is
    /// kept itself. Null takes it away; E_INVALIDARG as there.
    virtual HRESULT GetPanZoom(IXMLDOMNode** ppElement) = 0;
    virtual HRESULT SetPanZoom(IXMLDOMNode* pElement) = 0;
};

/// How long a panel plays.
struct IBaseObject : IUnknown {
    static constexpr GUID IID = "e59d538b-a3c3-4e8b-91cb-3c8bad998a73"_guid;
    using Base = IUnknown;

    virtual HRESULT get_Duration(double* pdSeconds) = 0;

    /// Of a still picture, or of a source whose length is not known. E_NOTIMPL for a panel that shows a clip, whose
    /// duration follows its points; E_INVALIDARG unless positive and finite.
    virtual HRESULT put_Duration(double dSeconds) = 0;
};

/// The sound that a panel or an effect brings along.
struct INativeInfo : IUnknown {
    static constexpr GUID IID = "90393de6-5a65-4ec8-ba13-f97aba649416"_guid;
    using Base = IUnknown;

    /// The object that answers for ISubObject and IAudioProps; there also where the source is silent.
    virtual HRESULT GetNativeAudio(IUnknown** ppAudio) = 0;

    /// Whether it is played; true at first.
    virtual HRESULT get_UseNativeAudio(VARIANT_BOOL* pbUse) = 0;
    virtual HRESULT put_UseNativeAudio(VARIANT_BOOL bUse) = 0;
};
