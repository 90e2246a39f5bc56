#pragma once
// A button of a menu.
//
// What IKVMenuElement says of getters, setters and events holds here, too. A button also answers for IKVCommandList and
// for IKVMenuElementList: its elements, overlays and texts, are what is drawn as the button.

#include "KVProjectData/IKVMenuElement.h"
#include "KVProjectData/MenuRecords.h"
#include "platform/xml/Dom.h"

struct IKVMenuOverlay;

struct IKVMenuButton : IKVMenuElement {
    static constexpr GUID IID = "68b72228-2d85-4977-a25e-23f05e67d611"_guid;
    using Base = IKVMenuElement;

    /// Where a pointer activates the button, and whether that was ever said: true for exactly VARIANT_TRUE.
    virtual HRESULT get_ActiveRegion(FloatRect* pActiveRgn, VARIANT_BOOL* pbIsValid) = 0;
    virtual HRESULT put_ActiveRegion(const FloatRect* pActiveRgn, VARIANT_BOOL bValid) = 0;

    /// Handed out as one record in task memory, which the caller frees.
    virtual HRESULT get_ButtonLinks(ButtonLinks** ppLinks) = 0;
    virtual HRESULT put_ButtonLinks(const ButtonLinks* pLinks) = 0;

    /// Which of the menu's colours the button is highlighted in: 0 to 2, else E_INVALIDARG.
    virtual HRESULT get_ButtonScheme(LONG* pVal) = 0;
    virtual HRESULT put_ButtonScheme(LONG newVal) = 0;

    /// Null allowed.
    virtual HRESULT get_Label(BSTR* pVal) = 0;
    virtual HRESULT put_Label(BSTR newVal) = 0;

    /// Whatever the host keeps. No event.
    virtual HRESULT get_UserData(LONG* pVal) = 0;
    virtual HRESULT put_UserData(LONG newVal) = 0;

    /// Replaces the button and its elements by what stands at a node. Neither recorded nor told.
    virtual HRESULT loadXML(IXMLDOMNode* pRootNode) = 0;

    /// Writes the button below a node, with what its elements show when `bForceNative` is not 0.
    virtual HRESULT SaveXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bForceNative) = 0;

    /// The element whose place is that of the button. KV_E_NO_ANCHOR.
    virtual HRESULT GetAnchorElement(IKVMenuElement** ppElem) = 0;

    /// The first text of the button; null and S_OK when there is none.
    virtual HRESULT GetButtonBindText(IKVMenuElement** ppText) = 0;

    /// Overlays of the button count from 0; null and S_OK when there is none.
    virtual HRESULT GetButtonOverlay(LONG index, IKVMenuOverlay** ppOverlay) = 0;

    /// Makes another button look like this one: its properties, active region, links and elements, which are copied. It
    /// keeps its ID and its place. ButtonChanged of the other one, with propID -1.
    virtual HRESULT ApplyTo(IKVMenuButton* pBtn) = 0;

    /// The rectangle around the elements that are highlighted. Empty and S_FALSE when there is none.
    virtual HRESULT GetHighlightRegion(FloatRect* pHLIRgn) = 0;

    /// The host's text. Its event has the propID 704.
    virtual HRESULT get_ButtonStyle(BSTR* pVal) = 0;
    virtual HRESULT put_ButtonStyle(BSTR newVal) = 0;

    /// The host's text. No event, as for the two below.
    virtual HRESULT get_ButtonTextCache(BSTR* pVal) = 0;
    virtual HRESULT put_ButtonTextCache(BSTR newVal) = 0;

    /// Not kept in the document, nor is ButtonSourceHighlight.
    virtual HRESULT get_ButtonSource(BSTR* pVal) = 0;
    virtual HRESULT put_ButtonSource(BSTR newVal) = 0;
    virtual HRESULT get_ButtonOverlayCount(LONG* pVal) = 0;
    virtual HRESULT get_ButtonSourceHighlight(BSTR* pVal) = 0;
    virtual HRESULT put_ButtonSourceHighlight(BSTR newVal) = 0;

    /// Whether an overlay of the button shows a picture of a theme.
    virtual HRESULT UseCustomOverlayOnButton(VARIANT_BOOL* pb) = 0;

    /// Moves the button with its elements.
    virtual HRESULT Move(float dx, float dy) = 0;

    /// Gives the button a new ID. Neither recorded nor told.
    virtual HRESULT ResetID() = 0;

    /// -1 at first.
    virtual HRESULT get_CommandIndex(LONG* pVal) = 0;
    virtual HRESULT put_CommandIndex(LONG newVal) = 0;
};

template <>
struct kv::InterfaceTable<IKVMenuButton> {
    static constexpr auto members = Members(
        GetPut<&IKVMenuButton::get_ActiveRegion, &IKVMenuButton::put_ActiveRegion>("ActiveRegion", 0x2bc, "pActiveRgn"),
        GetPut<&IKVMenuButton::get_ButtonLinks, &IKVMenuButton::put_ButtonLinks>("ButtonLinks", 0x2bd),
        GetPut<&IKVMenuButton::get_ButtonScheme, &IKVMenuButton::put_ButtonScheme>("ButtonScheme", 0x2be),
        GetPut<&IKVMenuButton::get_Label, &IKVMenuButton::put_Label>("Label", 0x4),
        GetPut<&IKVMenuButton::get_UserData, &IKVMenuButton::put_UserData>("UserData", 0x2bf),
        Method<&IKVMenuButton::loadXML>("loadXML", 0x5, "pRootNode"),
        Method<&IKVMenuButton::SaveXML>("SaveXML", 0x6, "pRootNode", "bForceNative"),
        Method<&IKVMenuButton::GetAnchorElement>("GetAnchorElement", 0x2c1, "ppElem"),
        Method<&IKVMenuButton::GetButtonBindText>("GetButtonBindText", 0x2c8, "ppText"),
        Method<&IKVMenuButton::GetButtonOverlay>("GetButtonOverlay", 0x2c9, "index", "ppOverlay"),
        Method<&IKVMenuButton::ApplyTo>("ApplyTo", 0x2c2, "pBtn"),
        Method<&IKVMenuButton::GetHighlightRegion>("GetHighlightRegion", 0x2c3, Out("pHLIRgn")),
        GetPut<&IKVMenuButton::get_ButtonStyle, &IKVMenuButton::put_ButtonStyle>("ButtonStyle", 0x2c0),
        GetPut<&IKVMenuButton::get_ButtonTextCache, &IKVMenuButton::put_ButtonTextCache>("ButtonTextCache", 0x2c4),
        GetPut<&IKVMenuButton::get_ButtonSource, &IKVMenuButton::put_ButtonSource>("ButtonSource", 0x2c5),
        Get<&IKVMenuButton::get_ButtonOverlayCount>("ButtonOverlayCount", 0x2ca),
        GetPut<&IKVMenuButton::get_ButtonSourceHighlight, &IKVMenuButton::put_ButtonSourceHighlight>(
            "ButtonSourceHighlight", 0x2c6),
        Method<&IKVMenuButton::UseCustomOverlayOnButton>("UseCustomOverlayOnButton", 0x2c7, "pb"),
        Method<&IKVMenuButton::Move>("Move", 0x201, "dx", "dy"), Method<&IKVMenuButton::ResetID>("ResetID", 0x202),
        GetPut<&IKVMenuButton::get_CommandIndex, &IKVMenuButton::put_CommandIndex>("CommandIndex", 0x2cb));
};

// The member table hands out overlays, so their interface must be known, too.
#include "KVProjectData/IKVMenuOverlay.h"
