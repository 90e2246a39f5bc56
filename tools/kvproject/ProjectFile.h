#pragma once
// A project file that is loaded, changed and saved again, and that is not to lose what this program did not read.

#include "Session.h"

#include <ctime>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kvproject {

/// Which file bears a name, and when it was written. A save puts another file in the place of the old one.
struct FileState {
    dev_t device = 0;
    ino_t file = 0;
    off_t size = 0;
    std::time_t seconds = 0;
    long nanoseconds = 0;

    bool operator==(const FileState&) const = default;
    bool Exists() const { return *this != FileState(); }

    /// That of no file where there is none.
    static FileState Of(const std::string& file);
};

class ProjectFile {
public:
    /// Loads it. Throws Failure.
    ProjectFile(Session& session, std::string name);

    /// The one that was loaded, or saved last.
    const std::string& Name() const { return m_name; }
    /// What a save would lose of the file, one sentence each.
    const std::vector<std::string>& Losses() const { return m_losses; }
    /// Another file bears the name than the one that was loaded or saved last.
    bool ChangedByOthers() const { return FileState::Of(m_name) != m_state; }

    /// Throws Failure, unless forced, instead of losing anything: of the file that was loaded, of what others wrote to
    /// it since, of another file that bears the name.
    void Save(const std::string& target, bool force);

private:
    void RequireNoLoss(const std::string& target) const;

    Session& m_session;
    std::string m_name;
    FileState m_state;
    std::vector<std::string> m_losses;
};

/// Throws Failure for a name that a file bears already.
void RequireNew(const std::string& file);

} // namespace kvproject
