#pragma once
// A menu of the disc: its background, its audio, its elements, the colours of its buttons.
//
// Getters return E_POINTER for a null out-pointer; strings handed out are the caller's to free, and objects carry a
// reference. Setters return KV_E_LOCKED for a locked menu. Changes are recorded for undo and told by MenuPropChanged
// with the menu's ID and the DISPID of the property. Failures of the engine are returned. A menu also answers for
// IKVEncodingParams, IKVCommandList, IKVLocking and IKVMenuElementList.
//
// The menu's production shows its background and its elements, and plays its audio. A native menu keeps background,
// audio and duration itself, and has a background production in that place. A menu with a BkgndID above 0 keeps these
// three itself, too.

#include "KVProjectData/Enumerations.h"
#include "KVProjectData/Geometry.h"
#include "KVProjectData/MenuRecords.h"
#include "platform/automation/Members.h"
#include "platform/xml/Dom.h"

struct IGroupInfoNode;
struct IKVMenuButton;
struct IKVMenuElement;
struct IKVMenuText;
struct IKVProjectData;

struct IKVMenu : IDispatch {
    static constexpr GUID IID = "0ecaf828-e2f7-4553-8fcc-69d79561a0d1"_guid;
    using Base = IDispatch;

    /// Unique in the process; kept in the document.
    virtual HRESULT get_ID(LONG* pVal) = 0;

    /// MenuTypes.
    virtual HRESULT get_Tag(ULONG* pVal) = 0;
    virtual HRESULT put_Tag(ULONG newVal) = 0;

    /// MenuFlags.
    virtual HRESULT get_Flags(ULONG* pVal) = 0;
    virtual HRESULT put_Flags(ULONG newVal) = 0;
    virtual HRESULT get_ButtonCount(LONG* pVal) = 0;
    virtual HRESULT get_TextCount(LONG* pVal) = 0;

    /// Of all kinds.
    virtual HRESULT get_ElementCount(LONG* pVal) = 0;

    /// A path, in which variables such as "%CONTENT%" are replaced, of a file that exists and is no folder, else
    /// KV_E_NO_AUDIO_FILE; empty or null for none.
    virtual HRESULT get_Audio(BSTR* pVal) = 0;
    virtual HRESULT put_Audio(BSTR newVal) = 0;

    /// A path as above, else KV_E_NO_BACKGROUND_FILE; or a moniker, which begins with "moniker:" in any case. Sets
    /// BkgndID to 0.
    virtual HRESULT get_Background(BSTR* pVal) = 0;
    virtual HRESULT put_Background(BSTR newVal) = 0;

    /// The area in which the host lays out the buttons.
    virtual HRESULT get_LayoutRect(FloatRect* pVal) = 0;
    virtual HRESULT put_LayoutRect(FloatRect newVal) = 0;

    /// The host's number of how the buttons are laid out.
    virtual HRESULT get_ButtonLayout(ULONG* pVal) = 0;
    virtual HRESULT put_ButtonLayout(ULONG newVal) = 0;

    /// The template that the menu was made from, 0 for none.
    virtual HRESULT get_TemplateID(LONG* pVal) = 0;
    virtual HRESULT put_TemplateID(LONG newVal) = 0;

    /// The ID of a button of the menu, else KV_E_NO_SUCH_ID; 0 for none.
    virtual HRESULT get_DefaultButton(LONG* pVal) = 0;
    virtual HRESULT put_DefaultButton(LONG newVal) = 0;

    /// Null allowed.
    virtual HRESULT get_Label(BSTR* pVal) = 0;
    virtual HRESULT put_Label(BSTR newVal) = 0;

    /// The host's number of a background. Setting it forgets the background that the menu keeps.
    virtual HRESULT get_BkgndID(LONG* pVal) = 0;
    virtual HRESULT put_BkgndID(LONG newVal) = 0;

