// The elements of a menu by their kind, and what the engine tells of their effects.

#include "KVProjectData/IKVMenuButton.h"
#include "KVProjectData/IKVMenuText.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/Menu.h"
#include "SbdUtils/EngineCalls.h"

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

} // namespace kv
