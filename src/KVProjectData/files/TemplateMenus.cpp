#include "KVProjectData/files/TemplateMenus.h"

#include "KVProjectData/IKVMenu.h"
#include "platform/com/ComPtr.h"

#include <map>
#include <set>
#include <vector>

namespace kv {
namespace {

constexpr ULONG kMade = MenuType_Main | MenuType_Chapter;
constexpr ULONG kTemplates = MenuType_TemplateMain | MenuType_TemplateChap;
/// Templates are made from templates, which are made from others in turn, and no deeper.
constexpr int kLongestChain = 3;

} // namespace

void PruneTemplateMenus(IKVProjectData& project)
{
    /// The templates with those that they are made from; documents may have several of one ID.
    std::multimap<LONG, LONG> templates;
    /// One for each that is found by its ID; where another menu of the ID stands before it, that one would go.
    std::vector<LONG> removable;
    std::set<LONG> others;
    std::set<LONG> used;
    ComPtr<IKVMenu> menu;
    for (LONG position = 1; SUCCEEDED(project.GetMenu(position, menu.Put())); ++position) {
        ULONG types = 0;
        LONG id = 0;
        LONG templateID = 0;
        menu->get_Tag(&types);
        menu->get_ID(&id);
        menu->get_TemplateID(&templateID);
        const bool isTemplate = !(types & kMade) && types & kTemplates && id != 0;
        if (types & kMade && templateID != 0) used.insert(templateID);
        if (isTemplate) templates.emplace(id, templateID);
        if (!isTemplate) others.insert(id);
        if (isTemplate && !others.contains(id)) removable.push_back(id);
    }
    LONG titles = 0;
    project.get_TitleCount(&titles);
    if (used.empty() && titles == 0) return;

    for (const LONG first : std::set(used)) {
        std::set<LONG> ids{first};
        for (int step = 0; step < kLongestChain; ++step) {
            std::set<LONG> next;
            for (const LONG id : ids) {
                for (auto [from, end] = templates.equal_range(id); from != end; ++from)
                    if (from->second != 0 && from->second != first) next.insert(from->second);
            }
            used.insert(next.begin(), next.end());
            ids = std::move(next);
        }
    }
    for (const LONG id : removable)
        if (!used.contains(id)) project.RemoveMenu(id, nullptr);
}

} // namespace kv