    /// Of the sound of the background, and of the audio. The background production is asked, here and in all members
    /// below that bear its name: without one, getters give 0 or null and S_FALSE, setters S_FALSE. No event.
    virtual HRESULT get_BackgroundMute(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_BackgroundMute(VARIANT_BOOL newVal) = 0;
    virtual HRESULT get_BackgroundAudioMute(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_BackgroundAudioMute(VARIANT_BOOL newVal) = 0;

    /// The menu's production. Null and S_FALSE when there is none, which is so of native menus.
    virtual HRESULT GetProduction(IUnknown** ppProduction) = 0;

    /// The background production of a native menu; else null and S_FALSE.
    virtual HRESULT GetBackgroundProduction(IUnknown** ppProduction) = 0;

    /// Elements count from 1, here those of a kind: KV_E_BAD_POSITION and null where there is none.
    virtual HRESULT GetButton(LONG index, IKVMenuButton** ppButton) = 0;
    virtual HRESULT GetText(LONG index, IKVMenuText** ppText) = 0;

    /// Of any kind.
    virtual HRESULT GetMenuElement(LONG index, IKVMenuElement** ppElement) = 0;

    /// The colours of a scheme of buttons, or for SPU_Normal those of what is no button, which `pSelected` takes alone.
    /// Reading a scheme sets its emphasis 2 to the colour of the pattern and to half its contrast, rounded up: the next
    /// read tells so. E_INVALIDARG for any other type.
    virtual HRESULT GetSubpictureColours(SPUColourTypes type, SPUColourInfo* pSelected, SPUColourInfo* pActivated) = 0;

    /// KV_E_BAD_COLOUR_INDEX and KV_E_BAD_CONTRAST above 15, of the first that is wrong; nothing has changed then. Told
    /// with the propID 311.
    virtual HRESULT SetSubpictureColours(SPUColourTypes type, const SPUColourInfo* pSelected,
                                         const SPUColourInfo* pActivated) = 0;

    /// 16 entries.
    virtual HRESULT GetPalette(RGBEntry* pEntries) = 0;

    /// 16 entries. Told with the propID 313.
    virtual HRESULT SetPalette(const RGBEntry* pEntries) = 0;

    /// Replaces the menu and its elements by what stands at a node, and keeps its ID with VARIANT_TRUE (no other
    /// value). Neither recorded nor told.
    virtual HRESULT loadXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bPreserveID) = 0;

    /// Writes the menu below a node. Background, audio, duration and what the elements show are written of native
    /// menus, and of others when `bForceNative` is not 0.
    virtual HRESULT SaveXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bForceNative) = 0;

    /// Null and S_FALSE for a menu that is in no project.
    virtual HRESULT GetProject(IKVProjectData** ppProject) = 0;
    virtual HRESULT get_IsNative(VARIANT_BOOL* pVal) = 0;

    /// Takes background, audio and duration over from the production, or gives them back to it, with the effects of the
    /// elements. S_FALSE when the menu is so already.
    virtual HRESULT SetNative(VARIANT_BOOL bNative) = 0;

    /// Seconds; 30 at first.
    virtual HRESULT get_Duration(double* pVal) = 0;
    virtual HRESULT put_Duration(double newVal) = 0;

    /// Keeps a production that was made beforehand, null for none. Neither looks at the lock, nor is it recorded or
    /// told. The one before is let go of: the engine has no call that hands it the new one.
    virtual HRESULT SetPreProduceProduction(IUnknown* pUnk) = 0;

    /// Null and S_OK when there is none.
    virtual HRESULT GetPreProduceProduction(IUnknown** pp) = 0;

    /// The audio that the menu keeps itself.
    virtual HRESULT GetSmartAudio(BSTR* pbstr) = 0;

    /// The host's text. Setting it neither looks at the lock, nor is it recorded or told.
    virtual HRESULT GetButtonPosition(BSTR* pbstr) = 0;
    virtual HRESULT SetButtonPosition(BSTR bstr) = 0;

    /// Adds an element to the group with that ID, once. Without such a group a new one takes it, which has an ID of its
    /// own. No event, as for all that is done to groups.
    virtual HRESULT AddtoGroup(LONG nEleId, LONG nGroupID) = 0;

    /// An IGroupInfoNode; null when there is none, with S_FALSE for an ID below 0.
    virtual HRESULT GetGroupByGroupID(LONG nGroupID, IUnknown** ppGroup) = 0;

    /// The first group that has the element; null when there is none.
    virtual HRESULT GetGroupIDByElementID(LONG nEleId, IUnknown** ppGroup) = 0;

    /// S_OK also when there is none.
    virtual HRESULT RemoveGroup(LONG nGroupID) = 0;

    /// Adds the groups of this menu to another one, element by element as AddtoGroup does. A group that the other menu
    /// has under the same ID takes the frame and the rotation.
    virtual HRESULT CopyGroupInfoList(IKVMenu* pMenu) = 0;

