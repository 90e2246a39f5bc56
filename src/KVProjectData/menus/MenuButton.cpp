#include "KVProjectData/menus/MenuButton.h"

#include "KVProjectData/IKVMenuOverlay.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/persistence/XMLDataLoader.h"
#include "KVProjectData/persistence/XMLPersistor.h"
#include "KVProjectData/tree/ObjectID.h"
#include "platform/com/TaskMemory.h"

namespace kv {
namespace {

/// What tells the pictures that come with the host's themes.
constexpr std::u16string_view kThemes = u"Zenda Themes";

/// Null where there is no element.
template <class Interface>
HRESULT HandOut(CMenuElementImpl* element, Interface** out)
{
    return element ? element->Node().Identity()->QueryInterface(Interface::IID, reinterpret_cast<void**>(out)) : S_OK;
}

} // namespace

CKVMenuButton::CKVMenuButton(IUnknown* outer) : MenuElementNode(outer)
{
    AddChild(&m_links, true);
    AddChild(&m_region, true);
    AddChild(&MakePart<CKVCommandList>(), true);
    AddChild(&MakePart<CKVMenuElementList>(), true);
}

void CKVMenuButton::FinalRelease()
{
    Elements().DropAll();
    ReleaseParts();
}

void CKVMenuButton::Attributes(AttributeArchive& archive)
{
    archive.ID(*this);
    archive("buttonStyle", m_buttonStyle);
    archive("buttonTextCache", m_buttonTextCache);
    archive("commandIndex", m_commandIndex);
    archive("label", m_label);
    archive("scheme", m_scheme);
    archive("userdata", m_userData);
    attributes(archive);
    archive.OnlyRecord(m_buttonSource);
    archive.OnlyRecord(m_buttonSourceHighlight);
}

// Properties

HRESULT CKVMenuButton::get_ActiveRegion(FloatRect* pActiveRgn, VARIANT_BOOL* pbIsValid)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!pbIsValid) return kCalls.NullArgument("pbIsValid");
        if (!pActiveRgn) return kCalls.NullArgument("pActiveRgn");
        const ActiveRegion region = m_region.Value();
        *pActiveRgn = region.rect;
        *pbIsValid = region.valid ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT CKVMenuButton::put_ActiveRegion(const FloatRect* pActiveRgn, VARIANT_BOOL bValid)
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        if (!pActiveRgn) return kCalls.NullArgument("pActiveRgn");
        const HRESULT result = m_region.SetRegion({*pActiveRgn, bValid == VARIANT_TRUE});
        if (SUCCEEDED(result)) edit.Changed(700);
        return result;
    });
}

HRESULT CKVMenuButton::get_ButtonLinks(ButtonLinks** ppLinks)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!ppLinks) return kCalls.NullArgument("ppLinks");
        *ppLinks = static_cast<ButtonLinks*>(CoTaskMemAlloc(sizeof(ButtonLinks)));
        if (!*ppLinks) return E_OUTOFMEMORY;
        **ppLinks = m_links.Value();
        return S_OK;
    });
}

HRESULT CKVMenuButton::put_ButtonLinks(const ButtonLinks* pLinks)
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        if (!pLinks) return kCalls.NullArgument("pLinks");
        m_links.SetLinks(*pLinks);
        edit.Changed(701);
        return S_OK;
    });
}

HRESULT CKVMenuButton::put_ButtonScheme(LONG newVal)
{
    constexpr LONG kLast = 2;
    return newVal >= 0 && newVal <= kLast ? Put(m_scheme, newVal, Undo, Fires(702))
                                          : Edit([](EditScope&) { return E_INVALIDARG; });
}

// Documents

HRESULT CKVMenuButton::loadXML(IXMLDOMNode* pRootNode)
{
    return Change([&] {
        if (!pRootNode) return KV_E_NO_XML_NODE;
        {
            // What the engine does not delete is let go of.
            const RecordingOff off;
            RemoveEffect();
        }
        Elements().DropAll();
        const HRESULT loaded = CKVXMLDataLoader(*this).Load(pRootNode);
        // What the engine refuses is in the button all the same.
        const RecordingOff off;
        BindElements();
        return loaded;
    });
}

HRESULT CKVMenuButton::SaveXML(IXMLDOMNode* pRootNode, VARIANT_BOOL bForceNative)
{
    return Ask([&] {
        if (!pRootNode) return E_POINTER;
        return CXMLPersistor(pRootNode).Visit(*this, bForceNative != VARIANT_FALSE ? kSaveNative : 0);
    });
}

HRESULT CKVMenuButton::BindElements()
{
    CMenuNode* menu = MenuOf(*this);
    const ComPtr<IUnknown> production = menu ? menu->MenuProduction() : nullptr;
    if (!production) return S_FALSE;
    // Those that the production has already are the elements' again; the anchor's may be one of the others.
    const LONG anchor = AnchorID();
    AttachEffect(production.Get(), kHighlightTag);
    SetAnchorID(anchor);
    return InsertEffect(production.Get(), ID(), kHighlightTag);
}

// The elements

HRESULT CKVMenuButton::GetAnchorElement(IKVMenuElement** ppElem)
{
    return Ask([&] {
        if (!ppElem) return E_POINTER;
        *ppElem = nullptr;
        CMenuNode* menu = MenuOf(*this);
        CMenuElementImpl* anchor = menu && !menu->IsNativeMenu() ? Anchor() : nullptr;
        return anchor ? HandOut(anchor, ppElem) : KV_E_NO_ANCHOR;
    });
}

HRESULT CKVMenuButton::GetButtonBindText(IKVMenuElement** ppText)
{
    return Ask([&] {
        if (!ppText) return E_POINTER;
        *ppText = nullptr;
        return HandOut(ElementOfType(typeText, 0), ppText);
    });
}

