#pragma once
// What a project file says and the library passes over when it loads the file, so that a save would lose it.

#include "platform/xml/Dom.h"

#include <string>
#include <vector>

namespace kvproject {

/// One sentence for each element and attribute of the file's document that is passed over or read differently; of
/// productions all is kept. Throws Failure for a document that cannot be loaded at all.
std::vector<std::string> FindLosses(IXMLDOMDocument& document, const std::string& file);

} // namespace kvproject
