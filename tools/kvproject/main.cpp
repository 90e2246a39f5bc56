// kvproject: makes, shows, edits and checks project files, as a host of the library.

#include "CommandLine.h"
#include "Failure.h"
#include "Idl.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <clocale>
#include <csignal>
#include <langinfo.h>

namespace kvproject {
namespace {

constexpr int kUsage = 2;
constexpr const char* kHelpHint = "\nRun with --help for more information.\n";

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
    Action run;

    for (const auto add : {&AddNew, &AddShow, &AddGet, &AddMembers, &AddSet, &AddRelink, &AddArchive, &AddImport,
                           &AddEdit, &AddCheck, &AddRender})
        add(app, run);
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
