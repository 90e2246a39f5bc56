#include "KVProjectData/menus/Menu.h"

#include "KVProjectData/IKVMenuButton.h"
#include "KVProjectData/IKVMenuText.h"
#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/persistence/XMLDataLoader.h"
#include "KVProjectData/persistence/XMLPersistor.h"
#include "KVProjectData/tree/NodeReference.h"
#include "KVProjectData/tree/ObjectID.h"
#include "SbdUtils/EngineCalls.h"

#include <algorithm>

namespace kv {
namespace {

constexpr EngineCalls kEngine("KVMenu");

bool IsElement(NodeType type)
{
    return type == typeButton || type == typeOverlay || type == typeText;
}

/// Calls `visit` with each child until that returns false.
template <class Visit>
void ForEachChild(const CProjectNode& node, Visit&& visit)
{
    for (LONG i = 0; i < node.ChildCount(); ++i)
        if (!visit(*node.GetChild(i))) return;
}

} // namespace

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
    ComPtr<IUnknown> held;
    return Read([&] {
        if (!ppProject) return E_POINTER;
        *ppProject = nullptr;
        // Inside the section the project stays in memory; it may be ending all the same.
        CProjectNode* list = Parent();
        CProjectNode* project = list ? list->Parent() : nullptr;
        held = project ? NodeReference(*project).Hold() : nullptr;
        return held ? held->QueryInterface(IKVProjectData::IID, reinterpret_cast<void**>(ppProject)) : S_FALSE;
    });
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

// Elements

HRESULT CKVMenu::CountElements(NodeType type, LONG* out)
{
    return Read([&] {
        if (!out) return E_POINTER;
        *out = 0;
        ForEachChild(Elements(), [&](const CProjectNode& child) {
            if (type == typeNone ? IsElement(child.Type()) : child.Type() == type) ++*out;
            return true;
        });
        return S_OK;
    });
}

HRESULT CKVMenu::get_ButtonCount(LONG* pVal)
{
    return CountElements(typeButton, pVal);
}

HRESULT CKVMenu::get_TextCount(LONG* pVal)
{
    return CountElements(typeText, pVal);
}

HRESULT CKVMenu::get_ElementCount(LONG* pVal)
{
    return CountElements(typeNone, pVal);
}

template <class Interface>
HRESULT CKVMenu::FindElementAt(NodeType type, LONG position, Interface** out)
{
    return Read([&] {
        if (!out) return E_POINTER;
        *out = nullptr;
        HRESULT result = KV_E_BAD_POSITION;
        LONG count = 0;
        ForEachChild(Elements(), [&](CProjectNode& child) {
            const bool counts = type == typeNone ? IsElement(child.Type()) : child.Type() == type;
            if (!counts || ++count != position) return true;
            result = child.Identity()->QueryInterface(Interface::IID, reinterpret_cast<void**>(out));
            return false;
        });
        return result;
    });
}

HRESULT CKVMenu::GetButton(LONG index, IKVMenuButton** ppButton)
{
    return FindElementAt(typeButton, index, ppButton);
}

HRESULT CKVMenu::GetText(LONG index, IKVMenuText** ppText)
{
    return FindElementAt(typeText, index, ppText);
}

HRESULT CKVMenu::GetMenuElement(LONG index, IKVMenuElement** ppElement)
{
    return FindElementAt(typeNone, index, ppElement);
}

HRESULT CKVMenu::MoveElementOrder(LONG nFrom, LONG nTo)
{
    return Read([&] {
        CKVMenuElementList& elements = Elements();
        const SectionLock lock(elements.Section());
        CProjectNode* element = elements.GetChild(nFrom);
        if (!element) return S_OK;
        elements.RecordChange(ListChange::Move, *element, nFrom);
        elements.MoveChild(nFrom, nTo);
        return S_OK;
    });
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

HRESULT CKVMenu::OnEffectChanged(LONG lElementID, LONG lButtonID)
{
    return Read([&] {
        constexpr LONG kElementList = 3;
        constexpr LONG kNoButton = -1;
        const CProjectNode* list = &Elements();
        if (lButtonID != 0 && lButtonID != kNoButton) {
            const CProjectNode* button = list->FindChildByID(lButtonID);
            list = button ? button->GetChild(kElementList) : nullptr;
        }
        const CProjectNode* element = list ? list->FindChildByID(lElementID) : nullptr;
        if (!element) return S_FALSE;
        switch (element->Type()) {
        case typeOverlay:
            FireEvent(EVENT_OverlayChanged, lElementID, 0, 0);
            return S_OK;
        case typeText:
            FireEvent(EVENT_TextChanged, lElementID, 0, 0);
            return S_OK;
        default:
            return E_UNEXPECTED;
        }
    });
}

HRESULT CKVMenu::OnEffectsInvalidated()
{
    return Read([&] {
        EngineCalls::Begin();
        const auto production = MenuProduction();
        return production ? kEngine.Checked(Elements().AttachEffects(production.Get())) : S_FALSE;
    });
}

// Groups

template <class Matches>
CGroupInfoNode* CKVMenu::FindGroup(Matches&& matches)
{
    CGroupInfoNode* found = nullptr;
    ForEachChild(m_groups, [&](CProjectNode& child) {
        auto& group = static_cast<CGroupInfoNode&>(child);
        if (matches(group)) found = &group;
        return !found;
    });
    return found;
}

CGroupInfoNode* CKVMenu::FindGroupByID(LONG id)
{
    return id < 0 ? nullptr : FindGroup([=](const CGroupInfoNode& group) { return group.ID() == id; });
}

HRESULT CKVMenu::AddtoGroup(LONG nEleId, LONG nGroupID)
{
    return Read([&] {
        if (CGroupInfoNode* found = FindGroupByID(nGroupID)) {
            const HRESULT added = found->AddElementID(nEleId);
            return FAILED(added) ? added : S_OK;
        }
        const auto group = Make<CGroupInfoNode>();
        ThrowIfFailed(group->AddElementID(nEleId));
        m_groups.ReserveRoom(1);
        m_groups.RecordChange(ListChange::Add, *group, m_groups.ChildCount());
        m_groups.Adopt(*group, -1, true);
        SetModified(false);
        return S_OK;
    });
}

HRESULT CKVMenu::GetGroupByGroupID(LONG nGroupID, IUnknown** ppGroup)
{
    return Read([&] {
        if (!ppGroup) return E_POINTER;
        *ppGroup = nullptr;
        if (nGroupID < 0) return S_FALSE;
        CGroupInfoNode* group = FindGroupByID(nGroupID);
        return group ? ComPtr(group->Identity()).CopyTo(ppGroup) : S_OK;
    });
}

HRESULT CKVMenu::GetGroupIDByElementID(LONG nEleId, IUnknown** ppGroup)
{
    return Read([&] {
        if (!ppGroup) return E_POINTER;
        *ppGroup = nullptr;
        CGroupInfoNode* group = FindGroup([=](CGroupInfoNode& each) { return each.Holds(nEleId); });
        return group ? ComPtr(group->Identity()).CopyTo(ppGroup) : S_OK;
    });
}

HRESULT CKVMenu::RemoveGroup(LONG nGroupID)
{
    return Read([&] {
        LONG index = -1;
        CProjectNode* group = m_groups.FindChildByID(nGroupID, &index);
        if (!group) return S_OK;
        m_groups.RecordChange(ListChange::Remove, *group, index);
        m_groups.TakeOut(index);
        SetModified(false);
        return S_OK;
    });
}

HRESULT CKVMenu::ClearGroupInfoList()
{
    return Read([&] {
        m_groups.DropAll();
        return S_OK;
    });
}

HRESULT CKVMenu::CopyGroupInfoList(IKVMenu* pMenu)
{
    if (!pMenu) return E_POINTER;
    return Guarded([&] {
        // Another menu's section is entered while none is held.
        std::vector<ComPtr<CGroupInfoNode>> groups;
        {
            const SectionLock lock(Section());
            ForEachChild(m_groups, [&](CProjectNode& child) {
                groups.emplace_back(static_cast<CGroupInfoNode*>(&child));
                return true;
            });
        }
        for (const auto& group : groups) {
            for (const LONG element : group->ElementIDs())
                pMenu->AddtoGroup(element, group->ID());
            ComPtr<IUnknown> object;
            pMenu->GetGroupByGroupID(group->ID(), object.Put());
            const auto copy = Query<IGroupInfoNode>(object);
            if (!copy) continue;
            tagPOINTF centre{};
            tagPOINTF size{};
            double rotation = 0.0;
            group->GetGroupRect(&centre, &size);
            group->GetGroupRotation(&rotation);
            copy->SetGroupRect(centre, size);
            copy->SetGroupRotation(rotation);
        }
        return S_OK;
    });
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
