#pragma once
// Looks for what is wrong with a project file.

#include <string>
#include <vector>

namespace kvproject {

/// One sentence for each fault: what the library passes over when it loads the file, files that are missing, IDs that
/// are used twice. Throws Failure for a file that cannot be loaded at all.
std::vector<std::string> CheckFile(const std::string& file);

} // namespace kvproject