    /// Not recorded.
    virtual HRESULT ClearGroupInfoList() = 0;

    /// Positions of the element list, counted from 0. Afterwards the element stands at `nTo`; nothing moves where there
    /// is none. Does not look at the lock, no event.
    virtual HRESULT MoveElementOrder(LONG nFrom, LONG nTo) = 0;

    /// A text, and below a button, that the host keeps with the menu; null for none, which any other object is, too.
    /// They are not saved, recorded or told.
    virtual HRESULT SetTempSubMenuText(IUnknown* pText) = 0;
    virtual HRESULT GetTempSubMenuText(IKVMenuText** ppText) = 0;
    virtual HRESULT SetTempCmdButton(IUnknown* pButton) = 0;
    virtual HRESULT GetTempCmdButton(IKVMenuButton** ppButton) = 0;

    /// Shows the whole background, or with 0 as much of it as fills the frame. Told as a change of Background.
    virtual HRESULT ResizeMenuBackground(VARIANT_BOOL isFit) = 0;

    /// The source of the first clip. S_FALSE when there is none, and for a null out-pointer.
    virtual HRESULT GetMenuBackgroundPanelSource(BSTR* pbstr) = 0;

    /// Of the sound of the background: over half of it up to 6 seconds, over 3 seconds of a longer one. No event.
    virtual HRESULT SetMenuBackgroundFadeInOut(VARIANT_BOOL bEnable) = 0;
    virtual HRESULT GetMenuBackgroundFadeInOut(VARIANT_BOOL* pbEnable) = 0;

    /// 1 or 0; any value but 0 sets 1, which it is at first.
    virtual HRESULT get_IsMenuBackgroundLoopPlay(LONG* pVal) = 0;
    virtual HRESULT put_IsMenuBackgroundLoopPlay(LONG newVal) = 0;

    /// The part of the background that is shown, of a picture that goes from 0 to 1 downwards. Nothing happens to a
    /// menu that is not native. Told as a change of Background.
    virtual HRESULT SetMenuBackgroundCrop(float fTop, float fLeft, float fBottom, float fRight) = 0;
    virtual HRESULT GetMenuBackgroundCrop(float* fTop, float* fLeft, float* fBottom, float* fRight) = 0;

    /// Width to height.
    virtual HRESULT GetMenuBackgroundAspectRatio(double* p) = 0;

    /// Whether the background fills the frame.
    virtual HRESULT IsMenuBackgroundFill(VARIANT_BOOL* p) = 0;

    /// Whether the crop is used; as SetMenuBackgroundCrop otherwise.
    virtual HRESULT SetMenuBackgroundCropMode(VARIANT_BOOL bIsCrop) = 0;

    /// Factors of the level: of the audio, and below of the sound of the background. No event.
    virtual HRESULT SetMenuBackgroundAudioVolume(double dVolume) = 0;
    virtual HRESULT GetMenuBackgroundAudioVolume(double* pdVolume) = 0;
    virtual HRESULT SetMenuBackgroundVolume(double dVolume) = 0;
    virtual HRESULT GetMenuBackgroundVolume(double* pdVolume) = 0;

    /// Of the audio, as SetMenuBackgroundFadeInOut. Told with the propID 356.
    virtual HRESULT SetMenuBackgroundAudioFadeEnable(VARIANT_BOOL bEnable) = 0;
    virtual HRESULT GetMenuBackgroundAudioFadeEnable(VARIANT_BOOL* pbEnable) = 0;

    /// Sets Background to a part of a clip. Seconds of the clip; an out point of 0 is its end.
    virtual HRESULT PutBackgroundWithTrim(BSTR bstrBackground, double dIn, double dOut) = 0;

    /// The first picture of the background, scaled to that many pixels: as in IKVMenuOverlay::ExtractThumbnail.
    virtual HRESULT ExtractBackgroundThumbnail(LONG w, LONG h, BYTE** ppBits) = 0;

    /// Makes the duration of a native menu that of its background production.
    virtual HRESULT AdjustNativeDuration() = 0;

    /// Gives the menu a new ID. Neither recorded nor told.
    virtual HRESULT ReNewID() = 0;
};

