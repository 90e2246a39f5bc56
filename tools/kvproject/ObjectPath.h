#pragma once
// Names a member of a project, such as "Label", "titles[1].Label" or "titles[2].encoding.VideoBitrate", and reads and
// writes it late bound.
//
// titles[N], menus[N] and dataFiles[N] count from 1; "encoding" is the encoding parameters and "locking" the lock of
// the project or of a title. Member names are those of the type library, in any case.

#include "KVProjectData/IKVProjectData.h"
#include "platform/automation/Variant.h"
#include "platform/com/ComPtr.h"

#include <string>
#include <string_view>

namespace kvproject {

/// Throws Failure when the path names nothing.
kv::Variant GetMember(IKVProjectData& project, std::string_view path);

/// The value is a number, a text, true or false, or the name of an enumerator; flags join names by "|". Throws Failure
/// when the path names nothing that can be set, or the value does not fit.
void SetMember(IKVProjectData& project, std::string_view path, std::string_view value);

/// The value as a person reads it.
std::string ValueText(const kv::Variant& value);

} // namespace kvproject
