#pragma once
// Changes the disc commands of a project, a title, a menu or a button. What is refused throws Failure.
//
// A command is written "PlayMenu menus[2]": its name or number, then two parameters, each a number or a title or menu,
// whose ID it stands for; 0 where nothing is said. Positions count from 1.

#include "KVProjectData/IKVProjectData.h"

#include <string>
#include <string_view>

namespace kvproject {

/// Puts it in the place of the one at the position, without XML; behind the last one it is appended.
void SetCommand(IKVProjectData& project, IUnknown* owner, LONG position, std::string_view text);

/// Sets "Command", "Param1", "Param2" or "XML" of a command.
void SetCommandMember(IKVProjectData& project, IUnknown* owner, LONG position, std::string_view member,
                      std::string_view value);

/// Position 0 is behind the last.
void InsertCommand(IKVProjectData& project, IUnknown* owner, LONG position, std::string_view text);
void RemoveCommand(IUnknown* owner, LONG position);
void MoveCommand(IUnknown* owner, LONG position, LONG to);
void CopyCommand(IUnknown* owner, LONG position, IUnknown* target, LONG to);

} // namespace kvproject
