#pragma once
// Names a member of a project, such as "Label", "titles[1].Label" or "titles[2].encoding.VideoBitrate", and reads and
// writes it late bound.
//
// titles[N], menus[N] and dataFiles[N] count from 1, and so do in a menu elements[N], which are of all kinds,
// buttons[N], overlays[N], texts[N] and groups[N], and in a button its elements. "encoding" is the encoding parameters
// of the project, of a title or of a menu. commands[N] is a command, such as "PlayMenu 7 0", or has members; a value
// with parts is read and set as a whole or part by part: "ActiveRegion", "ActiveRegion.Left". Names are those of the
// JSON output, in any case.

#include "KVProjectData/IKVProjectData.h"
#include "platform/com/ComPtr.h"

#include <string>
#include <string_view>
#include <vector>

namespace kvproject {

/// The value as a person reads it, enumerators and flags by name. Throws Failure when the path names nothing that can
/// be read, or what it names has no value at the moment.
std::string GetMember(IKVProjectData& project, std::string_view path);

/// The names that a value of the member can have, or be joined of, or begin with; empty for one whose values have none.
/// Throws Failure when the path names nothing that can be set.
std::vector<std::string> ValueNamesOf(IKVProjectData& project, std::string_view path);

/// The value is a number, a text, true or false, or the name of an enumerator of the member's own; flags join names and
/// numbers by "|". Tells on standard error of a destination that is none on the disc. Throws Failure when the path
/// names nothing that can be set, or the value does not fit.
void SetMember(IKVProjectData& project, std::string_view path, std::string_view value);

/// Has the production of a title take part in the open step where the path names what is the production's: the aspect
/// ratio. Throws Failure.
void JoinStepFor(IKVProjectData& project, std::string_view path);

/// The object of that path, such as "menus[1].buttons[2]"; the project for none. Throws Failure.
kv::ComPtr<IDispatch> FindObject(IKVProjectData& project, std::string_view path);

/// An object of a list.
struct Item {
    /// The path of the object whose list it is; empty for the project.
    std::string owner;
    std::string list;
    /// From 1.
    LONG position;
};

/// Reads "titles[N]", "menus[1].buttons[N]" and the like. Throws Failure for anything else.
Item ParseItem(std::string_view text);

/// Both throw Failure when there is no such object or place.
void RemoveItem(IKVProjectData& project, const Item& item);
void MoveItem(IKVProjectData& project, const Item& item, LONG to);

/// Throws Failure for a name that no readable file bears.
void RequireFile(const std::string& file);

/// Adds "SOURCE" or "SOURCE=DESTINATION", which is the name of the source at first; position 0 is behind the last.
/// Tells of the destination as SetMember does.
void AddDataFile(IKVProjectData& project, const std::string& text, LONG position);

} // namespace kvproject
