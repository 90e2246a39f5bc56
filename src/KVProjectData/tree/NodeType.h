#pragma once
// The kinds of nodes that a project's tree is made of.

#include "platform/com/BaseTypes.h"

#include <string_view>

namespace kv {

enum NodeType : LONG {
    typeNone = 0,
    typeProject = 1,
    typeTitleList = 2,
    typeMenuList = 3,
    typeFileList = 4,
    typeElementList = 5,
    typeTitle = 6,
    typeMenu = 7,
    typeFile = 8,
    typeButton = 9,
    typeOverlay = 10,
    typeText = 11,
    typeCmdList = 12,
    typeEncParams = 13,
    typeButtonLinks = 14,
    typeActiveRgn = 15,
    typeCommand = 16,
    typePalette = 17,
    typeBtnScheme = 18,
    typeLayoutRect = 19,
    typeSPUColours = 20,
    typeGroupInfoList = 21,
    typeGroupInfo = 22,
};

/// The name of a kind for descriptions and diagnostics; "???" for any other value.
std::string_view NodeTypeName(NodeType type);

} // namespace kv
