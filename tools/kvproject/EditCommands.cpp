// Commands that make and change project files.

#include "CommandLine.h"

#include "Clips.h"
#include "Editor.h"
#include "EventPrinter.h"
#include "Failure.h"
#include "Lines.h"
#include "ObjectPath.h"
#include "Relink.h"
#include "Text.h"
#include "Tree.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

namespace kvproject {
namespace {

struct NewOptions : FileOptions {
    std::string format;
    std::string standard;
    std::string label;
    std::vector<std::string> titles;
    std::vector<std::string> dataFiles;
};

int RunNew(const NewOptions& options)
{
    if (!options.force) RequireNew(options.file);
    Session session;
    IKVProjectData& project = session.Project();
    EventPrinter events(project, options.EventStream());
    if (!options.format.empty()) SetMember(project, "DiscFormat", options.format);
    NameProject(project, options.label.empty() ? StemOf(options.file) : options.label);
    for (const std::string& clip : options.titles)
        AddClip(events, clip, 0);
    for (const std::string& file : options.dataFiles)
        AddDataFile(project, file, 0);
    // What the person says goes before what the first clip measures.
    if (!options.standard.empty()) SetMember(project, "TVStandard", options.standard);
    options.force ? session.Save(options.file) : SaveNew(session, options.file);
    events.WaitForAll();
    return 0;
}

/// What is wrong with a "PATH=VALUE"; empty for one that is right.
std::string CheckAssignment(const std::string& text)
{
    return text.find('=') == text.npos ? "'" + text + "' is not of that form" : "";
}

int RunSet(const FileOptions& options, const std::vector<std::string>& assignments)
{
    Session session;
    ProjectFile file(session, options.file);
    TellLosses(file);
    EventPrinter events(session.Project(), options.EventStream());
    for (const std::string& assignment : assignments) {
        const std::size_t equals = assignment.find('=');
        const std::string path = assignment.substr(0, equals);
        SetMember(session.Project(), path, std::string_view(assignment).substr(equals + 1));
        file.WasSet(path);
    }
    file.Save(options.file, options.force);
    events.WaitForAll();
    return file.TellWhatIsNotHeld() ? 0 : kFault;
}

/// What is wrong with an "OLD=NEW"; empty for one that is right.
std::string CheckRelocation(const std::string& text)
{
    try {
        ParseRelocation(text);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

int RunRelink(const FileOptions& options, const std::vector<std::string>& texts)
{
    std::vector<Relocation> relocations;
    relocations.reserve(texts.size());
    for (const std::string& text : texts)
        relocations.push_back(ParseRelocation(text));
    Session session;
    ProjectFile file(session, options.file);
    TellLosses(file);
    EventPrinter events(session.Project(), options.EventStream());
    const Relinked relinked = Relink(session.Project(), relocations, InStep::No, std::cout);
    if (relinked.count > 0) file.Save(options.file, options.force);
    events.WaitForAll();
    return relinked.complete ? 0 : kFault;
}

struct EditOptions : FileOptions {
    std::string script;
};

/// Obeys the lines until the last.
void ObeyLines(Session& session, Editor& editor, Lines& lines)
{
    // Nothing is to be printed while a person types.
    if (lines.Typed()) session.Project().EnableHeartBeatEvent(VARIANT_FALSE);
    for (bool more = true; more;) {
        const std::optional<std::string> line = lines.Next();
        if (!line) break;
        try {
            more = editor.Obey(*line);
        } catch (const Failure& failure) {
            const std::string message = "line " + std::to_string(lines.Number()) + ": " + failure.what();
            // A person corrects the line; a script may rely on it further down.
            if (!lines.Typed()) throw Failure(message);
            std::cerr << Shown(message) << '\n';
        }
    }
    if (editor.Unsaved()) std::cerr << "kvproject: the last changes were not saved\n";
}

int RunEdit(const EditOptions& options)
{
    Session session;
    ProjectFile file(session, options.file);
    TellLosses(file);
    EventPrinter events(session.Project(), options.EventStream());
    {
        Editor editor(session, events, file, std::cout);
        Lines lines(options.script, [&session] { return PathsOf(session.Project()); });
        ObeyLines(session, editor, lines);
    }
    return file.TellWhatIsNotHeld() ? 0 : kFault;
}

} // namespace

void AddNew(CLI::App& app, Action& run)
{
    auto made = std::make_shared<NewOptions>();
    CLI::App* make = app.add_subcommand("new", "Make a project file");
    AddFileOptions(*make, *made, true);
    make->add_flag("--force", made->force, "Replace an existing file");
    make->add_option("--format", made->format, "Disc format, such as DVD_Video or AVCHD");
    make->add_option("--standard", made->standard, "NTSC or PAL; without it the first clip decides");
    make->add_option("--label", made->label, "Label and name of the project; without it the name of the file");
    make->add_option("--title", made->titles, "A clip to add as a title (repeatable)")->allow_extra_args(false);
    make->add_option("--data-file", made->dataFiles, "SOURCE or SOURCE=DESTINATION (repeatable)")
        ->allow_extra_args(false);
    make->callback([&run, made] { run = [made] { return RunNew(*made); }; });
}

void AddSet(CLI::App& app, Action& run)
{
    auto changed = std::make_shared<FileOptions>();
    auto assignments = std::make_shared<std::vector<std::string>>();
    CLI::App* set = app.add_subcommand("set", "Change values and save; nothing is saved when one of them is refused");
    AddFileOptions(*set, *changed, true);
    set->add_flag("--force", changed->force, kForceHelp);
    set->add_option("PATH=VALUE", *assignments, "The changes, made in order")->required()->check(CheckAssignment);
    set->callback(
        [&run, changed, assignments] { run = [changed, assignments] { return RunSet(*changed, *assignments); }; });
}

void AddRelink(CLI::App& app, Action& run)
{
    auto moved = std::make_shared<FileOptions>();
    auto places = std::make_shared<std::vector<std::string>>();
    CLI::App* relink = app.add_subcommand("relink", "Point sources that were moved to their new place, and save");
    AddFileOptions(*relink, *moved, true);
    relink->add_flag("--force", moved->force, kForceHelp);
    relink->add_option("OLD=NEW", *places, "A path, or the folders that paths begin with, and what takes their place")
        ->required()
        ->check(CheckRelocation);
    relink->callback([&run, moved, places] { run = [moved, places] { return RunRelink(*moved, *places); }; });
}

void AddEdit(CLI::App& app, Action& run)
{
    auto edited = std::make_shared<EditOptions>();
    CLI::App* edit = app.add_subcommand("edit", "Edit by commands, one a line, with undo; the command help lists them");
    AddFileOptions(*edit, *edited, true);
    edit->add_option("--script", edited->script, "Read the commands from this file and stop at the first bad one")
        ->transform(HostPath);
    edit->callback([&run, edited] { run = [edited] { return RunEdit(*edited); }; });
}

} // namespace kvproject
