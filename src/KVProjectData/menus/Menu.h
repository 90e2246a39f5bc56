#pragma once
// A menu: its properties, its elements and their groups, its colours, and what plays behind it.

#include "KVProjectData/IKVMenu.h"
#include "KVProjectData/menus/GroupInfo.h"
#include "KVProjectData/menus/MenuElementList.h"
#include "KVProjectData/menus/MenuNode.h"
#include "KVProjectData/menus/MenuProductions.h"
#include "KVProjectData/menus/RecordNode.h"
#include "KVProjectData/titles/CommandList.h"
#include "KVProjectData/titles/EncodingParams.h"
#include "KVProjectData/tree/Locking.h"
#include "KVProjectData/tree/ProductionOwner.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Aggregate.h"

namespace kv {

/// Its elements bind to the effects of its production, inside the menu's section.
class CKVMenu final : public CMenuNode,
                      public ProductionOwner,
                      public Aggregate<Parts<CKVEncodingParams, CKVCommandList, CKVMenuElementList, CKVLocking>,
                                       Dual<IKVMenu>, ProductionSink> {
public:
    explicit CKVMenu(IUnknown* outer = nullptr);

    /// Makes the production, with the aspect ratio of the encoding parameters.
    HRESULT Initialise();
    /// A document was loaded: a production that it did not bring gets the aspect ratio of the encoding parameters.
    void TakeLoadedAspect();

    KV_GETTER(LONG, ID, ID())
    KV_PROPERTY(ULONG, Tag, m_tag, Undo, Fires(2))
    KV_PROPERTY(ULONG, Flags, m_flags, Undo, Fires(3))
    HRESULT get_ButtonCount(LONG* pVal) override;
    HRESULT get_TextCount(LONG* pVal) override;
    HRESULT get_ElementCount(LONG* pVal) override;
    HRESULT get_Audio(BSTR* pVal) override;
    HRESULT put_Audio(BSTR newVal) override;
    HRESULT get_Background(BSTR* pVal) override;
    HRESULT put_Background(BSTR newVal) override;
    KV_GETTER(FloatRect, LayoutRect, m_layoutRect.Value())
    HRESULT put_LayoutRect(FloatRect newVal) override;
    KV_PROPERTY(ULONG, ButtonLayout, m_buttonLayout, Undo, Fires(304))
    KV_PROPERTY(LONG, TemplateID, m_templateID, Undo, Fires(10))
    KV_GETTER(LONG, DefaultButton, m_defaultButton)
    HRESULT put_DefaultButton(LONG newVal) override;
    KV_PROPERTY(BSTR, Label, m_label, Undo, Fires(4))
    KV_GETTER(LONG, BkgndID, m_bkgndID)
    HRESULT put_BkgndID(LONG newVal) override;
    HRESULT get_BackgroundMute(VARIANT_BOOL* pVal) override;
    HRESULT put_BackgroundMute(VARIANT_BOOL newVal) override;
    HRESULT get_BackgroundAudioMute(VARIANT_BOOL* pVal) override;
    HRESULT put_BackgroundAudioMute(VARIANT_BOOL newVal) override;
    HRESULT GetProduction(IUnknown** ppProduction) override;
    HRESULT GetBackgroundProduction(IUnknown** ppProduction) override;
    HRESULT GetButton(LONG index, IKVMenuButton** ppButton) override;
    HRESULT GetText(LONG index, IKVMenuText** ppText) override;
    HRESULT GetMenuElement(LONG index, IKVMenuElement** ppElement) override;
    HRESULT GetSubpictureColours(SPUColourTypes type, SPUColourInfo* pSelected, SPUColourInfo* pActivated) override;
    HRESULT SetSubpictureColours(SPUColourTypes type, const SPUColourInfo* pSelected,
                                 const SPUColourInfo* pActivated) override;
    HRESULT GetPalette(RGBEntry* pEntries) override;
    HRESULT SetPalette(const RGBEntry* pEntries) override;
    HRESULT loadXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bPreserveID) override;
    HRESULT SaveXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bForceNative) override;
    HRESULT GetProject(IKVProjectData** ppProject) override;
    KV_GETTER(VARIANT_BOOL, IsNative, m_native)
    HRESULT SetNative(VARIANT_BOOL bNative) override;
    HRESULT get_Duration(double* pVal) override;
    HRESULT put_Duration(double newVal) override;
    HRESULT SetPreProduceProduction(IUnknown* pUnk) override;
    HRESULT GetPreProduceProduction(IUnknown** pp) override;
    HRESULT GetSmartAudio(BSTR* pbstr) override { return Get(pbstr, m_audio); }
    HRESULT GetButtonPosition(BSTR* pbstr) override { return Get(pbstr, m_buttonsPosition); }
    HRESULT SetButtonPosition(BSTR bstr) override;
    HRESULT AddtoGroup(LONG nEleId, LONG nGroupID) override;
    HRESULT GetGroupByGroupID(LONG nGroupID, IUnknown** ppGroup) override;
    HRESULT GetGroupIDByElementID(LONG nEleId, IUnknown** ppGroup) override;
    HRESULT RemoveGroup(LONG nGroupID) override;
    HRESULT CopyGroupInfoList(IKVMenu* pMenu) override;
    HRESULT ClearGroupInfoList() override;
    HRESULT MoveElementOrder(LONG nFrom, LONG nTo) override;
    HRESULT SetTempSubMenuText(IUnknown* pText) override;
    HRESULT GetTempSubMenuText(IKVMenuText** ppText) override;
    HRESULT SetTempCmdButton(IUnknown* pButton) override;
    HRESULT GetTempCmdButton(IKVMenuButton** ppButton) override;
    HRESULT ResizeMenuBackground(VARIANT_BOOL isFit) override;
    HRESULT GetMenuBackgroundPanelSource(BSTR* pbstr) override;
    HRESULT SetMenuBackgroundFadeInOut(VARIANT_BOOL bEnable) override;
    HRESULT GetMenuBackgroundFadeInOut(VARIANT_BOOL* pbEnable) override;
    KV_GETTER(LONG, IsMenuBackgroundLoopPlay, LONG{m_loopPlay})
    HRESULT put_IsMenuBackgroundLoopPlay(LONG newVal) override;
    HRESULT SetMenuBackgroundCrop(float fTop, float fLeft, float fBottom, float fRight) override;
    HRESULT GetMenuBackgroundCrop(float* fTop, float* fLeft, float* fBottom, float* fRight) override;
    HRESULT GetMenuBackgroundAspectRatio(double* p) override;
    HRESULT IsMenuBackgroundFill(VARIANT_BOOL* p) override;
    HRESULT SetMenuBackgroundCropMode(VARIANT_BOOL bIsCrop) override;
    HRESULT SetMenuBackgroundAudioVolume(double dVolume) override;
    HRESULT GetMenuBackgroundAudioVolume(double* pdVolume) override;
    HRESULT SetMenuBackgroundVolume(double dVolume) override;
    HRESULT GetMenuBackgroundVolume(double* pdVolume) override;
    HRESULT SetMenuBackgroundAudioFadeEnable(VARIANT_BOOL bEnable) override;
    HRESULT GetMenuBackgroundAudioFadeEnable(VARIANT_BOOL* pbEnable) override;
    HRESULT PutBackgroundWithTrim(BSTR bstrBackground, double dIn, double dOut) override;
    HRESULT ExtractBackgroundThumbnail(LONG w, LONG h, BYTE** ppBits) override;
    HRESULT AdjustNativeDuration() override;
    HRESULT ReNewID() override;

    /// E_UNEXPECTED for an element that is neither an overlay nor a text; S_FALSE for one that is not there.
    HRESULT OnEffectChanged(LONG lElementID, LONG lButtonID) override;
    HRESULT OnEffectsInvalidated() override;

    using CProjectNode::SaveXML;

    CKVEncodingParams& EncodingParams() { return Part<CKVEncodingParams>(); }
    CKVCommandList& CommandList() { return Part<CKVCommandList>(); }
    CKVMenuElementList& Elements() { return Part<CKVMenuElementList>(); }
    CGroupInfoListNode& Groups() { return m_groups; }

    ComPtr<IUnknown> MenuProduction() override { return m_productions.Menu(); }
    ComPtr<IUnknown> BackgroundProduction() { return m_productions.Background(); }
    /// Has a native menu name its background by another path of the file that it shows. S_FALSE for any other menu,
    /// which names what its production shows.
    HRESULT NameBackground(BSTR path);
    bool IsNativeMenu() override { return m_native; }
    bool IsWide() override;
    HRESULT MarkButtonsMoved() override;

    std::vector<OwnedProduction> Productions() override;
    HRESULT TakeProduction(std::string_view name, IUnknown* production) override;
    std::shared_ptr<const ModeImage> PresentMode() override;

    IUnknown* Identity() override { return Controlling(); }
    ProductionOwner* Owner() override { return this; }

    void Attributes(AttributeArchive& archive) override;

