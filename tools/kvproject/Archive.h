#pragma once
// A project with copies of all files that it names, to be carried away.

#include "Session.h"

#include <ostream>
#include <string>

namespace kvproject {

/// Archives a project as a new file, with the copies in the folder beside it, or tells what would be copied. Shows how
/// far it is, prints what became of the files, and tells on standard error which of them are not in the archive.
/// Returns the exit code: of an interruption, which leaves nothing, or whether all files are in the archive. Throws
/// Failure.
int Archive(const Session& session, const std::string& target, bool planned, std::ostream& out);

} // namespace kvproject
