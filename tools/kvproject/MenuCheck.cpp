#include "MenuCheck.h"

#include "Fonts.h"
#include "KVProjectData/KVProjectData.h"
#include "Members.h"
#include "MenuView.h"
#include "platform/com/TaskMemory.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Query;

/// What lies within this of the edge does not leave the picture.
constexpr float kTolerance = 0.001F;

struct Button {
    LONG id = 0;
    std::string name;
    ButtonLinks links{};
    LONG scheme = 0;
    /// Empty where none was said.
    std::optional<FloatRect> region;
};

ButtonLinks LinksOf(IKVMenuButton& button)
{
    ButtonLinks* links = nullptr;
    const HRESULT result = button.get_ButtonLinks(&links);
    const kv::UniqueTaskMem<ButtonLinks> owned(links);
    return result == S_OK && links ? *links : ButtonLinks{};
}

bool LeavesPicture(const FloatRect& rect)
{
    constexpr float kEdge = 1.0F + kTolerance;
    return rect.fLeft < -kEdge || rect.fBottom < -kEdge || rect.fRight > kEdge || rect.fTop > kEdge;
}

bool IsOutside(const FloatRect& rect)
{
    return rect.fRight <= -1 || rect.fTop <= -1 || rect.fLeft >= 1 || rect.fBottom >= 1;
}

bool IsEmpty(const FloatRect& rect)
{
    return !(rect.fLeft < rect.fRight) || !(rect.fBottom < rect.fTop);
}

bool Overlap(const FloatRect& a, const FloatRect& b)
{
    const float width = std::min(a.fRight, b.fRight) - std::max(a.fLeft, b.fLeft);
    const float height = std::min(a.fTop, b.fTop) - std::max(a.fBottom, b.fBottom);
    return width > kTolerance && height > kTolerance;
}

/// Of discs that have a limit; 0 for others.
LONG MostButtons(IKVProjectData& project, IKVMenu& menu)
{
    constexpr LONG kButtons = 36;
    constexpr LONG kInThreeGroups = 12;
    DiscFormat format{};
    AspectRatio aspect{};
    WideDisplayMode mode{};
    project.get_DiscFormat(&format);
    if (format != DVD_Video && format != DVD_plusVR && format != DVD_dashVR && format != DVD_Video_CD) return 0;
    // A wide menu that players may letterbox or cut has its buttons three times.
    const auto encoding = Query<IKVEncodingParams>(&menu);
    const bool isWide = encoding && encoding->get_AspectRatio(&aspect) == S_OK && aspect == AspectRatio_16x9;
    const bool both = isWide && encoding->get_WideDisplayMode(&mode) == S_OK && mode == WideDisplayMode_Both;
    return both ? kInThreeGroups : kButtons;
}

/// The IDs of all titles, or of all menus.
template <class Item>
std::set<LONG> IdsOf(IKVProjectData& project, HRESULT (IKVProjectData::*get)(LONG, Item**))
{
    std::set<LONG> ids;
    ComPtr<Item> item;
    LONG id = 0;
    for (LONG i = 1; SUCCEEDED((project.*get)(i, item.Put())); ++i) {
        if (SUCCEEDED(item->get_ID(&id))) ids.insert(id);
    }
    return ids;
}

class MenuCheck {
public:
    MenuCheck(IKVProjectData& project, MediaFiles& files, std::vector<std::string>& faults)
        : m_project(project),
          m_files(files),
          m_titles(IdsOf(project, &IKVProjectData::GetTitle)),
          m_menus(IdsOf(project, &IKVProjectData::GetMenu)),
          m_faults(faults)
    {
    }

    void Run()
    {
        CheckCommands(&m_project, {});
        ComPtr<IKVTitle> title;
        for (LONG i = 1; SUCCEEDED(m_project.GetTitle(i, title.Put())); ++i)
            CheckCommands(title.Get(), "titles[" + std::to_string(i) + "].");
        ComPtr<IKVMenu> menu;
        for (LONG i = 1; SUCCEEDED(m_project.GetMenu(i, menu.Put())); ++i)
            CheckMenu(menu, "menus[" + std::to_string(i) + "]");
    }

private:
    void CheckMenu(const ComPtr<IKVMenu>& menu, const std::string& path)
    {
        kv::Bstr background;
        kv::Bstr audio;
        ComPtr<IUnknown> production;
        VARIANT_BOOL isNative = VARIANT_FALSE;
        m_buttons.clear();
        m_places.clear();
        menu->get_IsNative(&isNative);
        menu->GetProduction(production.Put());
        m_isShown = isNative == VARIANT_FALSE && production;
        if (menu->get_Background(background.Put()) == S_OK) CheckFile(background, path, "background");
        if (menu->get_Audio(audio.Put()) == S_OK) CheckFile(audio, path, "audio");
        CheckCommands(menu.Get(), path + ".");
        CheckElements(menu.Get(), path + ".");
        LONG first = 0;
        menu->get_DefaultButton(&first);
        if (first != 0 && !m_places.contains(first)) Tell(path, "the default button leads nowhere");
        CheckLinks();
        CheckReach(first);
        CheckRegions();
        CheckColours(menu, path);
        const LONG most = MostButtons(m_project, *menu);
        const auto count = static_cast<LONG>(m_buttons.size());
        if (most > 0 && count > most) {
            Tell(path, std::to_string(count) + " buttons, where the disc format allows " + std::to_string(most));
        }
    }

