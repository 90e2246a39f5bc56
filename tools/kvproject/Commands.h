#pragma once
// The disc commands of a project or a title, as a person reads them.

#include "platform/com/BaseTypes.h"
#include "platform/com/Unknown.h"

#include <optional>
#include <string>
#include <vector>

namespace kvproject {

struct Command {
    /// The number of a command without a name.
    std::string name;
    LONG param1;
    LONG param2;
    std::optional<std::string> xml;
};

/// Empty for an object that has none.
std::vector<Command> CommandsOf(IUnknown* owner);

} // namespace kvproject
