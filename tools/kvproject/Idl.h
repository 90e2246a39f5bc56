#pragma once
// The type library as IDL text.

#include <ostream>
#include <string>

namespace kvproject {

/// Throws Failure when the library has no type library.
void PrintIdl(const std::string& serverLibrary, std::ostream& out);

} // namespace kvproject
