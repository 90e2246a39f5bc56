#pragma once
// Projects from files of other formats, by the importers that are registered.

#include "Session.h"

#include <ostream>
#include <string>

namespace kvproject {

/// Brings a file or a folder into a project, by the first importer that takes it, and prints which one that is. Shows
/// how far it is, and tells errors on standard error. Returns the exit code: of an interruption, or whether all of it
/// was imported. Throws Failure, also where no importer takes it. Importers are registered (RegisterImporters).
int Import(IKVProjectData& project, const std::string& source, std::ostream& out);

} // namespace kvproject