template <>
struct kv::InterfaceTable<IKVMenu> {
    static constexpr auto members = Members(
        Get<&IKVMenu::get_ID>("ID", 0x1), GetPut<&IKVMenu::get_Tag, &IKVMenu::put_Tag>("Tag", 0x2),
        GetPut<&IKVMenu::get_Flags, &IKVMenu::put_Flags>("Flags", 0x3),
        Get<&IKVMenu::get_ButtonCount>("ButtonCount", 0x12c), Get<&IKVMenu::get_TextCount>("TextCount", 0x14c),
        Get<&IKVMenu::get_ElementCount>("ElementCount", 0x14d),
        GetPut<&IKVMenu::get_Audio, &IKVMenu::put_Audio>("Audio", 0x12e),
        GetPut<&IKVMenu::get_Background, &IKVMenu::put_Background>("Background", 0x12d),
        GetPut<&IKVMenu::get_LayoutRect, &IKVMenu::put_LayoutRect>("LayoutRect", 0x12f),
        GetPut<&IKVMenu::get_ButtonLayout, &IKVMenu::put_ButtonLayout>("ButtonLayout", 0x130),
        GetPut<&IKVMenu::get_TemplateID, &IKVMenu::put_TemplateID>("TemplateID", 0xa),
        GetPut<&IKVMenu::get_DefaultButton, &IKVMenu::put_DefaultButton>("DefaultButton", 0x132),
        GetPut<&IKVMenu::get_Label, &IKVMenu::put_Label>("Label", 0x4),
        GetPut<&IKVMenu::get_BkgndID, &IKVMenu::put_BkgndID>("BkgndID", 0x133),
        GetPut<&IKVMenu::get_BackgroundMute, &IKVMenu::put_BackgroundMute>("BackgroundMute", 0x167),
        GetPut<&IKVMenu::get_BackgroundAudioMute, &IKVMenu::put_BackgroundAudioMute>("BackgroundAudioMute", 0x168),
        Method<&IKVMenu::GetProduction>("GetProduction", 0x7, "ppProduction"),
        Method<&IKVMenu::GetBackgroundProduction>("GetBackgroundProduction", 0x13d, "ppProduction"),
        Method<&IKVMenu::GetButton>("GetButton", 0x135, "index", "ppButton"),
        Method<&IKVMenu::GetText>("GetText", 0x14e, "index", "ppText"),
        Method<&IKVMenu::GetMenuElement>("GetMenuElement", 0x14f, "index", "ppElement"),
        Method<&IKVMenu::GetSubpictureColours>("GetSubpictureColours", 0x136, "type", Out("pSelected"),
                                               Out(Optional("pActivated"))),
        Method<&IKVMenu::SetSubpictureColours>("SetSubpictureColours", 0x137, "type", "pSelected",
                                               Optional("pActivated")),
        Method<&IKVMenu::GetPalette>("GetPalette", 0x138, Out(Several("pEntries", 16))),
        Method<&IKVMenu::SetPalette>("SetPalette", 0x139, Several("pEntries", 16)),
        Method<&IKVMenu::loadXML>("loadXML", 0x5, "pRootNode", "bPreserveID"),
        Method<&IKVMenu::SaveXML>("SaveXML", 0x6, "pRootNode", "bForceNative"),
        Method<&IKVMenu::GetProject>("GetProject", 0x8, "ppProject"), Get<&IKVMenu::get_IsNative>("IsNative", 0x131),
        Method<&IKVMenu::SetNative>("SetNative", 0x13a, "bNative"),
        GetPut<&IKVMenu::get_Duration, &IKVMenu::put_Duration>("Duration", 0x134),
        Method<&IKVMenu::SetPreProduceProduction>("SetPreProduceProduction", 0x13b, "pUnk"),
        Method<&IKVMenu::GetPreProduceProduction>("GetPreProduceProduction", 0x13c, "pp"),
        Method<&IKVMenu::GetSmartAudio>("GetSmartAudio", 0x13e, "pbstr"),
        Method<&IKVMenu::GetButtonPosition>("GetButtonPosition", 0x13f, "pbstr"),
        Method<&IKVMenu::SetButtonPosition>("SetButtonPosition", 0x140, "bstr"),
        Method<&IKVMenu::AddtoGroup>("AddtoGroup", 0x141, "nEleId", "nGroupID"),
        Method<&IKVMenu::GetGroupByGroupID>("GetGroupByGroupID", 0x150, "nGroupID", "ppGroup"),
        Method<&IKVMenu::GetGroupIDByElementID>("GetGroupIDByElementID", 0x142, "nEleId", "ppGroup"),
        Method<&IKVMenu::RemoveGroup>("RemoveGroup", 0x143, "nGroupID"),
        Method<&IKVMenu::CopyGroupInfoList>("CopyGroupInfoList", 0x14a, "pMenu"),
        Method<&IKVMenu::ClearGroupInfoList>("ClearGroupInfoList", 0x14b),
        Method<&IKVMenu::MoveElementOrder>("MoveElementOrder", 0x151, "nFrom", "nTo"),
        Method<&IKVMenu::SetTempSubMenuText>("SetTempSubMenuText", 0x152, "pText"),
        Method<&IKVMenu::GetTempSubMenuText>("GetTempSubMenuText", 0x153, "ppText"),
        Method<&IKVMenu::SetTempCmdButton>("SetTempCmdButton", 0x154, "pButton"),
        Method<&IKVMenu::GetTempCmdButton>("GetTempCmdButton", 0x155, "ppButton"),
        Method<&IKVMenu::ResizeMenuBackground>("ResizeMenuBackground", 0x156, "isFit"),
        Method<&IKVMenu::GetMenuBackgroundPanelSource>("GetMenuBackgroundPanelSource", 0x157, "pbstr"),
        Method<&IKVMenu::SetMenuBackgroundFadeInOut>("SetMenuBackgroundFadeInOut", 0x158, "bEnable"),
        Method<&IKVMenu::GetMenuBackgroundFadeInOut>("GetMenuBackgroundFadeInOut", 0x159, "pbEnable"),
        GetPut<&IKVMenu::get_IsMenuBackgroundLoopPlay, &IKVMenu::put_IsMenuBackgroundLoopPlay>(
            "IsMenuBackgroundLoopPlay", 0x15a),
        Method<&IKVMenu::SetMenuBackgroundCrop>("SetMenuBackgroundCrop", 0x15b, "fTop", "fLeft", "fBottom", "fRight"),
        Method<&IKVMenu::GetMenuBackgroundCrop>("GetMenuBackgroundCrop", 0x15c, "fTop", "fLeft", "fBottom", "fRight"),
        Method<&IKVMenu::GetMenuBackgroundAspectRatio>("GetMenuBackgroundAspectRatio", 0x15d, "p"),
        Method<&IKVMenu::IsMenuBackgroundFill>("IsMenuBackgroundFill", 0x15e, "p"),
        Method<&IKVMenu::SetMenuBackgroundCropMode>("SetMenuBackgroundCropMode", 0x15f, "bIsCrop"),
        Method<&IKVMenu::SetMenuBackgroundAudioVolume>("SetMenuBackgroundAudioVolume", 0x160, "dVolume"),
        Method<&IKVMenu::GetMenuBackgroundAudioVolume>("GetMenuBackgroundAudioVolume", 0x161, "pdVolume"),
        Method<&IKVMenu::SetMenuBackgroundVolume>("SetMenuBackgroundVolume", 0x162, "dVolume"),
        Method<&IKVMenu::GetMenuBackgroundVolume>("GetMenuBackgroundVolume", 0x163, "pdVolume"),
        Method<&IKVMenu::SetMenuBackgroundAudioFadeEnable>("SetMenuBackgroundAudioFadeEnable", 0x164, "bEnable"),
        Method<&IKVMenu::GetMenuBackgroundAudioFadeEnable>("GetMenuBackgroundAudioFadeEnable", 0x165, "pbEnable"),
        Method<&IKVMenu::PutBackgroundWithTrim>("PutBackgroundWithTrim", 0x166, "bstrBackground", "dIn", "dOut"),
        Method<&IKVMenu::ExtractBackgroundThumbnail>("ExtractBackgroundThumbnail", 0x169, "w", "h", "ppBits"),
        Method<&IKVMenu::AdjustNativeDuration>("AdjustNativeDuration", 0x16a),
        Method<&IKVMenu::ReNewID>("ReNewID", 0x16b));
};

// The member table hands out these objects, so their interfaces must be known, too.
#include "KVProjectData/IGroupInfoNode.h"
#include "KVProjectData/IKVMenuButton.h"
#include "KVProjectData/IKVMenuElement.h"
#include "KVProjectData/IKVMenuText.h"
#include "KVProjectData/IKVProjectData.h"
