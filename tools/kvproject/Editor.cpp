#include "Editor.h"

#include "Arguments.h"
#include "Clips.h"
#include "Failure.h"
#include "MenuEdits.h"
#include "ObjectPath.h"
#include "Relink.h"
#include "Storyboard.h"
#include "Text.h"
#include "Tree.h"

#include "KVProjectData/ICPSUndoParentEnum.h"
#include "KVProjectData/IKVMenu.h"

#include <algorithm>
#include <vector>

namespace kvproject {
namespace {

kv::Bstr Wide(std::string_view text)
{
    return kv::Bstr(kv::ToUtf16(text));
}

kv::ComPtr<IOleUndoManager> ManagerOf(IKVProjectData& project)
{
    kv::ComPtr<IOleUndoManager> manager;
    Require(project.GetUndoManager(manager.Put()), "cannot undo");
    return manager;
}

std::string TextOf(const kv::Bstr& description)
{
    return description.Empty() ? "a step without a name" : Shown(kv::ToUtf8(description.View()));
}

/// The descriptions of a stack, the next in turn first.
std::vector<std::string> Descriptions(IOleUndoManager& manager,
                                      HRESULT (IOleUndoManager::*enumerate)(IEnumOleUndoUnits**))
{
    std::vector<std::string> texts;
    kv::ComPtr<IEnumOleUndoUnits> units;
    Require((manager.*enumerate)(units.Put()), "cannot list the steps");
    for (kv::ComPtr<IOleUndoUnit> unit; units->Next(1, unit.Put(), nullptr) == S_OK;) {
        kv::Bstr description;
        unit->GetDescription(description.Put());
        texts.push_back(TextOf(description));
    }
    return texts;
}

/// Takes out the newest step when it holds nothing that could be undone.
bool RemoveEmptyStep(IOleUndoManager& manager)
{
    kv::ComPtr<IEnumOleUndoUnits> steps;
    kv::ComPtr<IOleUndoUnit> newest;
    Require(manager.EnumUndoable(steps.Put()), "cannot list the steps");
    if (steps->Next(1, newest.Put(), nullptr) != S_OK) return false;
    kv::ComPtr<IEnumOleUndoUnits> children;
    kv::ComPtr<IOleUndoUnit> child;
    const auto step = kv::Query<ICPSUndoParentEnum>(newest);
    if (!step || FAILED(step->EnumChildren(children.Put()))) return false;
    if (children->Next(1, child.Put(), nullptr) == S_OK) return false;
    const auto removal = kv::Query<IUndoUnitRemoval>(&manager);
    return removal && SUCCEEDED(removal->RemoveUnit(newest.Get()));
}

/// The project and what its titles and menus show. A title without a production is given one.
kv::Bstr DocumentText(const Session& session)
{
    const auto document = session.Document();
    kv::ComPtr<IXMLDOMElement> root;
    Require(document->get_documentElement(root.Put()), "cannot write the project");
    kv::ComPtr<IKVTitle> title;
    for (LONG i = 1; SUCCEEDED(session.Project().GetTitle(i, title.Put())); ++i) {
        kv::ComPtr<IUnknown> production;
        if (SUCCEEDED(title->GetProduction(production.Put()))) AddStoryboard(production.Get(), *root);
    }
    kv::ComPtr<IKVMenu> menu;
    for (LONG i = 1; SUCCEEDED(session.Project().GetMenu(i, menu.Put())); ++i) {
        kv::ComPtr<IUnknown> production;
        menu->GetProduction(production.Put());
        if (!production) menu->GetBackgroundProduction(production.Put());
        AddStoryboard(production.Get(), *root);
    }
    kv::Bstr text;
    Require(document->get_xml(text.Put()), "cannot write the project");
    return text;
}

} // namespace

struct Editor::Command {
    std::string_view name;
    void (Editor::*obey)(std::string_view arguments);
    std::string_view arguments;
    std::string_view meaning;
};

constexpr Editor::Command Editor::kCommands[] = {
    {"set", &Editor::Set, "PATH=VALUE", "change a value"},
    {"add", &Editor::Add, "title [CLIP] [at N]", "add a title; the first clip is measured"},
    {"add", &Editor::Add, "file SOURCE[=DESTINATION] [at N]", "add a data file"},
    {"add", &Editor::Add, "menu [LABEL] [at N]", "add a menu"},
    {"add", &Editor::Add, "button [LABEL] to MENU [at N]", "add a button to menus[1]"},
    {"add", &Editor::Add, "text WORDS to OWNER [at N]", "add a text to a menu or to menus[1].buttons[1]"},
    {"add", &Editor::Add, "overlay PICTURE to OWNER [at N]", "add a picture or a clip to it"},
    {"add", &Editor::Add, "group ELEMENTS to MENU", "join elements such as buttons[1]|texts[1]"},
    {"add", &Editor::Add, "command COMMAND to OWNER [at N]", "add a command such as PlayMenu menus[1]"},
    {"remove", &Editor::Remove, "OBJECT", "take out titles[1], dataFiles[1], menus[1].buttons[1], ..."},
    {"move", &Editor::Move, "OBJECT TO", "move an object to another position"},
    {"copy", &Editor::Copy, "OBJECT [to OWNER] [at N]", "copy a menu, an element or a command"},
    {"relink", &Editor::Relink, "OLD=NEW", "point sources to another place: a path or its first folders"},
    {"begin", &Editor::Begin, "[DESCRIPTION]", "gather the edits that follow in one step"},
    {"snapshot", &Editor::Snapshot, "[DESCRIPTION]", "the same, by keeping the whole project"},
    {"end", &Editor::End, "", "end the step"},
    {"cancel", &Editor::Cancel, "", "take the step back"},
    {"undo", &Editor::Undo, "", "take back the last step"},
    {"redo", &Editor::Redo, "", "make it again"},
    {"history", &Editor::History, "", "list the steps"},
    {"show", &Editor::Show, "[PATH]", "show the project, or one value"},
    {"save", &Editor::Save, "[--force] [FILE]", "save, here or elsewhere; forced even where that loses something"},
    {"status", &Editor::Status, "", "tell whether the file holds what is shown"},
    {"help", &Editor::Help, "", "show this"},
    {"quit", &Editor::Quit, "", "end without saving"},
};

Editor::Editor(Session& session, EventPrinter& events, ProjectFile& file, std::ostream& out)
    : m_session(session), m_events(events), m_file(file), m_out(out), m_saved(DocumentText(session))
{
}

Editor::~Editor()
{
    if (m_stepOpen) m_session.Project().EndUndo(VARIANT_FALSE);
}

bool Editor::Obey(std::string_view line)
{
    RequireUtf8(line);
    std::string_view rest = Trimmed(line);
    if (rest.empty() || rest.front() == '#') return true;
    m_line = rest;
    const std::string_view word = TakeWord(rest);
    const auto* command = std::ranges::find(kCommands, word, &Command::name);
    if (command == std::end(kCommands)) {
        throw Failure("there is no command '" + std::string(word) + "'; help lists them");
    }
    if (command->arguments.empty() && !rest.empty()) {
        throw Failure("'" + std::string(word) + "' takes nothing behind it");
    }
    (this->*command->obey)(rest);
    m_events.WaitForAll();
    return !m_quit;
}

bool Editor::Unsaved() const
{
    return DocumentText(m_session).View() != m_saved.View();
}

template <class Edit>
void Editor::Change(Edit&& edit)
{
    if (m_stepOpen) {
        edit();
        return;
    }
    OpenStep(&IKVProjectData::BeginUndo, m_line);
    try {
        edit();
        if (!CommitStep()) m_out << "(cannot be undone)\n";
    } catch (...) {
        if (m_stepOpen) CloseStep(false);
        throw;
    }
}

void Editor::OpenStep(HRESULT (IKVProjectData::*open)(BSTR), std::string_view description)
{
    const HRESULT opened = (m_session.Project().*open)(Wide(description).Get());
    // A snapshot that could not be taken leaves its step open.
    if (FAILED(opened)) m_session.Project().EndUndo(VARIANT_FALSE);
    Require(opened, "cannot begin a step");
    m_stepOpen = true;
}

void Editor::CloseStep(bool commit)
{
    Require(m_session.Project().EndUndo(commit ? VARIANT_TRUE : VARIANT_FALSE), "cannot end the step");
    m_stepOpen = false;
}

bool Editor::CommitStep()
{
    CloseStep(true);
    return !RemoveEmptyStep(*ManagerOf(m_session.Project()));
}

void Editor::RequireNoStep() const
{
    if (m_stepOpen) throw Failure("a step is open; end or cancel it first");
}

void Editor::RequireStep() const
{
    if (!m_stepOpen) throw Failure("no step is open");
}

void Editor::Set(std::string_view arguments)
{
    const std::size_t equals = arguments.find('=');
    if (equals == arguments.npos) throw Failure("'" + std::string(arguments) + "' is not of the form PATH=VALUE");
    const std::string path(Trimmed(arguments.substr(0, equals)));
    Change([&] {
        JoinStepFor(m_session.Project(), path);
        SetMember(m_session.Project(), path, Trimmed(arguments.substr(equals + 1)));
    });
    m_file.WasSet(path);
}

void Editor::Add(std::string_view arguments)
{
    const std::string_view kind = TakeWord(arguments);
    if (kind != "title" && kind != "file" && kind != "menu") {
        const Placement placement = ParsePlacement(arguments);
        return Change([&] { AddTo(m_session.Project(), kind, placement); });
    }
    const Addition addition = ParseAddition(arguments);
    const std::string& name = addition.name;
    if (kind == "title") {
        Change([&] { AddTitle(name, addition.place); });
    } else if (kind == "menu") {
        Change([&] { AddMenu(m_session.Project(), name, addition.place); });
    } else {
        if (name.empty()) throw Failure("add file: which file?");
        Change([&] { AddDataFile(m_session.Project(), name, addition.place); });
    }
}

void Editor::Copy(std::string_view arguments)
{
    const Item item = ParseItem(TakeWord(arguments));
    const Placement placement = ParsePlacement(arguments);
    Change([&] { CopyItem(m_session.Project(), item, placement); });
}

void Editor::AddTitle(const std::string& clip, LONG place)
{
    // What measuring the first clip changes belongs to the step.
    clip.empty() ? void(m_events.AddTitle(kv::Bstr(), place)) : AddClip(m_events, clip, place);
}

void Editor::Remove(std::string_view arguments)
{
    const Item item = ParseItem(arguments);
    Change([&] { RemoveItem(m_session.Project(), item); });
}

void Editor::Move(std::string_view arguments)
{
    const Item item = ParseItem(TakeWord(arguments));
    const LONG to = ParsePosition(arguments);
    Change([&] { MoveItem(m_session.Project(), item, to); });
}

void Editor::Relink(std::string_view arguments)
{
    const std::vector<Relocation> relocations{ParseRelocation(arguments)};
    Change([&] {
        if (kvproject::Relink(m_session.Project(), relocations, InStep::Yes, m_out).count == 0)
            throw Failure("all sources stay where they are");
    });
}

void Editor::Begin(std::string_view description)
{
    RequireNoStep();
    OpenStep(&IKVProjectData::BeginUndo, description);
}

void Editor::Snapshot(std::string_view description)
{
    RequireNoStep();
    OpenStep(&IKVProjectData::TakeUndoSnapshot, description);
}

void Editor::End(std::string_view)
{
    RequireStep();
    if (!CommitStep()) m_out << "(nothing in the step can be undone)\n";
}

void Editor::Cancel(std::string_view)
{
    RequireStep();
    CloseStep(false);
}

void Editor::Undo(std::string_view)
{
    RequireNoStep();
    kv::Bstr description;
    if (FAILED(ManagerOf(m_session.Project())->GetLastUndoDescription(description.Put()))) {
        throw Failure("there is nothing to undo");
    }
    Require(m_session.Project().UndoOperation(), "cannot undo");
    m_out << "undone: " << TextOf(description) << '\n';
}

void Editor::Redo(std::string_view)
{
    RequireNoStep();
    kv::Bstr description;
    if (FAILED(ManagerOf(m_session.Project())->GetLastRedoDescription(description.Put()))) {
        throw Failure("there is nothing to redo");
    }
    Require(m_session.Project().RedoOperation(), "cannot redo");
    m_out << "redone: " << TextOf(description) << '\n';
}

void Editor::History(std::string_view)
{
    const auto manager = ManagerOf(m_session.Project());
    auto undoable = Descriptions(*manager.Get(), &IOleUndoManager::EnumUndoable);
    std::ranges::reverse(undoable);
    for (const std::string& step : undoable)
        m_out << "  " << step << '\n';
    m_out << (m_stepOpen ? "> a step is open\n" : "> now\n");
    for (const std::string& step : Descriptions(*manager.Get(), &IOleUndoManager::EnumRedoable))
        m_out << "  (" << step << ")\n";
}

void Editor::Show(std::string_view path)
{
    if (path.empty()) {
        PrintTree(ReadTree(m_session.Project()), m_out);
    } else {
        m_out << Shown(GetMember(m_session.Project(), path)) << '\n';
    }
}

void Editor::Save(std::string_view arguments)
{
    std::string_view file = arguments;
    const bool force = TakeWord(file) == "--force";
    if (!force) file = arguments;
    m_file.Save(file.empty() ? m_file.Name() : HostPath(file), force);
    m_saved = DocumentText(m_session);
}

void Editor::Status(std::string_view)
{
    const std::string name = Shown(m_file.Name());
    if (m_file.ChangedByOthers()) m_out << name << " was changed by somebody else\n";
    for (const std::string& loss : m_file.Losses())
        m_out << name << ": " << Shown(loss) << '\n';
    m_out << (Unsaved() ? "there are changes that are not saved\n" : "all changes are saved\n");
}

void Editor::Quit(std::string_view)
{
    m_quit = true;
}

void Editor::Help(std::string_view)
{
    for (const Command& command : kCommands) {
        std::string usage = "  " + std::string(command.name) + ' ' + std::string(command.arguments);
        usage.resize(std::max<std::size_t>(usage.size() + 1, 44), ' ');
        m_out << usage << command.meaning << '\n';
    }
}

} // namespace kvproject
