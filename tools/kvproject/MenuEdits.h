#pragma once
// Menus and what stands in them come, go, move and are copied. What is refused throws Failure and leaves nothing
// behind.

#include "Arguments.h"
#include "KVProjectData/IKVProjectData.h"
#include "ObjectPath.h"

#include <string>
#include <string_view>

namespace kvproject {

/// What a background, an audio, a source or a mask is set to: a file by its full path, since the project may be moved;
/// a moniker and what begins with a content macro as it is.
std::string FullSource(const std::string& name);

/// Position 0 is behind the last.
void AddMenu(IKVProjectData& project, const std::string& label, LONG position);

/// Adds a button, an overlay, a text, a group or a command, as `kind` says, to a menu, a button or what else has
/// commands. Of an element the name is its label, its words or its file; of a group the names of its elements, joined
/// by
/// "|"; of a command what SetCommand reads.
void AddTo(IKVProjectData& project, std::string_view kind, const Placement& placement);

/// `list` is one of a menu or a button; positions count from 1 in it.
void RemoveFromMenu(IDispatch& owner, const std::string& list, LONG position);
void MoveInMenu(IDispatch& owner, const std::string& list, LONG position, LONG to);

/// Copies a menu, an element or a command, to the same list or to another owner. The copy of a menu links its own
/// elements.
void CopyItem(IKVProjectData& project, const Item& item, const Placement& placement);

} // namespace kvproject
