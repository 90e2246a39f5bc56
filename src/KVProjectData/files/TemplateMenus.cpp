#include "KVProjectData/files/TemplateMenus.h"

#include "KVProjectData/IKVMenu.h"
#include "platform/com/ComPtr.h"

#include <map>
#include <set>

namespace kv {
namespace {

constexpr ULONG kMade = MenuType_Main | MenuType_Chapter;
constexpr ULONG kTemplates = MenuType_TemplateMain | MenuType_TemplateChap;
/// Templates are made from templates, which are made from others in turn, and no deeper.
constexpr int kLongestChain = 3;

} // namespace

void PruneTemplateMenus(IKVProjectData& project)
{
    /// The templates with those that they are made from.
    std::map<LONG, LONG> templates;
    std::set<LONG> used;
    ComPtr<IKVMenu> menu;
    for (LONG position = 1; SUCCEEDED(project.GetMenu(position, menu.Put())); ++position) {
        ULONG types = 0;
        LONG id = 0;
        LONG templateID = 0;
        menu->get_Tag(&types);
        menu->get_ID(&id);
        menu->get_TemplateID(&templateID);
        if (types & kMade) {
            if (templateID != 0) used.insert(templateID);
        } else if (types & kTemplates && id != 0) {
            templates.emplace(id, templateID);
        }
    }
    LONG titles = 0;
    project.get_TitleCount(&titles);
    if (used.empty() && titles == 0) return;

    for (const LONG first : std::set(used)) {
        LONG id = first;
        for (int step = 0; step < kLongestChain; ++step) {
            const auto found = templates.find(id);
            if (found == templates.end() || found->second == 0 || found->second == first) break;
            id = found->second;
            used.insert(id);
        }
    }
    for (const auto& [id, templateID] : templates)
        if (!used.contains(id)) project.RemoveMenu(id, nullptr);
}

} // namespace kv
