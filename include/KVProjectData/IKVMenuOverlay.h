#pragma once
// A picture or a video on a menu or in a button.
//
// What IKVMenuElement says of getters, setters and events holds here, too.

#include "KVProjectData/IKVMenuElement.h"

struct IKVMenuOverlay : IKVMenuElement {
    static constexpr GUID IID = "38e47edd-3824-452a-9b96-db43719f3221"_guid;
    using Base = IKVMenuElement;
    virtual HRESULT GetSize(float* pwidth, float* pHeight) = 0;

    /// E_INVALIDARG below 0.
    virtual HRESULT SetSize(float width, float height) = 0;

    /// A path, in which variables such as "%CONTENT%" are replaced, of a file that exists, else KV_E_NO_OVERLAY_SOURCE;
    /// or a moniker, which begins with "moniker::" in any case. Null is the picture of an overlay without a source.
    virtual HRESULT get_Source(BSTR* pVal) = 0;
    virtual HRESULT put_Source(BSTR newVal) = 0;

    /// A path as above, else KV_E_NO_ALPHA_MASK; empty or null for none.
    virtual HRESULT get_AlphaMask(BSTR* pVal) = 0;
    virtual HRESULT put_AlphaMask(BSTR newVal) = 0;
    virtual HRESULT get_Highlight(OverlayHighlight* pVal) = 0;
    virtual HRESULT put_Highlight(OverlayHighlight newVal) = 0;

    /// Seconds of the source. KV_E_NEGATIVE_IN_POINT.
    virtual HRESULT get_InPoint(double* pVal) = 0;
    virtual HRESULT put_InPoint(double newVal) = 0;

    /// KV_E_NEGATIVE_OUT_POINT.
    virtual HRESULT get_OutPoint(double* pVal) = 0;
    virtual HRESULT put_OutPoint(double newVal) = 0;

    /// Null allowed.
    virtual HRESULT get_Label(BSTR* pVal) = 0;
    virtual HRESULT put_Label(BSTR newVal) = 0;

