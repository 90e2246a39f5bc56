#pragma once
// Points what a project names to another place: sources that were moved.

#include "Session.h"

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace kvproject {

/// A path, or the folders that paths begin with, and what stands in its place from now on.
struct Relocation {
    std::string from;
    std::string to;
};

/// Reads "OLD=NEW"; what stands behind the first sign of equality is new. Throws Failure for anything else.
Relocation ParseRelocation(std::string_view text);

/// The path with its beginning replaced, with either separator between its folders; empty where it begins otherwise.
std::string Relocated(std::string_view path, const Relocation& relocation);

/// Whether the edits are to be undone with the step that is open.
enum class InStep : bool { No, Yes };

struct Relinked {
    /// How many sources stand elsewhere now.
    std::size_t count = 0;
    /// Every relocation fits something, and what it fits is at its new place.
    bool complete = true;
};

/// Replaces the sources of titles, menus, overlays and data files, in their properties and in what titles and menus
/// show, and prints each: "titles[1]: OLD is now NEW". Of several relocations the first one that fits a path counts. A
/// source that is not at its new place stays what it is; that and a relocation that fits nothing are told on standard
/// error. A relative path fits also by where it leads from the folder of the project. Throws Failure.
Relinked Relink(IKVProjectData& project, const std::vector<Relocation>& relocations, InStep inStep, std::ostream& out);

} // namespace kvproject
