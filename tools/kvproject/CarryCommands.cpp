// Commands that carry projects away, and bring others in.

#include "CommandLine.h"

#include "Archive.h"
#include "EventPrinter.h"
#include "Failure.h"
#include "Import.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>

namespace kvproject {
namespace {

struct ArchiveOptions : FileOptions {
    std::string target;
    bool planned = false;
};

/// The file to make, which bears the name of the project file where a folder alone is named.
std::string TargetOf(const ArchiveOptions& options)
{
    namespace fs = std::filesystem;
    if (options.target.empty()) throw Failure("cannot archive: the name of the archive is empty");
    std::error_code error;
    fs::path named(options.target);
    if (fs::is_directory(named, error)) {
        named /= fs::path(options.file).filename();
    } else if (!named.has_filename()) {
        throw Failure("cannot archive: there is no folder " + options.target);
    }
    fs::path target;
    for (const fs::path& part : named) {
        if (part != ".") target /= part;
    }
    return target.string();
}

int RunArchive(const ArchiveOptions& options)
{
    const std::string target = TargetOf(options);
    if (!options.force) RequireNew(target);
    Session session;
    const ProjectFile file(session, options.file);
    TellLosses(file);
    return Archive(session, target, options.planned, std::cout);
}

struct ImportOptions : FileOptions {
    std::string source;
};

int RunImport(const ImportOptions& options)
{
    std::error_code error;
    if (!std::filesystem::exists(options.source, error)) throw Failure(options.source + " does not exist");
    if (std::filesystem::equivalent(options.source, options.file, error))
        throw Failure(options.file + " is what is to be imported");
    RequireFolderOf(options.file);
    if (!options.force) RequireNew(options.file);
    RegisterImporters();
    Session session;
    EventPrinter events(session.Project(), options.EventStream());
    int code = 0;
    {
        const auto held = events.HoldTitles();
        code = Import(session.Project(), options.source, std::cout);
    }
    if (code > kFault) return code;
    NameProject(session.Project(), StemOf(options.file));
    options.force ? session.Save(options.file) : SaveNew(session, options.file);
    events.WaitForAll();
    return code;
}

} // namespace

void AddArchive(CLI::App& app, Action& run)
{
    auto archived = std::make_shared<ArchiveOptions>();
    CLI::App* archive = app.add_subcommand("archive", "Save a project with copies of all its files beside it");
    AddFileOptions(*archive, *archived, false);
    archive->add_option("DEST", archived->target, "The project file to make, or the folder that it is to stand in")
        ->required()
        ->transform(HostPath);
    archive->add_flag("--dry-run", archived->planned, "Tell what would be copied, and change nothing");
    archive->add_flag("--force", archived->force, "Replace an existing project file");
    archive->callback([&run, archived] { run = [archived] { return RunArchive(*archived); }; });
}

void AddImport(CLI::App& app, Action& run)
{
    auto imported = std::make_shared<ImportOptions>();
    CLI::App* bring = app.add_subcommand("import", "Make a project file of files of another format");
    bring->add_option("SOURCE", imported->source, "The file or folder to import")->required()->transform(HostPath);
    AddFileOptions(*bring, *imported, true);
    bring->add_flag("--force", imported->force, "Replace an existing file");
    bring->callback([&run, imported] { run = [imported] { return RunImport(*imported); }; });
}

} // namespace kvproject
