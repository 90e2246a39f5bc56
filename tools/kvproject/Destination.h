#pragma once
// Where a data file is to stand on the disc.

#include <string>

namespace kvproject {

/// What is wrong with a destination: "the destination ../x leads out of the disc". Empty for a right one.
std::string DestinationFault(const std::string& destination);

} // namespace kvproject