    /// In the order of the list, with those of buttons.
    void CheckElements(IUnknown* owner, const std::string& prefix)
    {
        std::map<const ElementKind*, int> counts;
        for (const auto& element : ElementsOf(owner)) {
            const ElementKind* kind = KindOf(*element);
            if (!kind) continue;
            const std::string name = prefix + std::string(kind->list) + "[" + std::to_string(++counts[kind]) + "]";
            const auto button = Query<IKVMenuButton>(element);
            button ? CheckButton(*button, name) : CheckPlace(*element, name);
            if (const auto overlay = Query<IKVMenuOverlay>(element)) CheckOverlay(*overlay, name);
            if (const auto text = Query<IKVMenuText>(element)) CheckText(*text, name);
        }
    }

    void CheckButton(IKVMenuButton& button, const std::string& name)
    {
        Button read{0, name, LinksOf(button), 0, std::nullopt};
        FloatRect region{};
        VARIANT_BOOL isValid = VARIANT_FALSE;
        button.get_ID(&read.id);
        button.get_ButtonScheme(&read.scheme);
        if (button.get_ActiveRegion(&region, &isValid) == S_OK && isValid) read.region = region;
        m_places.emplace(read.id, m_buttons.size());
        m_buttons.push_back(std::move(read));
        CheckCommands(&button, name + ".");
        CheckElements(&button, name + ".");
    }

    void CheckPlace(IKVMenuElement& element, const std::string& name)
    {
        constexpr ULONG kUnshown = 8;
        LONG effect = 0;
        ULONG tag = 0;
        FloatRect extent{};
        element.get_Tag(&tag);
        if (m_isShown && tag != kUnshown && FAILED(element.get_EffectID(&effect)))
            Tell(name, "the production of the menu does not show it");
        if (element.GetExtent(&extent) == S_OK && !IsEmpty(extent) && IsOutside(extent))
            Tell(name, "it stands outside of the picture");
    }

    void CheckOverlay(IKVMenuOverlay& overlay, const std::string& name)
    {
        double inPoint = 0;
        double outPoint = 0;
        if (overlay.get_InPoint(&inPoint) == S_OK && overlay.get_OutPoint(&outPoint) == S_OK && outPoint > 0 &&
            inPoint >= outPoint)
            Tell(name, "the in point is not in front of the out point");
        kv::Bstr source;
        kv::Bstr mask;
        if (overlay.get_Source(source.Put()) == S_OK) CheckFile(source, name, "source");
        if (overlay.get_AlphaMask(mask.Put()) == S_OK) CheckFile(mask, name, "mask");
    }

    void CheckText(IKVMenuText& text, const std::string& name)
    {
        kv::Bstr font;
        FloatRect extent{};
        if (text.get_Font(font.Put()) == S_OK && !font.Empty() && !IsInstalled(kv::ToUtf8(font.View())))
            Tell(name, "the font " + kv::ToUtf8(font.View()) + " is not installed");
        if (text.GetExtent(&extent) == S_OK && LeavesPicture(extent)) Tell(name, "the text runs out of the picture");
    }

    void CheckFile(const kv::Bstr& file, const std::string& path, const std::string& what)
    {
        const std::string name = kv::ToUtf8(file.View());
        if (name.empty() || kv::StartsWithText(name, "moniker:")) return;
        const std::string fault = m_files.Fault(file.View());
        if (fault.empty()) return;
        m_files.Told(file.View());
        Tell(path, "the file " + name + " of its " + what + ' ' + fault);
    }

    void CheckLinks()
    {
        for (const Button& button : m_buttons) {
            const auto check = [&](LONG to, const char* direction) {
                if (to != 0 && !m_places.contains(to))
                    Tell(button.name, std::string("the link ") + direction + " leads nowhere");
            };
            check(button.links.left, "to the left");
            check(button.links.right, "to the right");
            check(button.links.upper, "upwards");
            check(button.links.lower, "downwards");
        }
    }

