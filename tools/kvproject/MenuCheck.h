#pragma once
// What is wrong with the menus of a project, and with the commands that lead to them and to titles.

#include "KVProjectData/IKVProjectData.h"
#include "MediaFiles.h"

#include <string>
#include <vector>

namespace kvproject {

/// One sentence for each fault, which begins with the path of the object. The files that it tells are told to `files`.
void FindMenuFaults(IKVProjectData& project, MediaFiles& files, std::vector<std::string>& faults);

} // namespace kvproject
