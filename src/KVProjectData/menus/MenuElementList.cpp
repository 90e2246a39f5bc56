#include "KVProjectData/menus/MenuElementList.h"

#include "KVProjectData/IKVMenuButton.h"
#include "KVProjectData/IKVMenuOverlay.h"
#include "KVProjectData/IKVMenuText.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/ElementFactory.h"
#include "KVProjectData/menus/MenuElementImpl.h"
#include "KVProjectData/menus/MenuNode.h"
#include "KVProjectData/tree/LineageLock.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {
namespace {

constexpr EngineCalls kEngine("KVMenuElementList");
constexpr LONG kNoGroup = -1;

NodeType KindOf(REFIID iid)
{
    return iid == IKVMenuButton::IID    ? typeButton
           : iid == IKVMenuOverlay::IID ? typeOverlay
           : iid == IKVMenuText::IID    ? typeText
                                        : typeNone;
}

HRESULT HandOut(CProjectNode& element, REFIID iid, IKVMenuElement** out)
{
    return element.Identity()->QueryInterface(iid, reinterpret_cast<void**>(out));
}

} // namespace

bool CKVMenuElementList::Takes(NodeType type) const
{
    return type != typeButton || (Parent() && Parent()->Type() == typeMenu);
}

CProjectNode* CKVMenuElementList::CreateItem(NodeType type)
{
    const NewElement made = Takes(type) ? CreateElement(type) : NewElement{};
    if (made.node) Adopt(*made.node, -1, false);
    return made.node;
}

// Effects

ComPtr<IUnknown> CKVMenuElementList::Production() const
{
    CMenuNode* menu = MenuOf(*this);
    return menu ? menu->MenuProduction() : nullptr;
}

HRESULT CKVMenuElementList::Bind(CMenuElementImpl& element, IUnknown* production, bool insert)
{
    if (!production) return S_FALSE;
    CProjectNode* owner = Parent()->Type() == typeButton ? Parent() : nullptr;
    CMenuElementImpl* button = owner ? ElementOf(*owner) : nullptr;
    const SectionLock lock(element.Node().Section());
    if (button && !insert) button->SelectAnchor(false);
    const LONG group = button ? owner->ID() : kNoGroup;
    const HRESULT result = insert ? element.InsertEffect(production, group, kHighlightTag) : element.RemoveEffect();
    if (button) button->SelectAnchor(true);
    return kEngine.Checked(result);
}

template <class Call>
HRESULT CKVMenuElementList::ForEach(Call&& call)
{
    for (LONG i = 0; i < ChildCount(); ++i) {
        CProjectNode& element = *GetChild(i);
        // Sinks of the engine may take it out of the list.
        const ComPtr<IUnknown> kept(element.Identity());
        const SectionLock lock(element.Section());
        const HRESULT result = call(*ElementOf(element));
        if (FAILED(result)) return result;
    }
    return S_OK;
}

HRESULT CKVMenuElementList::InsertEffects(IUnknown* production)
{
    if (!production) return S_FALSE;
    return ForEach([&](CMenuElementImpl& element) { return Bind(element, production, true); });
}

HRESULT CKVMenuElementList::RemoveEffects()
{
    const auto production = Production();
    if (!production) return S_FALSE;
    return ForEach([&](CMenuElementImpl& element) { return Bind(element, production.Get(), false); });
}

HRESULT CKVMenuElementList::AttachEffects(IUnknown* production)
{
    // One that the production has no effect for does not keep the others from theirs.
    HRESULT first = S_OK;
    ForEach([&](CMenuElementImpl& element) {
        const HRESULT result = kEngine.Checked(element.AttachEffect(production, kHighlightTag));
        if (FAILED(result) && SUCCEEDED(first)) first = result;
        return S_OK;
    });
    return first;
}

HRESULT CKVMenuElementList::DetachEffects()
{
    return ForEach([](CMenuElementImpl& element) { return element.DetachEffect(); });
}

// Asking

HRESULT CKVMenuElementList::get_ElementCount(LONG* pVal)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!pVal) return kEngine.NullArgument("plCount");
        *pVal = ChildCount();
        return S_OK;
    });
}

HRESULT CKVMenuElementList::GetElement(LONG index, IKVMenuElement** ppElem)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!ppElem) return kEngine.NullArgument("ppElem");
        *ppElem = nullptr;
        CProjectNode* element = index < 1 ? nullptr : GetChild(index - 1);
        return element ? HandOut(*element, IKVMenuElement::IID, ppElem) : KV_E_NO_SUCH_ELEMENT;
    });
}

HRESULT CKVMenuElementList::FindElement(LONG ID, IKVMenuElement** ppElem)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!ppElem) return kEngine.NullArgument("ppElem");
        *ppElem = nullptr;
        CProjectNode* element = FindChildByID(ID);
        return element ? HandOut(*element, IKVMenuElement::IID, ppElem) : E_INVALIDARG;
    });
}

// Editing

