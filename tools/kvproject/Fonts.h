#pragma once
// The fonts of the machine.

#include <string>

namespace kvproject {

/// Whether there is a face of that name, in any case. True where the fonts cannot be listed.
bool IsInstalled(const std::string& face);

} // namespace kvproject
