#pragma once
// A project as a tree of names and values, read through the public interfaces.

#include "KVProjectData/IKVProjectData.h"

#include <nlohmann/json.hpp>
#include <ostream>

namespace kvproject {

using Json = nlohmann::ordered_json;

/// The properties of the project and its titles and data files; enumerators and flags by name.
Json ReadTree(IKVProjectData& project);

/// An indented listing for a person.
void PrintTree(const Json& tree, std::ostream& out);

} // namespace kvproject
