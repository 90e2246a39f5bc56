#pragma once
// A project as a tree of names and values, read through the public interfaces.

#include "KVProjectData/IKVProjectData.h"
#include "Members.h"

#include <ostream>
#include <string>
#include <vector>

namespace kvproject {

/// The properties of the project and of what stands in it: enumerators by name, or their number as text; flags as
/// an array of names, and numbers for bits without one. Every key is there, with null where there is no value.
Json ReadTree(IKVProjectData& project);

/// The same with the version of the schema, which changes when a key goes or its meaning changes. See docs/JSON.md.
/// The file is told with it where one is given.
Json ReadDocument(IKVProjectData& project, const std::string& file = {});

/// The paths of all its values, as GetMember takes them, or of those that can be set: "Titles[1].Encoding.AudioFormat".
/// Looks into no production.
std::vector<std::string> PathsOf(IKVProjectData& project, bool settable = false);

/// An indented listing for a person.
void PrintTree(const Json& tree, std::ostream& out);

} // namespace kvproject
