// kvproject: makes, shows, edits and checks project files, as a host of the library.

#include "Archive.h"
#include "Check.h"
#include "Clips.h"
#include "Editor.h"
#include "EventPrinter.h"
#include "Failure.h"
#include "Idl.h"
#include "Import.h"
#include "Lines.h"
#include "ObjectPath.h"
#include "ProjectFile.h"
#include "Relink.h"
#include "Render.h"
#include "Session.h"
#include "Text.h"
#include "Tree.h"
#include "Workers.h"

#include <CLI/CLI.hpp>

#include <clocale>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iostream>
#include <langinfo.h>
#include <memory>
#include <optional>

namespace kvproject {
namespace {

constexpr int kUsage = 2;
constexpr const char* kHelpHint = "\nRun with --help for more information.\n";

/// The options that every command on a file has.
struct FileOptions {
    std::string file;
    bool events = false;
    /// A save may lose what was not read.
    bool force = false;

    /// Where the events are printed; null for nowhere.
    std::ostream* EventStream() const { return events ? &std::cout : nullptr; }
};

constexpr const char* kForceHelp = "Save even where that loses what the file holds";
constexpr const char* kEventsHelp = "Print the events of the project as they arrive";

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

/// The name of a file without folder and extension.
std::string StemOf(const std::string& file)
{
    return std::filesystem::path(file).stem().string();
}

void NameProject(IKVProjectData& project, const std::string& name)
{
    SetMember(project, "Label", name);
    SetMember(project, "DisplayName", name);
}

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

/// What is wrong with a "PATH=VALUE"; empty for one that is right.
std::string CheckAssignment(const std::string& text)
{
    return text.find('=') == text.npos ? "'" + text + "' is not of that form" : "";
}

/// Tells a person what a save would lose of the file.
void TellLosses(const ProjectFile& file)
{
    for (const std::string& loss : file.Losses())
        std::cerr << "kvproject: " << Shown(file.Name()) << ": " << Shown(loss) << '\n';
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

struct ArchiveOptions : FileOptions {
    std::string target;
    bool planned = false;
};

int RunArchive(const ArchiveOptions& options)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const bool isFolder = fs::is_directory(options.target, error);
    const std::string target =
        isFolder ? (fs::path(options.target) / fs::path(options.file).filename()).string() : options.target;
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

int RunRegistration(bool add)
{
    add ? Register() : Unregister();
    for (const std::string& library : {ProjectLibrary(), EngineLibrary()})
        std::cout << (add ? "registered " : "unregistered ") << Shown(library) << '\n';
    return 0;
}

int Run(int argc, char** argv)
{
    CLI::App app("Makes, shows, edits and checks disc project files.", "kvproject");
    // A word that is no command is told by its name, before it is told that there is no command.
    app.require_subcommand(0, 1);
    app.footer("PATH names a member: Label, titles[1].Label, dataFiles[1].DestPath, encoding.VideoBitrate,\n"
               "titles[2].encoding.SyncToProject, menus[1].buttons[2].ActiveRegion.Left. Lists count from 1.\n"
               "A VALUE is a text, a number, true or false, or the name of one of the member's enumerators such\n"
               "as PAL; flags are joined by |, the parts of a region and the like by commas.\n"
               "Exit codes: 0 done, 1 something is wrong (a message tells what), 2 wrong usage.");
    app.failure_message([](const CLI::App*, const CLI::Error& error) { return Shown(error.what()) + kHelpHint; });
    app.set_version_flag("--version", "kvproject " KVPROJECT_VERSION);
    std::function<int()> run;

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

    auto shown = std::make_shared<ShowOptions>();
    CLI::App* show = app.add_subcommand("show", "Show projects as trees");
    AddFiles(*show, shown->files);
    show->add_flag("--json", shown->json, "As JSON; of several projects each in a line");
    show->add_flag("--events", shown->events, kEventsHelp);
    show->callback([&run, shown] { run = [shown] { return RunShow(*shown); }; });

    auto read = std::make_shared<FileOptions>();
    auto paths = std::make_shared<std::vector<std::string>>();
    CLI::App* get = app.add_subcommand("get", "Print values, one a line");
    AddFileOptions(*get, *read, false);
    get->add_option("PATH", *paths, "The members")->required();
    get->callback([&run, read, paths] { run = [read, paths] { return RunGet(*read, *paths); }; });

    auto listed = std::make_shared<MembersOptions>();
    CLI::App* members = app.add_subcommand("members", "List the paths that get takes, of a new project without a FILE");
    AddFileOptions(*members, *listed, false)->required(false);
    members->add_flag("--settable", listed->settable, "Those that set takes");
    members->add_option("--values", listed->valuesOf, "The names that a value of this PATH can be, instead");
    members->callback([&run, listed] { run = [listed] { return RunMembers(*listed); }; });

    auto changed = std::make_shared<FileOptions>();
    auto assignments = std::make_shared<std::vector<std::string>>();
    CLI::App* set = app.add_subcommand("set", "Change values and save; nothing is saved when one of them is refused");
    AddFileOptions(*set, *changed, true);
    set->add_flag("--force", changed->force, kForceHelp);
    set->add_option("PATH=VALUE", *assignments, "The changes, made in order")->required()->check(CheckAssignment);
    set->callback(
        [&run, changed, assignments] { run = [changed, assignments] { return RunSet(*changed, *assignments); }; });

    auto moved = std::make_shared<FileOptions>();
    auto places = std::make_shared<std::vector<std::string>>();
    CLI::App* relink = app.add_subcommand("relink", "Point sources that were moved to their new place, and save");
    AddFileOptions(*relink, *moved, true);
    relink->add_flag("--force", moved->force, kForceHelp);
    relink->add_option("OLD=NEW", *places, "A path, or the folders that paths begin with, and what takes their place")
        ->required()
        ->check(CheckAssignment);
    relink->callback([&run, moved, places] { run = [moved, places] { return RunRelink(*moved, *places); }; });

    auto archived = std::make_shared<ArchiveOptions>();
    CLI::App* archive = app.add_subcommand("archive", "Save a project with copies of all its files beside it");
    AddFileOptions(*archive, *archived, false);
    archive->add_option("DEST", archived->target, "The project file to make, or the folder that it is to stand in")
        ->required()
        ->transform(HostPath);
    archive->add_flag("--dry-run", archived->planned, "Tell what would be copied, and change nothing");
    archive->add_flag("--force", archived->force, "Replace an existing project file");
    archive->callback([&run, archived] { run = [archived] { return RunArchive(*archived); }; });

    auto imported = std::make_shared<ImportOptions>();
    CLI::App* bring = app.add_subcommand("import", "Make a project file of files of another format");
    bring->add_option("SOURCE", imported->source, "The file or folder to import")->required()->transform(HostPath);
    AddFileOptions(*bring, *imported, true);
    bring->add_flag("--force", imported->force, "Replace an existing file");
    bring->callback([&run, imported] { run = [imported] { return RunImport(*imported); }; });

    auto edited = std::make_shared<EditOptions>();
    CLI::App* edit = app.add_subcommand("edit", "Edit by commands, one a line, with undo; the command help lists them");
    AddFileOptions(*edit, *edited, true);
    edit->add_option("--script", edited->script, "Read the commands from this file and stop at the first bad one")
        ->transform(HostPath);
    edit->callback([&run, edited] { run = [edited] { return RunEdit(*edited); }; });

    auto checked = std::make_shared<std::vector<std::string>>();
    CLI::App* check =
        app.add_subcommand("check", "Tell what is wrong with project files; exit code 1 when anything is");
    AddFiles(*check, *checked);
    check->callback([&run, checked] { run = [checked] { return RunCheck(*checked); }; });

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

    app.add_subcommand("idl", "Print the type library as IDL text")->callback([&run] {
        run = [] {
            PrintIdl(ProjectLibrary(), std::cout);
            return 0;
        };
    });
    app.add_subcommand("register", "Enter the libraries in the user's registry file, for all hosts")->callback([&run] {
        run = [] { return RunRegistration(true); };
    });
    app.add_subcommand("unregister", "Take them out of the registry file")->callback([&run] {
        run = [] { return RunRegistration(false); };
    });

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    if (!run) {
        std::cerr << "A command is required" << kHelpHint;
        return kUsage;
    }
    return run();
}

} // namespace
} // namespace kvproject

int main(int argc, char** argv)
{
    // Numbers stay as they are everywhere. Where the locale has no UTF-8, what is typed is UTF-8 all the same.
    setlocale(LC_CTYPE, "");
    if (std::string_view(nl_langinfo(CODESET)) != "UTF-8") setlocale(LC_CTYPE, "C.UTF-8");
    // A file that gets too long for its limit is a failure like others, and is cleaned up after.
    signal(SIGXFSZ, SIG_IGN);
    try {
        for (int i = 1; i < argc; ++i)
            kvproject::RequireUtf8(argv[i]);
        const int result = kvproject::Run(argc, argv);
        std::cout.flush();
        if (!std::cout) throw kvproject::Failure("cannot write the output");
        return result;
    } catch (const std::exception& error) {
        kvproject::TellFailure(error.what());
        return kvproject::kFault;
    }
}