HRESULT CKVMenuButton::GetButtonOverlay(LONG index, IKVMenuOverlay** ppOverlay)
{
    return Ask([&] {
        if (!ppOverlay) return E_POINTER;
        *ppOverlay = nullptr;
        return HandOut(ElementOfType(typeOverlay, index), ppOverlay);
    });
}

HRESULT CKVMenuButton::get_ButtonOverlayCount(LONG* pVal)
{
    return Ask([&] {
        if (!pVal) return E_POINTER;
        *pVal = CountOfType(typeOverlay);
        return S_OK;
    });
}

HRESULT CKVMenuButton::GetHighlightRegion(FloatRect* pHLIRgn)
{
    return Ask([&] { return pHLIRgn ? getHighlightRegion(*pHLIRgn) : kCalls.NullArgument("pRect"); });
}

HRESULT CKVMenuButton::UseCustomOverlayOnButton(VARIANT_BOOL* pb)
{
    return Ask([&] {
        if (!pb) return E_POINTER;
        *pb = AnySourceContains(kThemes) ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT CKVMenuButton::Move(float dx, float dy)
{
    return Change([&] {
        if (!AreFinite(dx, dy)) return E_INVALIDARG;
        MovedByHand();
        return moveBy({dx, dy});
    });
}

HRESULT CKVMenuButton::ResetID()
{
    return Guarded([&] { return set_ID(TakeNextID()); });
}

// Copies

void CKVMenuButton::CopyFieldsTo(CKVMenuButton& copy)
{
    Bstr source = std::move(copy.m_buttonSource);
    Bstr sourceHighlight = std::move(copy.m_buttonSourceHighlight);
    const LONG anchor = copy.AnchorID();
    MenuElementNode::CopyFieldsTo(copy);
    copy.m_buttonSource = std::move(source);
    copy.m_buttonSourceHighlight = std::move(sourceHighlight);
    copy.SetAnchorID(anchor);
}

ComPtr<CKVMenuButton> CKVMenuButton::CopyLook()
{
    const RecordingOff off;
    auto copy = Make<CKVMenuButton>();
    CopyFieldsTo(*copy);
    ThrowIfFailed(copy->m_region.SetRegion(m_region.Value()));
    copy->m_links.SetLinks(m_links.Value());
    const CMenuElementImpl* anchor = Anchor();
    for (LONG i = 0; i < Elements().ChildCount(); ++i) {
        CProjectNode& element = *Elements().GetChild(i);
        ComPtr<IKVMenuElement> copied;
        ThrowIfFailed(Query<IKVMenuElement>(element.Identity())->Copy(copied.Put()));
        auto* const node = dynamic_cast<CProjectNode*>(copied.Get());
        if (!node || copy->Elements().Adopt(*node, -1, true) < 0) throw Error(KV_E_BAD_POSITION);
        if (anchor && &anchor->Node() == &element) copy->SetAnchorID(node->ID());
    }
    return copy;
}

void CKVMenuButton::CopyCommandsTo(CKVMenuButton& copy)
{
    LONG count = 0;
    UniqueTaskMem<DiscCommandParams> commands;
    DiscCommandParams* array = nullptr;
    ThrowIfFailed(Commands().GetCommandList(&count, &array));
    commands.reset(array);
    std::vector<ComPtr<IXMLDOMNode>> owned;
    owned.reserve(static_cast<std::size_t>(count));
    for (LONG i = 0; i < count; ++i)
        owned.push_back(ComPtr<IXMLDOMNode>::Attach(array[i].pXMLData));
    ThrowIfFailed(copy.Commands().ReplaceCommands(count, array));
}

HRESULT CKVMenuButton::Copy(IKVMenuElement** pp)
{
    return Ask([&] {
        if (!pp) return kCalls.NullArgument("ppNewElem");
        *pp = nullptr;
        const auto copy = CopyLook();
        copy->AssignID();
        CopyCommandsTo(*copy);
        return ComPtr<IKVMenuElement>(copy.Get()).CopyTo(pp);
    });
}

HRESULT CKVMenuButton::ApplyTo(IKVMenuButton* pBtn)
{
    if (!pBtn) return E_POINTER;
    auto* const target = dynamic_cast<CKVMenuButton*>(pBtn);
    if (!target) return E_INVALIDARG;
    // The sections of two menus are never held at once.
    ComPtr<CKVMenuButton> look;
    const HRESULT copied = Ask([&] {
        look = CopyLook();
        return S_OK;
    });
    return FAILED(copied) ? copied : target->TakeLook(*look);
}

HRESULT CKVMenuButton::TakeLook(CKVMenuButton& look)
{
    return Change([&] {
        RecordButtonStyle();
        const RecordingOff off;
        FloatPoint position;
        HRESULT result = getPosition(position);
        if (SUCCEEDED(result)) result = Elements().RemoveAll();
        if (FAILED(result)) return result;
        look.CopyFieldsTo(*this);
        result = m_region.SetRegion(look.m_region.Value());
        if (FAILED(result)) return result;
        m_links.SetLinks(look.m_links.Value());
        SetAnchorID(look.AnchorID());
        {
            const SectionLock lock(Elements().Section());
            Elements().ReserveRoom(static_cast<std::size_t>(look.Elements().ChildCount()));
            while (look.Elements().ChildCount() > 0) {
                CProjectNode& element = *look.Elements().GetChild(0);
                const ComPtr<IUnknown> held = look.Elements().TakeOut(0);
                Elements().Adopt(element, -1, false);
            }
        }
        result = BindElements();
        if (SUCCEEDED(result)) result = PlaceAt(position);
        if (SUCCEEDED(result)) FirePropertyChanged(-1);
        return result;
    });
}

} // namespace kv
