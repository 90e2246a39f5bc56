#include "ProjectFile.h"

#include "Failure.h"
#include "Losses.h"
#include "Markup.h"
#include "ObjectPath.h"
#include "Text.h"
#include "platform/system/AtomicFile.h"
#include "platform/system/Paths.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace kvproject {
namespace {

[[noreturn]] void ThrowNotNew(const std::string& file)
{
    throw Failure(file + " is not saved: the file exists already; see --force");
}

/// Lets one process at a time put another file in the place of this one. Whoever waited finds the other in its place.
class SaveLock {
public:
    explicit SaveLock(const std::string& file) : m_file(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
        if (m_file >= 0) flock(m_file, LOCK_EX);
    }
    ~SaveLock()
    {
        if (m_file >= 0) close(m_file);
    }
    SaveLock(const SaveLock&) = delete;
    SaveLock& operator=(const SaveLock&) = delete;

private:
    const int m_file;
};

/// A file of that name, or the one that a link of that name leads to, so that no other process makes one; it goes again
/// unless it is kept. Where none can be made, the save tells why.
class NewFile {
public:
    explicit NewFile(const std::string& name) : m_name(kv::BehindLinks(name))
    {
        const int file = open(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file < 0 && errno == EEXIST) ThrowNotNew(name);
        m_made = file >= 0;
        if (m_made) close(file);
    }
    ~NewFile()
    {
        if (m_made) unlink(m_name.c_str());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void Keep() { m_made = false; }

private:
    const std::string m_name;
    bool m_made = false;
};

std::optional<std::string> ValueOf(const Session& session, const std::string& path)
{
    try {
        return GetMember(session.Project(), path);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

} // namespace

ProjectFile::ProjectFile(Session& session, std::string name)
    : m_session(session), m_name(std::move(name)), m_state(kv::FileState::Of(m_name))
{
    m_session.Load(m_name);
    m_losses = FindLosses(*ParseFile(m_name), m_name);
}

void ProjectFile::Save(const std::string& target, bool force)
{
    const SaveLock lock(target);
    if (!force) RequireNoLoss(target);
    MemberValues values;
    // Before saving, which sets the project's directory.
    for (const std::string& path : m_set)
        values[path] = ValueOf(m_session, path);
    force || kv::FileState::Of(target).Exists() ? m_session.Save(target) : SaveNew(m_session, target);
    m_name = target;
    // What another process may have put there meanwhile is not ours.
    m_state = kv::AtomicFile::LastCommitted();
    m_losses.clear();
    m_saved[target] = std::move(values);
}

bool ProjectFile::TellWhatIsNotHeld() const
{
    bool allHeld = true;
    for (const auto& [file, values] : m_saved) {
        if (values.empty()) continue;
        Session saved;
        saved.Load(file);
        for (const auto& [path, value] : values) {
            if (ValueOf(saved, path) == value) continue;
            std::cerr << "kvproject: " << Shown(file + " does not hold " + path) << '\n';
            allHeld = false;
        }
    }
    return allHeld;
}

void ProjectFile::RequireNoLoss(const std::string& target) const
{
    const kv::FileState state = kv::FileState::Of(target);
    if (!state.Exists()) return;
    if (state == m_state) {
        if (!m_losses.empty()) throw Failure(target + " is not saved: that would lose what was not read; see --force");
    } else if (target == m_name) {
        throw Failure(target + " is not saved: somebody else changed it since it was loaded; see --force");
    } else {
        RequireNew(target);
    }
}

void RequireNew(const std::string& file)
{
    if (kv::FileState::Of(file).Exists()) ThrowNotNew(file);
}

void RequireFolderOf(const std::string& file)
{
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error))
        throw Failure("cannot save " + file + ": there is no folder " + folder.string());
}

void SaveNew(Session& session, const std::string& file)
{
    NewFile made(file);
    session.Save(file);
    made.Keep();
}

} // namespace kvproject
