#pragma once
// Edits a project by commands, one a line: every edit is a step that can be undone, or part of one.

#include "EventPrinter.h"
#include "ProjectFile.h"
#include "platform/automation/Bstr.h"

#include <ostream>
#include <string>
#include <string_view>

namespace kvproject {

class Editor {
public:
    /// A step that is left open is cancelled at the end.
    Editor(Session& session, EventPrinter& events, ProjectFile& file, std::ostream& out);
    ~Editor();
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    /// Obeys one line; empty lines and those that begin with # say nothing. False when it was the last. Throws Failure
    /// for a line that cannot be obeyed, which then has changed nothing.
    bool Obey(std::string_view line);

    /// A save would write another document than the one that was loaded or saved last.
    bool Unsaved() const;

private:
    struct Command;
    static const Command kCommands[];

    void Set(std::string_view arguments);
    void Add(std::string_view arguments);
    /// A title of its own for a clip, or an empty one.
    void AddTitle(const std::string& clip, LONG place);
    void Remove(std::string_view arguments);
    void Move(std::string_view arguments);
    void Copy(std::string_view arguments);
    void Relink(std::string_view arguments);
    void Begin(std::string_view description);
    void End(std::string_view);
    void Cancel(std::string_view);
    void Snapshot(std::string_view description);
    void Undo(std::string_view);
    void Redo(std::string_view);
    void History(std::string_view);
    void Show(std::string_view path);
    void Save(std::string_view arguments);
    void Status(std::string_view);
    void Quit(std::string_view);
    void Help(std::string_view);

    /// Makes an edit in the open step, or in one of its own that is described by the line.
    template <class Edit>
    void Change(Edit&& edit);
    void OpenStep(HRESULT (IKVProjectData::*open)(BSTR), std::string_view description);
    /// The step stays open when that fails.
    void CloseStep(bool commit);
    /// False for a step in which nothing was recorded: it is not kept.
    bool CommitStep();
    void RequireNoStep() const;
    void RequireStep() const;

    Session& m_session;
    EventPrinter& m_events;
    ProjectFile& m_file;
    std::ostream& m_out;
    std::string m_line;
    /// The document as it was loaded, or saved last.
    kv::Bstr m_saved;
    bool m_stepOpen = false;
    bool m_quit = false;
};

} // namespace kvproject
