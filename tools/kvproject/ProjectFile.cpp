#include "ProjectFile.h"

#include "Failure.h"
#include "Losses.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kvproject {
namespace {

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

} // namespace

FileState FileState::Of(const std::string& file)
{
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

ProjectFile::ProjectFile(Session& session, std::string name)
    : m_session(session), m_name(std::move(name)), m_state(FileState::Of(m_name))
{
    m_session.Load(m_name);
    m_losses = FindLosses(m_name);
}

void ProjectFile::Save(const std::string& target, bool force)
{
    const SaveLock lock(target);
    if (!force) RequireNoLoss(target);
    m_session.Save(target);
    m_name = target;
    m_state = FileState::Of(target);
    m_losses.clear();
}

void ProjectFile::RequireNoLoss(const std::string& target) const
{
    const FileState state = FileState::Of(target);
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
    if (FileState::Of(file).Exists()) throw Failure(file + " is not saved: the file exists already; see --force");
}

} // namespace kvproject