    /// From the default button, or without one from the first, by the links.
    void CheckReach(LONG first)
    {
        if (m_buttons.empty()) return;
        std::set<LONG> reached;
        std::vector<LONG> next{m_places.contains(first) ? first : m_buttons.front().id};
        while (!next.empty()) {
            const LONG id = next.back();
            next.pop_back();
            const auto place = m_places.find(id);
            if (place == m_places.end() || !reached.insert(id).second) continue;
            const ButtonLinks& links = m_buttons[place->second].links;
            next.insert(next.end(), {links.left, links.right, links.upper, links.lower});
        }
        for (const Button& button : m_buttons) {
            if (!reached.contains(button.id)) Tell(button.name, "no link of the buttons leads to it");
        }
    }

    void CheckRegions()
    {
        // From left to right, so that each is compared with those alone that it can meet.
        std::vector<const Button*> buttons;
        for (const Button& button : m_buttons) {
            if (!button.region) continue;
            if (IsEmpty(*button.region)) {
                Tell(button.name, "the active region is empty");
                continue;
            }
            if (LeavesPicture(*button.region)) Tell(button.name, "the active region leaves the picture");
            buttons.push_back(&button);
        }
        std::ranges::stable_sort(buttons, {}, [](const Button* button) { return button->region->fLeft; });
        for (auto at = buttons.begin(); at != buttons.end(); ++at) {
            for (auto other = at + 1; other != buttons.end(); ++other) {
                if ((*other)->region->fLeft >= (*at)->region->fRight) break;
                if (Overlap(*(*at)->region, *(*other)->region))
                    Tell((*at)->name, "the active region overlaps that of " + (*other)->name);
            }
        }
    }

    /// A highlight shows the colours of the button's scheme in the place of the menu's.
    void CheckColours(const ComPtr<IKVMenu>& menu, const std::string& path)
    {
        std::set<LONG> schemes;
        for (const Button& button : m_buttons)
            schemes.insert(button.scheme);
        if (schemes.empty()) return;
        const auto members = MembersOf(*menu);
        const auto look = [&](const std::string& name) {
            const auto found = std::ranges::find(members, name, &Member::name);
            return found == members.end() ? Json() : found->Value();
        };
        const Json palette = look("Palette");
        const auto shown = [&palette](const Json& colours) {
            std::vector<std::string> classes;
            for (const Json& value : colours) {
                const std::string text = value.get<std::string>();
                const std::string contrast = text.substr(text.find(' '));
                // What is transparent looks alike in all colours.
                const bool isClear = contrast == " at 0";
                classes.push_back(isClear ? "" : palette["Colour" + text.substr(0, text.find(' '))].dump() + contrast);
            }
            return classes;
        };
        const auto normal = shown(look("Colours"));
        for (const LONG scheme : schemes) {
            for (const char* state : {"Selected", "Activated"}) {
                const std::string name = "Scheme" + std::to_string(scheme) + state;
                if (shown(look(name)) == normal)
                    Tell(path + "." + name, "buttons in these colours look as they do without a highlight");
            }
        }
    }

    void CheckCommands(IUnknown* owner, const std::string& prefix)
    {
        const auto list = Query<IKVCommandList>(owner);
        LONG count = 0;
        DiscCommandParams* records = nullptr;
        if (!list || FAILED(list->GetCommandList(&count, &records))) return;
        const kv::UniqueTaskMem<DiscCommandParams> owned(records);
        for (LONG i = 0; i < count; ++i) {
            const auto xml = ComPtr<IXMLDOMNode>::Attach(records[i].pXMLData);
            const std::string path = prefix + "commands[" + std::to_string(i + 1) + "]";
            const std::string id = std::to_string(records[i].lParam1);
            // No object has the ID 0: nothing is said.
            if (records[i].lParam1 == 0) continue;
            if (records[i].cmd == PlayTitleFromChapter && !m_titles.contains(records[i].lParam1))
                Tell(path, "there is no title of the ID " + id);
            if (records[i].cmd == PlayMenu && !m_menus.contains(records[i].lParam1))
                Tell(path, "there is no menu of the ID " + id);
        }
    }

    void Tell(const std::string& path, const std::string& fault) { m_faults.push_back(path + ": " + fault); }

    IKVProjectData& m_project;
    MediaFiles& m_files;
    const std::set<LONG> m_titles;
    const std::set<LONG> m_menus;
    /// The menu that is being checked shows its elements by its production.
    bool m_isShown = false;
    /// Of that menu, in its order.
    std::vector<Button> m_buttons;
    /// Where each ID stands there first.
    std::map<LONG, std::size_t> m_places;
    std::vector<std::string>& m_faults;
};

} // namespace

void FindMenuFaults(IKVProjectData& project, MediaFiles& files, std::vector<std::string>& faults)
{
    MenuCheck(project, files, faults).Run();
}

} // namespace kvproject
