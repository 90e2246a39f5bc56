#pragma once
// The disc commands of a project, a title, a menu or a button, as a person reads them.

#include "platform/com/BaseTypes.h"
#include "platform/com/Unknown.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvproject {

struct Command {
    std::string name;
    LONG param1;
    LONG param2;
    std::optional<std::string> xml;

    /// "PlayMenu 7 0"
    std::string Text() const { return name + ' ' + std::to_string(param1) + ' ' + std::to_string(param2); }
};

/// The number for one without a name.
std::string CommandName(LONG command);
bool IsCommandName(std::string_view name);
std::vector<std::string> CommandNames();

/// Empty for an object that has none.
std::vector<Command> CommandsOf(IUnknown* owner);

} // namespace kvproject
