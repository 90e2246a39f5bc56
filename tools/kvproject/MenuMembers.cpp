#include "KVProjectData/KVProjectData.h"
#include "KindMembers.h"
#include "MemberForms.h"

namespace kvproject {

using kv::ComPtr;

void AddMenuMembers(const ComPtr<IKVMenu>& menu, const View& view, std::vector<Member>& members)
{
    members.push_back(Several<float>(
        "LayoutRect", kEdges,
        [menu](Edges& edges) {
            FloatRect rect{};
            const HRESULT result = menu->get_LayoutRect(&rect);
            edges = EdgesOf(rect);
            return result;
        },
        [menu](const Edges& edges) { return menu->put_LayoutRect(RectOf(edges)); }));
    Member& button = members.emplace_back(Single("DefaultButton", menu, &IKVMenu::get_DefaultButton));
    button.read = [menu, view](std::vector<Json>& values) {
        LONG id = 0;
        const HRESULT result = menu->get_DefaultButton(&id);
        values = {Reference(view.get(), id)};
        return result;
    };
    button.write = [menu, view](const Member::Texts& texts) {
        return menu->put_DefaultButton(Referenced(view.get(), texts.at(0)));
    };
    button.names = [view] { return view->ButtonNames(); };
    Member& native = members.emplace_back(Single("IsNative", menu, &IKVMenu::get_IsNative));
    native.write = [menu](const Member::Texts& texts) {
        VARIANT_BOOL set = VARIANT_FALSE;
        Parse(texts.at(0), set);
        const HRESULT result = menu->SetNative(set);
        return SUCCEEDED(result) ? S_OK : result;
    };
    AddColourMembers(menu, view, members);
    members.push_back(Single("ButtonPosition", menu, &IKVMenu::GetButtonPosition, &IKVMenu::SetButtonPosition));
    members.push_back(Several<float>(
        "BackgroundCrop", kEdges, [menu](Edges& e) { return menu->GetMenuBackgroundCrop(&e[1], &e[0], &e[3], &e[2]); },
        [menu](const Edges& e) {
            // Without a background production of its own the menu takes it and forgets it.
            Edges held{};
            const HRESULT result = menu->GetMenuBackgroundCrop(&held[1], &held[0], &held[3], &held[2]);
            return result == S_OK ? menu->SetMenuBackgroundCrop(e[1], e[0], e[3], e[2]) : result;
        }));
    members.push_back(Single("BackgroundAspectRatio", menu, &IKVMenu::GetMenuBackgroundAspectRatio));
    Member& fills = members.emplace_back(Single("BackgroundFills", menu, &IKVMenu::IsMenuBackgroundFill));
    fills.write = [menu](const Member::Texts& texts) {
        VARIANT_BOOL set = VARIANT_FALSE;
        Parse(texts.at(0), set);
        VARIANT_BOOL held = VARIANT_FALSE;
        const HRESULT result = menu->IsMenuBackgroundFill(&held);
        if (result != S_OK) return result;
        return menu->ResizeMenuBackground(set ? VARIANT_FALSE : VARIANT_TRUE);
    };
    members.push_back(
        Single("BackgroundVolume", menu, &IKVMenu::GetMenuBackgroundVolume, &IKVMenu::SetMenuBackgroundVolume));
    members.push_back(
        Single("BackgroundFades", menu, &IKVMenu::GetMenuBackgroundFadeInOut, &IKVMenu::SetMenuBackgroundFadeInOut));
    members.push_back(
        Single("AudioVolume", menu, &IKVMenu::GetMenuBackgroundAudioVolume, &IKVMenu::SetMenuBackgroundAudioVolume));
    members.push_back(Single("AudioFades", menu, &IKVMenu::GetMenuBackgroundAudioFadeEnable,
                             &IKVMenu::SetMenuBackgroundAudioFadeEnable));
}

} // namespace kvproject
