// Commands that read projects and change nothing.

#include "CommandLine.h"

#include "Check.h"
#include "EventPrinter.h"
#include "Failure.h"
#include "ObjectPath.h"
#include "Render.h"
#include "Text.h"
#include "Tree.h"
#include "Workers.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace kvproject {
namespace {

struct ShowOptions {
    std::vector<std::string> files;
    bool events = false;
    bool json = false;
};

void Show(const ShowOptions& options, const std::string& file, std::ostream& out)
{
    Session session;
    // The output is to be JSON and nothing else.
    std::ostream* const events = options.json ? &std::cerr : &out;
    {
        EventPrinter printer(session.Project(), options.events ? events : nullptr);
        session.Load(file);
        printer.WaitForAll();
    }
    const bool several = options.files.size() > 1;
    if (!options.json) {
        if (several) out << "File: " << Shown(file) << '\n';
        PrintTree(ReadTree(session.Project()), out);
        return;
    }
    // Of several documents each is a line.
    constexpr int kIndent = 2;
    const Json document = ReadDocument(session.Project(), several ? file : "");
    out << document.dump(several ? -1 : kIndent, ' ', false, Json::error_handler_t::replace) << '\n';
}

int RunShow(const ShowOptions& options)
{
    return ForEachFile(options.files, [&options](const std::string& file, std::ostream& out) {
        Show(options, file, out);
        return 0;
    });
}

int RunGet(const FileOptions& options, const std::vector<std::string>& paths)
{
    Session session;
    session.Load(options.file);
    // One value is given as it is; of several, each has a line.
    for (const std::string& path : paths) {
        const std::string value = GetMember(session.Project(), path);
        std::cout << (paths.size() == 1 ? value : Shown(value)) << '\n';
    }
    return 0;
}

struct MembersOptions : FileOptions {
    bool settable = false;
    std::string valuesOf;
};

int RunMembers(const MembersOptions& options)
{
    Session session;
    if (!options.file.empty()) session.Load(options.file);
    IKVProjectData& project = session.Project();
    const bool values = !options.valuesOf.empty();
    for (const auto& line : values ? ValueNamesOf(project, options.valuesOf) : PathsOf(project, options.settable))
        std::cout << line << '\n';
    return 0;
}

int RunCheck(const std::vector<std::string>& files)
{
    return ForEachFile(files, [&files](const std::string& file, std::ostream& out) {
        const std::string name = Shown(file) + ": ";
        const std::vector<std::string> faults = CheckFile(file);
        for (const std::string& fault : faults)
            out << (files.size() > 1 ? name : "") << Shown(fault) << '\n';
        if (faults.empty()) out << name << "nothing wrong\n";
        return faults.empty() ? 0 : kFault;
    });
}

struct RenderOptions : FileOptions {
    Picture picture;
    std::string size;
    std::string target;
};

int RunRender(RenderOptions& options)
{
    Session session;
    session.Load(options.file);
    if (!options.size.empty()) options.picture.size = ReadSize(options.size);
    Render(session.Project(), options.picture, options.target);
    return 0;
}

/// What is wrong with a "WIDTHxHEIGHT"; empty for one that is right.
std::string CheckSize(const std::string& text)
{
    return ReadSize(text) ? "" : "'" + text + "' is no size from 1x1 to 16384x16384";
}

} // namespace

void AddShow(CLI::App& app, Action& run)
{
    auto shown = std::make_shared<ShowOptions>();
    CLI::App* show = app.add_subcommand("show", "Show projects as trees");
    AddFiles(*show, shown->files);
    show->add_flag("--json", shown->json, "As JSON; of several projects each in a line");
    show->add_flag("--events", shown->events, kEventsHelp);
    show->callback([&run, shown] { run = [shown] { return RunShow(*shown); }; });
}

void AddGet(CLI::App& app, Action& run)
{
    auto read = std::make_shared<FileOptions>();
    auto paths = std::make_shared<std::vector<std::string>>();
    CLI::App* get = app.add_subcommand("get", "Print values, one a line");
    AddFileOptions(*get, *read, false);
    get->add_option("PATH", *paths, "The members")->required();
    get->callback([&run, read, paths] { run = [read, paths] { return RunGet(*read, *paths); }; });
}

void AddMembers(CLI::App& app, Action& run)
{
    auto listed = std::make_shared<MembersOptions>();
    CLI::App* members = app.add_subcommand("members", "List the paths that get takes, of a new project without a FILE");
    AddFileOptions(*members, *listed, false)->required(false);
    members->add_flag("--settable", listed->settable, "Those that set takes");
    members->add_option("--values", listed->valuesOf, "The names that a value of this PATH can be, instead");
    members->callback([&run, listed] { run = [listed] { return RunMembers(*listed); }; });
}

void AddCheck(CLI::App& app, Action& run)
{
    auto checked = std::make_shared<std::vector<std::string>>();
    CLI::App* check =
        app.add_subcommand("check", "Tell what is wrong with project files; exit code 1 when anything is");
    AddFiles(*check, *checked);
    check->callback([&run, checked] { run = [checked] { return RunCheck(*checked); }; });
}

void AddRender(CLI::App& app, Action& run)
{
    auto drawn = std::make_shared<RenderOptions>();
    CLI::App* render = app.add_subcommand("render", "Draw what a menu or a title shows");
    AddFileOptions(*render, *drawn, false);
    render->add_option("PATH", drawn->picture.path, "menus[N] or titles[N]")->required();
    render->add_option("PICTURE", drawn->target, "The PNG file to write")->required()->transform(HostPath);
    render->add_option("--size", drawn->size, "WIDTHxHEIGHT in pixels; without it that of the disc")->check(CheckSize);
    render->add_option("--at", drawn->picture.seconds, "SECONDS from the beginning")->check(CLI::NonNegativeNumber);
    const std::map<std::string, Highlight> highlights{
        {"selected", Highlight::Selected}, {"activated", Highlight::Activated}, {"all", Highlight::All}};
    render
        ->add_option("--highlight", drawn->picture.highlight,
                     "Of the button that the menu begins with, selected or activated, or of all, selected")
        ->transform(CLI::CheckedTransformer(highlights))
        ->type_name("selected|activated|all");
    render->callback([&run, drawn] { run = [drawn] { return RunRender(*drawn); }; });
}

} // namespace kvproject
