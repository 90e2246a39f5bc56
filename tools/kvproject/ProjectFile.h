#pragma once
// A project file that is loaded, changed and saved again, and that is not to lose what this program did not read.

#include "Session.h"
#include "platform/system/FileState.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kvproject {

class ProjectFile {
public:
    /// Loads it. Throws Failure.
    ProjectFile(Session& session, std::string name);

    /// The one that was loaded, or saved last.
    const std::string& Name() const { return m_name; }
    /// What a save would lose of the file, one sentence each.
    const std::vector<std::string>& Losses() const { return m_losses; }
    /// Another file bears the name than the one that was loaded or saved last.
    bool ChangedByOthers() const { return kv::FileState::Of(m_name) != m_state; }

    /// What saves from here on make of this member is compared at the end.
    void WasSet(const std::string& path) { m_set.insert(path); }
    /// Throws Failure, unless forced, instead of losing anything: of the file that was loaded, of what others wrote to
    /// it since, of another file that bears the name.
    void Save(const std::string& target, bool force);
    /// Tells on standard error which of the members that were set the saved files do not give back. False when there
    /// are any. Comes last: it loads projects, which ends what can be undone in this process.
    bool TellWhatIsNotHeld() const;

private:
    /// By path. Empty for a member without a value.
    using MemberValues = std::map<std::string, std::optional<std::string>>;

    void RequireNoLoss(const std::string& target) const;

    Session& m_session;
    std::string m_name;
    kv::FileState m_state;
    std::vector<std::string> m_losses;
    std::set<std::string> m_set;
    /// What was saved last, by file.
    std::map<std::string, MemberValues> m_saved;
};

/// Throws Failure for a name that a file bears already.
void RequireNew(const std::string& file);

/// Throws Failure where there is no folder that a file could stand in.
void RequireFolderOf(const std::string& file);

/// Saves a file that is not there yet. Of several that do so at once one succeeds; for the others RequireNew fails.
void SaveNew(Session& session, const std::string& file);

} // namespace kvproject