protected:
    void FinalRelease() override;
    void FirePropertyChanged(DISPID propId) override;
    void ProductionChanged(LONG event, LONG param) override { MenuSink::PassOn(*this, event, param); }

private:
    class OtherMode;
    class ShownMode;
    /// What the menu plays: in fields of its own, or in a production.
    struct Playing {
        Bstr background;
        Bstr audio;
        double duration = 0.0;
    };

    HRESULT CountElements(NodeType type, LONG* out);
    /// The element at a position among those of a type, of all with typeNone; positions count from 1.
    template <class Interface>
    HRESULT FindElementAt(NodeType type, LONG position, Interface** out);
    CButtonSchemeNode* Scheme(SPUColourTypes type);
    template <class Matches>
    CGroupInfoNode* FindGroup(Matches&& matches);
    /// No group has a negative ID for who asks.
    CGroupInfoNode* FindGroupByID(LONG id);
    template <class Interface>
    void HoldTemp(ComPtr<Interface>& place, IUnknown* object);

    /// Background, audio and duration are the menu's own.
    bool KeepsPlaying() const { return m_native || m_bkgndID > 0; }
    /// The production that holds the audio, and the one that holds the background.
    ComPtr<IUnknown> AudioProduction() const;
    ComPtr<IUnknown> BackgroundSourceProduction() const;
    /// What a production plays. One that shows nothing has a length of its own when it was given one, else the menu's.
    Playing PlayingOf(IUnknown* production) const;
    /// In either mode.
    Playing Played() const;
    HRESULT GetPlayedDuration(IUnknown* production, double* duration) const;
    /// Failures are reported, and thrown as Error.
    void Play(IUnknown* production, const Playing& playing);
    HRESULT PutBackground(BSTR source, double inPoint, double outPoint);
    void ListPlaying(AttributeArchive& archive);
    /// Takes over what a document said, in the production in use, too, if it can. `before` is what was played.
    void TakePlaying(bool native, Playing loaded, const Playing& before);

    HRESULT TurnNative(OtherMode& left);
    HRESULT TurnToProduction(OtherMode& left);
    HRESULT ExchangeMode(OtherMode& other);
    /// The production of the mode.
    ProductionUse ModeProduction() const { return m_native ? m_productions.BackgroundUse() : m_productions.MenuUse(); }
    bool EnterMode(bool native, ProductionUse production);

    /// Asks the background production. Without one `out` is nothing, and the result S_FALSE.
    template <class Out, class Ask>
    HRESULT AskBackground(Out* out, Ask&& ask);
    /// Edits the background production, S_FALSE without one. What is edited is recorded before.
    template <class Change>
    HRESULT EditBackground(Change&& change);
    /// A menu that is not native is left as it is, whatever was asked; E_INVALIDARG for what is not valid otherwise.
    template <class Change>
    HRESULT EditNativeBackground(Change&& change, bool isValid = true);

    bool m_native = false;
    bool m_loopPlay = true;
    ULONG m_tag = 0;
    ULONG m_flags = 0;
    Bstr m_label;
    LONG m_defaultButton = 0;
    LONG m_bkgndID = 0;
    Bstr m_background;
    Bstr m_audio;
    /// Seconds.
    double m_duration = 30.0;
    ULONG m_buttonLayout = 0;
    LONG m_templateID = 0;
    Bstr m_buttonsPosition{u""};

    CPaletteNode m_palette;
    std::array<CButtonSchemeNode, 3> m_schemes{CButtonSchemeNode("ButtonScheme1"), CButtonSchemeNode("ButtonScheme2"),
                                               CButtonSchemeNode("ButtonScheme3")};
    CSPUColourNode m_spuColours;
    CLayoutRectNode m_layoutRect;
    CGroupInfoListNode m_groups;

    MenuProductions m_productions{*this, *this};
    /// Kept only: the engine has no call that hands one production over to another.
    ComPtr<IUnknown> m_preProduced;
    ComPtr<IKVMenuText> m_tempSubMenuText;
    ComPtr<IKVMenuButton> m_tempCmdButton;
};

} // namespace kv