HRESULT CKVMenuElementList::AddElement(const GUID* piid, IKVMenuElement** ppvElem)
{
    return Guarded([&] {
        EngineCalls::Begin();
        if (!piid) return kEngine.NullArgument("piid");
        if (!ppvElem) return kEngine.NullArgument("ppvElem");
        *ppvElem = nullptr;
        const NodeType kind = KindOf(*piid);
        if (kind == typeNone) return kEngine.Checked(KV_E_BAD_POSITION);
        const LineageLock lock(*this);
        if (!Takes(kind)) return E_INVALIDARG;

        const NewElement made = CreateElement(kind);
        if (!made.node) return CLASS_E_CLASSNOTAVAILABLE;
        CMenuElementImpl& element = *ElementOf(*made.node);
        // Of overlays and texts, whose types begin with the general one.
        if (kind != typeButton) element.StartTag(1);
        ComPtr<IUnknown> handedOut;
        HRESULT result = made.object->QueryInterface(*piid, handedOut.PutVoid());
        if (FAILED(result)) return result;
        const auto production = Production();
        const LONG index = Adopt(*made.node, -1, true);
        result = Guarded([&] {
            RecordChange(ListChange::Add, *made.node, index, static_cast<bool>(production));
            return S_OK;
        });
        if (FAILED(result)) {
            TakeOut(index);
            return result;
        }
        result = Bind(element, production.Get(), true);
        if (FAILED(result)) return result;
        FireEvent(EVENT_MenuElementAdded, made.node->ID(), 0, 0);
        *ppvElem = reinterpret_cast<IKVMenuElement*>(handedOut.Detach());
        return S_OK;
    });
}

HRESULT CKVMenuElementList::InsertElement(LONG index, IKVMenuElement* pElem)
{
    return Guarded([&] {
        EngineCalls::Begin();
        if (!pElem) return kEngine.NullArgument("pElem");
        auto* const node = dynamic_cast<CProjectNode*>(pElem);
        auto* const element = dynamic_cast<CMenuElementImpl*>(pElem);
        if (!node || !element) return kEngine.Checked(E_INVALIDARG);
        const LineageLock lock(*this);
        {
            // Nobody puts it into another list meanwhile.
            const SectionLock elementLock(node->Section());
            if (node->Parent() || !Takes(node->Type())) return kEngine.Checked(E_INVALIDARG);
            const auto production = Production();
            const LONG at = Adopt(*node, index < 1 ? -1 : index - 1, true);
            if (at < 0) return kEngine.Checked(KV_E_BAD_POSITION);
            HRESULT result = Guarded([&] {
                RecordChange(ListChange::Add, *node, at, static_cast<bool>(production));
                return S_OK;
            });
            if (FAILED(result)) {
                TakeOut(at);
                return result;
            }
            const RecordingOff off;
            result = Bind(*element, production.Get(), true);
            if (FAILED(result)) return result;
        }
        FireEvent(EVENT_MenuElementInserted, node->ID(), index, 0);
        return S_OK;
    });
}

HRESULT CKVMenuElementList::RemoveElement(LONG ID, IKVMenuElement** ppElem)
{
    // Dropped outside of the sections; sinks of the engine may take the element out of the list, too.
    ComPtr<IUnknown> kept;
    ComPtr<IUnknown> removed;
    return Guarded([&] {
        EngineCalls::Begin();
        if (ppElem) *ppElem = nullptr;
        const LineageLock lock(*this);
        LONG index = -1;
        CProjectNode* node = FindChildByID(ID, &index);
        if (!node) return E_INVALIDARG;
        kept = node->Identity();
        const auto production = Production();
        RecordChange(ListChange::Remove, *node, index, static_cast<bool>(production));
        {
            const RecordingOff off;
            const HRESULT unbound = Bind(*ElementOf(*node), production.Get(), false);
            if (FAILED(unbound)) return unbound;
        }
        index = IndexOf(*node, index);
        removed = TakeOut(index);
        if (!removed) return KV_E_ELEMENT_NOT_REMOVED;
        FireEvent(EVENT_MenuElementRemoved, ID, 0, 0);
        return ppElem ? HandOut(*node, IKVMenuElement::IID, ppElem) : S_OK;
    });
}

HRESULT CKVMenuElementList::MoveElement(LONG fromPos, LONG toPos)
{
    return Guarded([&] {
        EngineCalls::Begin();
        const LineageLock lock(*this);
        CProjectNode* element = fromPos < 1 ? nullptr : GetChild(fromPos - 1);
        if (!element || toPos < 1 || toPos > ChildCount()) return kEngine.Checked(KV_E_BAD_POSITION);
        RecordChange(ListChange::Move, *element, fromPos - 1);
        MoveChild(fromPos - 1, toPos - 1);
        FireEvent(EVENT_MenuElementMoved, element->ID(), fromPos, toPos);
        return S_OK;
    });
}

HRESULT CKVMenuElementList::RemoveAll()
{
    HRESULT first = S_OK;
    const LineageLock lock(*this);
    for (LONG left = ChildCount(); left > 0 && ChildCount() > 0; --left) {
        const HRESULT removed = RemoveElement(GetChild(0)->ID(), nullptr);
        if (FAILED(removed) && SUCCEEDED(first)) first = removed;
    }
    return first;
}

HRESULT CKVMenuElementList::Clear()
{
    return Guarded([&] {
        EngineCalls::Begin();
        RemoveAll();
        return S_OK;
    });
}

} // namespace kv
