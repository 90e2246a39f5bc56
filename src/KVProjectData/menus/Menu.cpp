#include "KVProjectData/menus/Menu.h"

#include "KVProjectData/IKVMenuButton.h"
#include "KVProjectData/IKVMenuText.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/persistence/XMLDataLoader.h"
#include "KVProjectData/persistence/XMLPersistor.h"
#include "KVProjectData/tree/ItemProject.h"
#include "KVProjectData/tree/ObjectID.h"
#include "SbdUtils/EngineCalls.h"

#include <algorithm>

namespace kv {

CKVMenu::CKVMenu(IUnknown* outer) : Aggregate(outer)
{
    AddChild(&m_palette, true);
    for (CButtonSchemeNode& scheme : m_schemes)
        AddChild(&scheme, true);
    AddChild(&m_spuColours, true);
    AddChild(&m_layoutRect, true);
    AddChild(&MakePart<CKVEncodingParams>(), true);
    AddChild(&MakePart<CKVCommandList>(), true);
    AddChild(&MakePart<CKVMenuElementList>(), true);
    AddChild(&m_groups, true);
    MakePart<CKVLocking>(this);
}

HRESULT CKVMenu::Initialise()
{
    return Read([&] {
        EngineCalls::Begin();
        if (m_native) return m_productions.MakeBackground();
        const HRESULT made = m_productions.MakeMenu();
        return made == S_OK && IsWide() ? m_productions.AspectToMenu(EncodingParams()) : made;
    });
}

void CKVMenu::TakeLoadedAspect()
{
    const SectionLock lock(Section());
    // What the engine does not take is told.
    if (m_productions.Menu()) m_productions.AspectToMenu(EncodingParams());
}

void CKVMenu::FinalRelease()
{
    m_productions.End();
    ReleaseParts();
}

void CKVMenu::FirePropertyChanged(DISPID propId)
{
    FireEvent(EVENT_MenuPropChanged, ID(), propId, 0);
}

void CKVMenu::Attributes(AttributeArchive& archive)
{
    archive.ID(*this);
    archive("IsMenuBackgroundLoopPlay", m_loopPlay);
    archive("backgroundID", m_bkgndID);
    archive("btnLayout", Hex{m_buttonLayout, 8});
    archive("buttonsPosition", m_buttonsPosition);
    archive("defaultButton", m_defaultButton);
    archive("flag", Flags(m_flags, kMenuFlagNames));
    archive("label", m_label);
    archive("tag", Flags(m_tag, kMenuTypeNames));
    archive("templateID", m_templateID);
    ListPlaying(archive);
}

// Plain properties with rules of their own

HRESULT CKVMenu::put_LayoutRect(FloatRect newVal)
{
    return Edit([&](EditScope& edit) {
        const HRESULT set = m_layoutRect.SetRect(newVal);
        if (SUCCEEDED(set)) edit.Changed(303);
        return set;
    });
}

HRESULT CKVMenu::put_DefaultButton(LONG newVal)
{
    return Edit([&](EditScope& edit) {
        const CProjectNode* button = newVal == 0 ? nullptr : Elements().FindChildByID(newVal);
        if (newVal != 0 && (!button || button->Type() != typeButton)) return KV_E_NO_SUCH_ID;
        edit.Record();
        m_defaultButton = newVal;
        edit.Changed(306);
        return S_OK;
    });
}

HRESULT CKVMenu::put_BkgndID(LONG newVal)
{
    return Edit([&](EditScope& edit) {
        edit.Record();
        m_bkgndID = newVal;
        m_background = {};
        edit.Changed(307);
        return S_OK;
    });
}

HRESULT CKVMenu::put_IsMenuBackgroundLoopPlay(LONG newVal)
{
    return Put(m_loopPlay, newVal != 0, Undo, Fires(346));
}

HRESULT CKVMenu::SetButtonPosition(BSTR bstr)
{
    return Read([&] {
        m_buttonsPosition = Bstr::CopyOf(bstr);
        return S_OK;
    });
}

HRESULT CKVMenu::ReNewID()
{
    return Read([&] {
        SetID(TakeNextID());
        return S_OK;
    });
}

HRESULT CKVMenu::GetProject(IKVProjectData** ppProject)
{
    return GiveProject(*this, ppProject);
}

template <class Interface>
void CKVMenu::HoldTemp(ComPtr<Interface>& place, IUnknown* object)
{
    // What is let go is released when the section has been left.
    auto held = Query<Interface>(object);
    const SectionLock lock(Section());
    if (!IsSameObject(place.Get(), object)) std::swap(place, held);
}

HRESULT CKVMenu::SetTempSubMenuText(IUnknown* pText)
{
    HoldTemp(m_tempSubMenuText, pText);
    return S_OK;
}

HRESULT CKVMenu::GetTempSubMenuText(IKVMenuText** ppText)
{
    return Read([&] { return m_tempSubMenuText.CopyTo(ppText); });
}

HRESULT CKVMenu::SetTempCmdButton(IUnknown* pButton)
{
    HoldTemp(m_tempCmdButton, pButton);
    return S_OK;
}

HRESULT CKVMenu::GetTempCmdButton(IKVMenuButton** ppButton)
{
    return Read([&] { return m_tempCmdButton.CopyTo(ppButton); });
}

bool CKVMenu::IsWide()
{
    AspectRatio aspect = AspectRatio_None;
    EncodingParams().get_AspectRatio(&aspect);
    return aspect == AspectRatio_16x9;
}

HRESULT CKVMenu::MarkButtonsMoved()
{
    return m_flags & MenuFlag_UserButtonsDirty ? S_OK : put_Flags(m_flags | MenuFlag_UserButtonsDirty);
}

// Colours

CButtonSchemeNode* CKVMenu::Scheme(SPUColourTypes type)
{
    const auto index = static_cast<std::size_t>(type);
    return index < m_schemes.size() ? &m_schemes[index] : nullptr;
}

HRESULT CKVMenu::GetSubpictureColours(SPUColourTypes type, SPUColourInfo* pSelected, SPUColourInfo* pActivated)
{
    return Read([&] {
        CButtonSchemeNode* const scheme = Scheme(type);
        if (!scheme && type != SPU_Normal) return E_INVALIDARG;
        if (!pSelected || (scheme && !pActivated)) return E_POINTER;
        if (scheme) {
            const ButtonColours colours = scheme->TakeColours();
            *pSelected = colours.selected;
            *pActivated = colours.activated;
        } else {
            *pSelected = m_spuColours.Value();
        }
        return S_OK;
    });
}

HRESULT CKVMenu::SetSubpictureColours(SPUColourTypes type, const SPUColourInfo* pSelected,
                                      const SPUColourInfo* pActivated)
{
    return Edit([&](EditScope& edit) {
        CButtonSchemeNode* const scheme = Scheme(type);
        if (!scheme && type != SPU_Normal) return E_INVALIDARG;
        if (!pSelected || (scheme && !pActivated)) return E_POINTER;
        const HRESULT set =
            scheme ? scheme->SetColours({*pSelected, *pActivated}) : m_spuColours.SetColours(*pSelected);
        if (SUCCEEDED(set)) edit.Changed(311);
        return set;
    });
}

HRESULT CKVMenu::GetPalette(RGBEntry* pEntries)
{
    return Read([&] {
        if (!pEntries) return E_POINTER;
        std::ranges::copy(m_palette.Value(), pEntries);
        return S_OK;
    });
}

HRESULT CKVMenu::SetPalette(const RGBEntry* pEntries)
{
    return Edit([&](EditScope& edit) {
        if (!pEntries) return E_POINTER;
        Palette entries;
        std::copy_n(pEntries, entries.size(), entries.begin());
        m_palette.SetEntries(entries);
        edit.Changed(313);
        return S_OK;
    });
}

// Documents

HRESULT CKVMenu::loadXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bPreserveID)
{
    return Edit([&](EditScope&) {
        EngineCalls::Begin();
        if (!pRootNode) return KV_E_NO_XML_NODE;
        // What is there must not mix with what the document brings.
        Elements().DropAll();
        CommandList().DropAll();
        m_groups.DropAll();
        const LONG id = ID();
        const HRESULT loaded = CKVXMLDataLoader(*this).Load(pRootNode);
        if (bPreserveID == VARIANT_TRUE) SetID(id);
        TakeLoadedAspect();
        return loaded;
    });
}

HRESULT CKVMenu::SaveXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bForceNative)
{
    return Read([&] {
        if (!pRootNode) return E_POINTER;
        return CXMLPersistor(pRootNode).Visit(*this, bForceNative != VARIANT_FALSE ? kSaveNative : 0);
    });
}

} // namespace kv
