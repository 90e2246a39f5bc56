#include "MenuEdits.h"

#include "CommandEdits.h"
#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "KVProjectData/ResultCodes.h"
#include "Members.h"
#include "MenuView.h"
#include "Text.h"
#include "platform/com/TaskMemory.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <vector>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Query;

kv::Bstr Wide(std::string_view text)
{
    return kv::Bstr(kv::ToUtf16(text));
}

LONG IdOf(IKVMenuElement& element)
{
    LONG id = 0;
    Require(element.get_ID(&id), "an element has no ID");
    return id;
}

ComPtr<IKVMenuElementList> ListOf(IDispatch& owner)
{
    auto list = Query<IKVMenuElementList>(&owner);
    if (!list) throw Failure("only menus and buttons have elements");
    return list;
}

/// The element at a position of a list of its kind.
ComPtr<IKVMenuElement> ElementAt(IDispatch& owner, const std::string& list, LONG position)
{
    const auto item = ItemOfMenu(owner, list, position);
    auto element = Query<IKVMenuElement>(item);
    if (!element) throw Failure("'" + list + "' is no list of elements that this object has");
    return element;
}

/// Among all elements, from 1.
LONG PlaceOf(IDispatch& owner, IKVMenuElement& element)
{
    LONG place = 0;
    for (const auto& sibling : ElementsOf(&owner)) {
        ++place;
        if (IdOf(*sibling) == IdOf(element)) return place;
    }
    throw Failure("the element is gone");
}

void Fill(IKVMenuElement& element, const std::string& text)
{
    if (const auto button = Query<IKVMenuButton>(&element)) {
        Require(button->put_Label(Wide(text).Get()), "cannot name the button");
    } else if (const auto overlay = Query<IKVMenuOverlay>(&element)) {
        Require(overlay->put_Source(Wide(FullSource(text)).Get()), text);
    } else if (const auto words = Query<IKVMenuText>(&element)) {
        Require(words->put_String(Wide(text).Get()), "cannot set the words");
    }
}

void AddElement(IDispatch& owner, const ElementKind& kind, const Placement& placement)
{
    const auto list = ListOf(owner);
    LONG before = 0;
    list->get_ElementCount(&before);
    ComPtr<IKVMenuElement> element;
    const HRESULT added = list->AddElement(&kind.iid, element.Put());
    try {
        Require(added, "cannot add the element");
        Fill(*element, placement.name);
        if (placement.place > 0)
            Require(list->MoveElement(before + 1, placement.place),
                    "cannot put it at position " + std::to_string(placement.place));
    } catch (...) {
        // Also one whose effect could not be made stands in the list.
        ComPtr<IKVMenuElement> left;
        LONG id = 0;
        if (SUCCEEDED(list->GetElement(before + 1, left.Put())) && SUCCEEDED(left->get_ID(&id)))
            list->RemoveElement(id, nullptr);
        throw;
    }
}

/// The ID of a new group that holds these.
LONG MakeGroup(IKVMenu& menu, const std::vector<LONG>& elements)
{
    LONG group = 0;
    for (const LONG id : elements) {
        Require(menu.AddtoGroup(id, group), "cannot add to the group");
        if (group != 0) continue;
        // It takes an ID of its own. The element may stand in a group before it, which is asked for first; then the
        // new one is the last.
        const auto groups = MenuView(ComPtr<IKVMenu>(&menu)).Groups();
        if (groups.empty()) throw Failure("the group was not made");
        Require(groups.back()->get_ID(&group), "the group has no ID");
    }
    return group;
}

void AddGroup(IDispatch& owner, const std::string& names)
{
    const auto menu = Query<IKVMenu>(&owner);
    if (!menu) throw Failure("only menus have groups");
    const MenuView view(menu);
    std::vector<LONG> elements;
    std::string_view rest = names;
    while (!rest.empty()) {
        const std::size_t bar = std::min(rest.find('|'), rest.size());
        const LONG id = view.IdOf(Trimmed(rest.substr(0, bar)));
        if (!view.NameOf(id)) throw Failure("the menu has no element of the ID " + std::to_string(id));
        elements.push_back(id);
        rest.remove_prefix(std::min(bar + 1, rest.size()));
    }
    if (elements.empty()) throw Failure("a group of which elements?");
    MakeGroup(*menu, elements);
}

// Copies

using Ids = std::map<LONG, LONG>;

ComPtr<IKVMenuElement> CopyElement(IKVMenuElement& element, IKVMenuElementList& list, LONG place)
{
    ComPtr<IKVMenuElement> copy;
    Require(element.Copy(copy.Put()), "cannot copy the element");
    const HRESULT inserted = list.InsertElement(place, copy.Get());
    if (FAILED(inserted)) {
        LONG id = 0;
        if (SUCCEEDED(copy->get_ID(&id))) list.RemoveElement(id, nullptr);
    }
    Require(inserted, "cannot put the copy there");
    return copy;
}

