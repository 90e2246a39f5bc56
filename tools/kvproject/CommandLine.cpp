#include "CommandLine.h"

#include "ObjectPath.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <filesystem>

namespace kvproject {

void AddFiles(CLI::App& command, std::vector<std::string>& files)
{
    command.add_option("FILE", files, "The project files")->required()->transform(HostPath);
}

CLI::Option* AddFileOptions(CLI::App& command, FileOptions& options, bool events)
{
    CLI::Option* file = command.add_option("FILE", options.file, "The project file");
    if (events) command.add_flag("--events", options.events, kEventsHelp);
    return file->required()->transform(HostPath);
}

std::string StemOf(const std::string& file)
{
    return std::filesystem::path(file).stem().string();
}

void NameProject(IKVProjectData& project, const std::string& name)
{
    SetMember(project, "Label", name);
    SetMember(project, "DisplayName", name);
}

void TellLosses(const ProjectFile& file)
{
    for (const std::string& loss : file.Losses())
        std::cerr << "kvproject: " << Shown(file.Name()) << ": " << Shown(loss) << '\n';
}

} // namespace kvproject