    /// True for exactly VARIANT_TRUE.
    virtual HRESULT get_StillImage(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_StillImage(VARIANT_BOOL newVal) = 0;

    /// What the source stands for, and of which object of that kind. No event.
    virtual HRESULT SetSourceType(SourceTypes type, LONG ID) = 0;

    /// `pID` may be null.
    virtual HRESULT GetSourceType(SourceTypes* pType, LONG* pID) = 0;

    /// The host's number.
    virtual HRESULT get_PrivateId(LONG* pVal) = 0;
    virtual HRESULT put_PrivateId(LONG newVal) = 0;
    virtual HRESULT get_DynamicScalingFactor(double* pVal) = 0;
    virtual HRESULT put_DynamicScalingFactor(double newVal) = 0;

    /// -1 for both at first. No event. Only the effect's document tells of it: an overlay of a native menu loses it
    /// when the project is saved and loaded.
    virtual HRESULT SetMaskSize(double dblMaskX, double dblMaskY) = 0;
    virtual HRESULT GetMaskSize(double* pX, double* pY) = 0;

    /// True for exactly VARIANT_TRUE, as ZoomMask is.
    virtual HRESULT get_ZoomSource(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_ZoomSource(VARIANT_BOOL newVal) = 0;
    virtual HRESULT get_ZoomMask(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_ZoomMask(VARIANT_BOOL newVal) = 0;

    /// -1 for both at first. Neither recorded nor told, and in no document.
    virtual HRESULT SetSourceScale(double x, double y) = 0;
    virtual HRESULT GetSourceScale(double* pX, double* pY) = 0;

    /// A mask size of 1 and a source scale of -1 in both directions. Neither recorded nor told.
    virtual HRESULT ClearForResolve() = 0;

    /// Degrees. Neither looks at the lock, nor is it recorded or told; S_OK also where there is no source to turn, as
    /// without an effect, when nothing is set. Only the production tells documents of it.
    virtual HRESULT get_SourceRotation(LONG* pVal) = 0;
    virtual HRESULT put_SourceRotation(LONG newVal) = 0;

    /// Reads the source anew. Told as a change of Source.
    virtual HRESULT RefreshSource() = 0;

    /// The picture of the source in its own size: `*pHeight` rows of `*pWidth` pixels, the top row first, each four
    /// bytes (blue, green, red, alpha) with the colours multiplied by alpha. In task memory, which the caller frees.
    virtual HRESULT ExtractThumbnail(BYTE** ppBits, LONG* pWidth, LONG* pHeight) = 0;

    /// The part of the source that is shown: its centre and its size, of a source that goes from 0 to 1.
    virtual HRESULT GetCropedRect(double* pCX, double* pCY, double* pSX, double* pSY) = 0;

    /// Told with the propID 822.
    virtual HRESULT SetCropedRect(double cx, double cy, double sx, double sy) = 0;

    /// Pixels.
    virtual HRESULT GetSourceMediaSize(LONG* pW, LONG* pH) = 0;

    /// The same, and 16 by 9 where the source cannot be measured.
    virtual HRESULT TryGetSourceMediaSize(LONG* pW, LONG* pH) = 0;

    /// OverlayType_Generic at first. Neither looks at the lock, nor is it recorded or told.
    virtual HRESULT get_OverlayType(OverlayTypes* pVal) = 0;
    virtual HRESULT put_OverlayType(OverlayTypes newVal) = 0;
};

template <>
struct kv::InterfaceTable<IKVMenuOverlay> {
    static constexpr auto members = Members(
        Method<&IKVMenuOverlay::GetSize>("GetSize", 0x326, "pwidth", "pHeight"),
        Method<&IKVMenuOverlay::SetSize>("SetSize", 0x327, "width", "height"),
        GetPut<&IKVMenuOverlay::get_Source, &IKVMenuOverlay::put_Source>("Source", 0xc8),
        GetPut<&IKVMenuOverlay::get_AlphaMask, &IKVMenuOverlay::put_AlphaMask>("AlphaMask", 0x320),
        GetPut<&IKVMenuOverlay::get_Highlight, &IKVMenuOverlay::put_Highlight>("Highlight", 0x321),
        GetPut<&IKVMenuOverlay::get_InPoint, &IKVMenuOverlay::put_InPoint>("InPoint", 0x322),
        GetPut<&IKVMenuOverlay::get_OutPoint, &IKVMenuOverlay::put_OutPoint>("OutPoint", 0x323),
        GetPut<&IKVMenuOverlay::get_Label, &IKVMenuOverlay::put_Label>("Label", 0x4),
        GetPut<&IKVMenuOverlay::get_StillImage, &IKVMenuOverlay::put_StillImage>("StillImage", 0x324),
        Method<&IKVMenuOverlay::SetSourceType>("SetSourceType", 0x329, "type", "ID"),
        Method<&IKVMenuOverlay::GetSourceType>("GetSourceType", 0x328, "pType", Optional("pID")),
        GetPut<&IKVMenuOverlay::get_PrivateId, &IKVMenuOverlay::put_PrivateId>("PrivateId", 0x325),
        GetPut<&IKVMenuOverlay::get_DynamicScalingFactor, &IKVMenuOverlay::put_DynamicScalingFactor>(
            "DynamicScalingFactor", 0x32a),
        Method<&IKVMenuOverlay::SetMaskSize>("SetMaskSize", 0x32b, "dblMaskX", "dblMaskY"),
        Method<&IKVMenuOverlay::GetMaskSize>("GetMaskSize", 0x32c, "pX", "pY"),
        GetPut<&IKVMenuOverlay::get_ZoomSource, &IKVMenuOverlay::put_ZoomSource>("ZoomSource", 0x32d),
        GetPut<&IKVMenuOverlay::get_ZoomMask, &IKVMenuOverlay::put_ZoomMask>("ZoomMask", 0x32e),
        Method<&IKVMenuOverlay::SetSourceScale>("SetSourceScale", 0x330, "x", "y"),
        Method<&IKVMenuOverlay::GetSourceScale>("GetSourceScale", 0x32f, "pX", "pY"),
        Method<&IKVMenuOverlay::ClearForResolve>("ClearForResolve", 0x331),
        GetPut<&IKVMenuOverlay::get_SourceRotation, &IKVMenuOverlay::put_SourceRotation>("SourceRotation", 0x332),
        Method<&IKVMenuOverlay::RefreshSource>("RefreshSource", 0x333),
        Method<&IKVMenuOverlay::ExtractThumbnail>("ExtractThumbnail", 0x334, "ppBits", "pWidth", "pHeight"),
        Method<&IKVMenuOverlay::GetCropedRect>("GetCropedRect", 0x335, "pCX", "pCY", "pSX", "pSY"),
        Method<&IKVMenuOverlay::SetCropedRect>("SetCropedRect", 0x336, "cx", "cy", "sx", "sy"),
        Method<&IKVMenuOverlay::GetSourceMediaSize>("GetSourceMediaSize", 0x337, "pW", "pH"),
        Method<&IKVMenuOverlay::TryGetSourceMediaSize>("TryGetSourceMediaSize", 0x338, "pW", "pH"),
        GetPut<&IKVMenuOverlay::get_OverlayType, &IKVMenuOverlay::put_OverlayType>("OverlayType", 0x339));
};