/// Which element of the copy stands for which.
void Pair(IKVMenuElement& element, IKVMenuElement& copy, Ids& ids)
{
    ids[IdOf(element)] = IdOf(copy);
    const auto children = ElementsOf(&element);
    const auto copies = ElementsOf(&copy);
    for (std::size_t i = 0; i < std::min(children.size(), copies.size()); ++i)
        Pair(*children[i], *copies[i], ids);
}

/// A link to nothing stays one.
LONG Mapped(const Ids& ids, LONG id)
{
    const auto found = ids.find(id);
    return found == ids.end() ? id : found->second;
}

void MapLinks(IKVMenuElement& element, const Ids& ids)
{
    const auto button = Query<IKVMenuButton>(&element);
    ButtonLinks* read = nullptr;
    if (!button || FAILED(button->get_ButtonLinks(&read))) return;
    const kv::UniqueTaskMem<ButtonLinks> owned(read);
    const ButtonLinks links{Mapped(ids, read->left), Mapped(ids, read->right), Mapped(ids, read->upper),
                            Mapped(ids, read->lower)};
    if (links != *read) Require(button->put_ButtonLinks(&links), "cannot set the links of the copy");
}

/// The menu's own values, from its document without what stands in it.
void CopyValues(const MenuView& source, IKVMenu& copy)
{
    const auto document = source.Document().Node();
    for (const Element& child : source.Document().Children()) {
        if (child.Name() == "Elements" || child.Name() == "GroupInfoList")
            Require(document->removeChild(child.Node().Get(), nullptr), "cannot copy the menu");
    }
    Require(copy.loadXML(document.Get(), VARIANT_TRUE), "cannot copy the menu");
}

/// What a menu that is not native plays stands in no document of its own, and what its background looks like in none.
void CopyPlaying(IKVMenu& menu, IKVMenu& copy)
{
    static constexpr std::array<std::string_view, 5> kLooks{"BackgroundCrop", "BackgroundVolume", "BackgroundFades",
                                                            "AudioVolume", "AudioFades"};
    VARIANT_BOOL isNative = VARIANT_FALSE;
    kv::Bstr background;
    kv::Bstr audio;
    LONG number = 0;
    double duration = 0.0;
    Require(menu.get_IsNative(&isNative), "cannot copy the menu");
    if (!isNative) {
        menu.get_BkgndID(&number);
        if (number <= 0 && menu.get_Background(background.Put()) == S_OK && !background.Empty())
            Require(copy.put_Background(background.Get()), "cannot copy the background");
        if (menu.get_Audio(audio.Put()) == S_OK && !audio.Empty())
            Require(copy.put_Audio(audio.Get()), "cannot copy the audio");
        if (menu.get_Duration(&duration) == S_OK) Require(copy.put_Duration(duration), "cannot copy the duration");
    }
    const auto target = MembersOf(copy);
    for (const Member& member : MembersOf(menu)) {
        if (!std::ranges::count(kLooks, member.name)) continue;
        const auto same = std::ranges::find(target, member.name, &Member::name);
        const Json value = member.Value();
        if (same == target.end() || value.dump() == same->Value().dump()) continue;
        same->Set(nullptr, member.Text(nullptr, member.name), member.name);
    }
}

void CopyGroups(const MenuView& source, IKVMenu& copy, const Ids& ids)
{
    for (const auto& group : source.Groups()) {
        std::vector<LONG> elements;
        LONG count = 0;
        group->GetGroupSize(&count);
        for (LONG i = 0; i < count; ++i) {
            LONG id = 0;
            if (group->GetElementIDInGroup(i, &id) == S_OK) elements.push_back(Mapped(ids, id));
        }
        if (elements.empty()) continue;
        const LONG made = MakeGroup(copy, elements);
        ComPtr<IUnknown> object;
        Require(copy.GetGroupByGroupID(made, object.Put()), "cannot copy a group");
        const auto target = MembersOf(*object);
        for (const Member& member : MembersOf(*group)) {
            if (!member.write) continue;
            const auto same = std::ranges::find(target, member.name, &Member::name);
            same->Set(nullptr, member.Text(nullptr, member.name), member.name);
        }
    }
}

