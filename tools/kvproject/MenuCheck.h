#pragma once
// What is wrong with the menus of a project, and with the commands that lead to them and to titles.

#include "KVProjectData/IKVProjectData.h"

#include <string>
#include <vector>

namespace kvproject {

/// One sentence for each fault, which begins with the path of the object.
void FindMenuFaults(IKVProjectData& project, std::vector<std::string>& faults);

} // namespace kvproject
