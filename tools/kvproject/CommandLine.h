#pragma once
// The commands as they are typed, and what several of them have in common.

#include "ProjectFile.h"
#include "Session.h"

#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace kvproject {

/// The options that every command on a file has.
struct FileOptions {
    std::string file;
    bool events = false;
    /// A save may lose what was not read.
    bool force = false;

    /// Where the events are printed; null for nowhere.
    std::ostream* EventStream() const { return events ? &std::cout : nullptr; }
};

inline constexpr const char* kForceHelp = "Save even where that loses what the file holds";
inline constexpr const char* kEventsHelp = "Print the events of the project as they arrive";

void AddFiles(CLI::App& command, std::vector<std::string>& files);
CLI::Option* AddFileOptions(CLI::App& command, FileOptions& options, bool events);

/// Label and name of a project that is made.
void NameProject(IKVProjectData& project, const std::string& name);

/// The name of a file without folder and extension.
std::string StemOf(const std::string& file);

/// Tells a person what a save would lose of the file.
void TellLosses(const ProjectFile& file);

/// What is to be done when all has been read; gives the exit code.
using Action = std::function<int()>;

// Each adds the command of its name, which sets the action.
void AddNew(CLI::App& app, Action& run);
void AddShow(CLI::App& app, Action& run);
void AddGet(CLI::App& app, Action& run);
void AddMembers(CLI::App& app, Action& run);
void AddSet(CLI::App& app, Action& run);
void AddRelink(CLI::App& app, Action& run);
void AddArchive(CLI::App& app, Action& run);
void AddImport(CLI::App& app, Action& run);
void AddEdit(CLI::App& app, Action& run);
void AddCheck(CLI::App& app, Action& run);
void AddRender(CLI::App& app, Action& run);

} // namespace kvproject