void CopyMenu(IKVProjectData& project, const ComPtr<IKVMenu>& menu, LONG place)
{
    ComPtr<IKVMenu> copy;
    Require(project.AddMenu(place, copy.Put()), "cannot add a menu");
    try {
        CopyValues(MenuView(menu), *copy);
        CopyPlaying(*menu, *copy);
        const auto list = Query<IKVMenuElementList>(copy);
        Ids ids;
        for (const auto& element : ElementsOf(menu.Get()))
            Pair(*element, *CopyElement(*element, *list, 0), ids);
        for (const auto& element : ElementsOf(copy.Get()))
            MapLinks(*element, ids);
        LONG button = 0;
        Require(menu->get_DefaultButton(&button), "cannot copy the menu");
        // One that was not there leads nowhere in the copy either.
        if (ids.contains(button)) Require(copy->put_DefaultButton(ids[button]), "cannot copy the default button");
        CopyGroups(MenuView(menu), *copy, ids);
    } catch (...) {
        LONG id = 0;
        if (SUCCEEDED(copy->get_ID(&id))) project.RemoveMenu(id, nullptr);
        throw;
    }
}

} // namespace

std::string FullSource(const std::string& name)
{
    if (name.empty() || name.starts_with('%') || kv::StartsWithText(name, "moniker:")) return name;
    const std::string file = HostPath(name);
    RequireFile(file);
    return std::filesystem::absolute(file).string();
}

void AddMenu(IKVProjectData& project, const std::string& label, LONG position)
{
    ComPtr<IKVMenu> menu;
    Require(project.AddMenu(position, menu.Put()), "cannot add a menu");
    if (!label.empty()) Require(menu->put_Label(Wide(label).Get()), "cannot name the menu");
}

void AddTo(IKVProjectData& project, std::string_view kind, const Placement& placement)
{
    const auto row = std::ranges::find_if(kElementKinds,
                                          [kind](const ElementKind& known) { return kv::SameText(known.name, kind); });
    const bool isElement = row != kElementKinds.end();
    if (!isElement && kind != "group" && kind != "command")
        throw Failure("add what? A title, a file, a menu, a button, a text, an overlay, a group or a command");
    const bool toProject = kind == "command" && placement.owner == "project";
    if (placement.owner.empty()) throw Failure("add " + std::string(kind) + ": to what? Such as to menus[1]");
    if (isElement && row->iid == IKVMenuOverlay::IID && placement.name.empty())
        throw Failure("add overlay: which picture?");
    RequireStorable(placement.name, "add " + std::string(kind));
    const auto owner = FindObject(project, toProject ? "" : placement.owner);
    if (isElement) return AddElement(*owner, *row, placement);
    if (kind == "command") return InsertCommand(project, owner.Get(), placement.place, placement.name);
    AddGroup(*owner, placement.name);
}

void RemoveFromMenu(IDispatch& owner, const std::string& list, LONG position)
{
    if (kv::SameText(list, "groups")) {
        const auto item = ItemOfMenu(owner, list, position);
        const auto group = Query<IGroupInfoNode>(item);
        LONG id = 0;
        if (!group) throw Failure("only menus have groups");
        Require(group->get_ID(&id), "cannot remove the group");
        return Require(Query<IKVMenu>(&owner)->RemoveGroup(id), "cannot remove the group");
    }
    const auto element = ElementAt(owner, list, position);
    Require(ListOf(owner)->RemoveElement(IdOf(*element), nullptr), "cannot remove the element");
}

void MoveInMenu(IDispatch& owner, const std::string& list, LONG position, LONG to)
{
    const auto element = ElementAt(owner, list, position);
    const auto place = ElementAt(owner, list, to);
    Require(ListOf(owner)->MoveElement(PlaceOf(owner, *element), PlaceOf(owner, *place)),
            "cannot move it to position " + std::to_string(to));
}

void CopyItem(IKVProjectData& project, const Item& item, const Placement& placement)
{
    if (!placement.name.empty()) throw Failure("'" + placement.name + "': copy OBJECT [to OWNER] [at N]");
    const auto owner = FindObject(project, item.owner);
    const auto target = placement.owner.empty() ? owner : FindObject(project, placement.owner);
    if (kv::SameText(item.list, "commands"))
        return CopyCommand(owner.Get(), item.position, target.Get(), placement.place);
    if (!item.owner.empty()) {
        const auto element = ElementAt(*owner, item.list, item.position);
        CopyElement(*element, *ListOf(*target), placement.place);
        return;
    }
    if (!kv::SameText(item.list, "menus") || !placement.owner.empty())
        throw Failure("'" + item.list + "': menus, elements and commands can be copied");
    ComPtr<IKVMenu> menu;
    Require(project.GetMenu(item.position, menu.Put()), "cannot copy the menu");
    CopyMenu(project, menu, placement.place);
}

} // namespace kvproject
