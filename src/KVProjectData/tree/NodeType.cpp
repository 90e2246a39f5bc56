#include "KVProjectData/tree/NodeType.h"

#include <array>

namespace kv {

std::string_view NodeTypeName(NodeType type)
{
    static constexpr std::array<std::string_view, 23> kNames{
        "typeNone",      "typeProject",    "typeTitleList",   "typeMenuList",      "typeFileList", "typeElementList",
        "typeTitle",     "typeMenu",       "typeFile",        "typeButton",        "typeOverlay",  "typeText",
        "typeCmdList",   "typeEncParams",  "typeButtonLinks", "typeActiveRgn",     "typeCommand",  "typePalette",
        "typeBtnScheme", "typeLayoutRect", "typeSPUColours",  "typeGroupInfoList", "typeGroupInfo"};
    return type >= typeNone && type <= typeGroupInfo ? kNames[static_cast<std::size_t>(type)] : "???";
}

} // namespace kv
