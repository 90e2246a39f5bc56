#include "KVProjectData/persistence/ElementTable.h"

#include <algorithm>
#include <array>

namespace kv {
namespace {

constexpr std::array<ElementRow, 32> kElements{{
    {"Project", typeProject, 0},
    {"Titles", typeTitleList, 0},
    {"Menus", typeMenuList, 0},
    {"DataFiles", typeFileList, 0},
    {"File", typeFile, kElementItem | kElementLeaf},
    {"Elements", typeElementList, 0},
    {"Title", typeTitle, kElementItem},
    {"Menu", typeMenu, kElementItem},
    {"Palette", typePalette, kElementLeaf},
    {"ButtonScheme1", typeBtnScheme, kElementLeaf},
    {"ButtonScheme2", typeBtnScheme, kElementLeaf},
    {"ButtonScheme3", typeBtnScheme, kElementLeaf},
    {"LayoutRect", typeLayoutRect, kElementLeaf},
    {"SPUColours", typeSPUColours, kElementLeaf},
    {"Overlay", typeOverlay, kElementItem | kElementLeaf},
    {"Text", typeText, kElementItem | kElementLeaf},
    {"Encoding", typeEncParams, kElementLeaf},
    {"Button", typeButton, kElementItem},
    {"Links", typeButtonLinks, kElementLeaf},
    {"ActiveRegion", typeActiveRgn, kElementLeaf},
    {"Commands", typeCmdList, 0},
    {"PlayTitleFromChapter", typeCommand, kElementItem | kElementLeaf},
    {"PlayMenu", typeCommand, kElementItem | kElementLeaf},
    {"StopPlayback", typeCommand, kElementItem | kElementLeaf},
    {"SetSubpictureStream", typeCommand, kElementItem | kElementLeaf},
    {"Transition", typeCommand, kElementItem | kElementLeaf},
    {"PlayClip", typeCommand, kElementItem | kElementLeaf},
    {"PlayAllTitles", typeCommand, kElementItem | kElementLeaf},
    {"PlayMenuTitles", typeCommand, kElementItem | kElementLeaf},
    {"PlayNextTitle", typeCommand, kElementItem | kElementLeaf},
    {"GroupInfoList", typeGroupInfoList, 0},
    {"GroupInfo", typeGroupInfo, kElementItem | kElementLeaf},
}};

/// The commands stand in the table in the order of their codes, which count from 1.
constexpr auto kFirstCommand = std::ranges::find(kElements, typeCommand, &ElementRow::type);
constexpr LONG kCommandCount = static_cast<LONG>(std::ranges::count(kElements, typeCommand, &ElementRow::type));

} // namespace

const ElementRow* FindElement(std::string_view name)
{
    const auto found = std::ranges::find(kElements, name, &ElementRow::name);
    return found == kElements.end() ? nullptr : &*found;
}

const ElementRow* FindElement(NodeType type)
{
    const auto found = std::ranges::find(kElements, type, &ElementRow::type);
    return found == kElements.end() ? nullptr : &*found;
}

std::string_view CommandElementName(LONG command)
{
    return command >= 1 && command <= kCommandCount ? kFirstCommand[command - 1].name : std::string_view();
}

} // namespace kv
