#pragma once
// The fonts of the machine.

#include <string>
#include <vector>

namespace kvproject {

/// Whether there is a face of that name, in any case. True where the fonts cannot be listed.
bool IsInstalled(const std::string& face);

/// The names of all faces, in the order of their letters. Empty where the fonts cannot be listed.
std::vector<std::string> InstalledFaces();

} // namespace kvproject
