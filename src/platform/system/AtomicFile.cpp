#include "platform/system/AtomicFile.h"

#include "platform/system/Paths.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kv {
namespace {

/// How many saves of one target may go on at once.
constexpr int kTemporaries = 8;

thread_local FileState lastCommitted;

/// A name beside the target, made of the target's own as far as there is room, so that the next save finds what one
/// that never ended left behind.
std::string TemporaryName(const std::filesystem::path& target, int number)
{
    constexpr std::size_t kLongest = 240;
    std::string name = target.filename().string();
    if (name.size() > kLongest) {
        std::size_t end = kLongest;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xc0) == 0x80)
            --end;
        name.resize(end);
    }
    return (target.parent_path() / ("." + name + ".save" + std::to_string(number))).string();
}

/// Locks an open file. False when another save holds it, or when the name has gone or stands for another file by now.
bool Own(int file, const std::string& name)
{
    struct stat opened {};
    struct stat named {};
    return flock(file, LOCK_EX | LOCK_NB) == 0 && fstat(file, &opened) == 0 && lstat(name.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// Removes what a save that never ended left under the name; one that goes on holds the lock of its file.
void RemoveAbandoned(const std::string& name)
{
    const int file = open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) return;
    if (Own(file, name)) unlink(name.c_str());
    close(file);
}

/// Creates a file beside the target, with the permissions of any new file, and locks it. -1 on failure, with errno set.
int CreateBeside(const std::string& target, std::string& name)
{
    int file = -1;
    for (int i = 0; i < kTemporaries; ++i) {
        const std::string candidate = TemporaryName(target, i);
        RemoveAbandoned(candidate);
        if (file >= 0) continue;
        file = open(candidate.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file < 0 && errno != EEXIST) return -1;
        if (file >= 0 && !Own(file, candidate)) close(std::exchange(file, -1));
        if (file >= 0) name = candidate;
    }
    if (file < 0) errno = EBUSY;
    return file;
}

/// Gives a new file the owner, the group and the permissions of the one that it replaces. Only root may give a file
/// away, and others only to groups of their own: what is not allowed stays as it is. The rights of a group or of the
/// bearer of either name then go to nobody else.
HRESULT TakeAfter(int file, const struct stat& existing)
{
    if (fchown(file, existing.st_uid, existing.st_gid) != 0 && errno == EPERM &&
        fchown(file, static_cast<uid_t>(-1), existing.st_gid) != 0 && errno != EPERM) {
        return ResultFromErrno(errno);
    }
    struct stat status {};
    if (fstat(file, &status) != 0) return ResultFromErrno(errno);
    mode_t mode = existing.st_mode & 07777;
    if (status.st_uid != existing.st_uid) mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    if (status.st_gid != existing.st_gid) mode &= ~static_cast<mode_t>(S_IRWXG | S_ISUID | S_ISGID);
    return fchmod(file, mode) == 0 ? S_OK : ResultFromErrno(errno);
}

/// As rename, but not over anything. -1 on failure, with errno set.
int RenameToNew(const std::string& from, const std::string& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    // Some file systems cannot tell; a second name takes no other's place either.
    if (link(from.c_str(), to.c_str()) != 0) return -1;
    unlink(from.c_str());
    return 0;
}

} // namespace

HRESULT ResultFromErrno(int error)
{
    switch (error) {
    case ENOENT:
        return MakeResult(0x80070002); // file not found
    case ENOTDIR:
        return MakeResult(0x80070003); // path not found
    case EMFILE:
    case ENFILE:
        return MakeResult(0x80070004); // too many open files
    case EACCES:
    case EPERM:
    case EISDIR:
        return E_ACCESSDENIED;
    case ENOMEM:
        return E_OUTOFMEMORY;
    case EROFS:
        return MakeResult(0x80070013); // write protected
    case ENOSPC:
    case EDQUOT:
        return MakeResult(0x80070070); // disk full
    case EBUSY:
        return MakeResult(0x80070020); // in use
    case EEXIST:
        return MakeResult(0x800700B7); // already exists
    case ENAMETOOLONG:
        return MakeResult(0x800700CE); // name too long
    case EFBIG:
        return MakeResult(0x800700DF); // file too large
    case EIO:
        return MakeResult(0x8007045D); // device error
    default:
        return E_FAIL;
    }
}

void SyncFolder(const std::string& folder)
{
    const int file = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return;
    // What got a name has it whether or not the folder can be synced.
    fsync(file);
    close(file);
}

AtomicFile::~AtomicFile()
{
    Discard();
}

void AtomicFile::Discard()
{
    if (!m_temporary.empty()) unlink(std::exchange(m_temporary, {}).c_str());
    if (m_file >= 0) close(std::exchange(m_file, -1));
}

HRESULT AtomicFile::Create(const std::string& target)
{
    Discard();
    m_isNew = false;
    m_target = BehindLinks(target);
    struct stat existing {};
    const bool exists = stat(m_target.c_str(), &existing) == 0;
    // A folder cannot be replaced; a pipe or a device would become a file.
    if (exists && !S_ISREG(existing.st_mode)) return E_ACCESSDENIED;
    // The folder alone decides whether a file can be renamed over another; its own protection is to hold as well.
    if (faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT) return ResultFromErrno(errno);
    const HRESULT opened = Open();
    return SUCCEEDED(opened) && exists ? TakeAfter(m_file, existing) : opened;
}

HRESULT AtomicFile::CreateNew(const std::string& target)
{
    Discard();
    m_isNew = true;
    m_target = target;
    struct stat existing {};
    if (lstat(target.c_str(), &existing) == 0) return ResultFromErrno(EEXIST);
    return Open();
}

HRESULT AtomicFile::Open()
{
    std::string temporary;
    m_file = CreateBeside(m_target, temporary);
    if (m_file < 0) return ResultFromErrno(errno);
    m_temporary = std::move(temporary);
    return S_OK;
}

HRESULT AtomicFile::Write(const void* data, std::size_t size)
{
    if (m_file < 0) return E_UNEXPECTED;
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = write(m_file, next, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return ResultFromErrno(errno);
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return S_OK;
}

HRESULT AtomicFile::Commit()
{
    HRESULT result = Sync();
    if (SUCCEEDED(result)) result = TakeName();
    if (SUCCEEDED(result)) SyncFolder(std::filesystem::path(m_target).parent_path().string());
    return result;
}

HRESULT AtomicFile::Sync()
{
    if (m_file < 0) return E_UNEXPECTED;
    return fsync(m_file) == 0 ? S_OK : ResultFromErrno(errno);
}

HRESULT AtomicFile::TakeName()
{
    if (m_file < 0) return E_UNEXPECTED;
    const FileState state = FileState::OfOpen(m_file);
    const int renamed = m_isNew ? RenameToNew(m_temporary, m_target) : rename(m_temporary.c_str(), m_target.c_str());
    if (renamed != 0) return ResultFromErrno(errno);
    m_temporary.clear();
    lastCommitted = state;
    // The lock goes with the temporary name, not before it.
    close(std::exchange(m_file, -1));
    return S_OK;
}

FileState AtomicFile::LastCommitted()
{
    return lastCommitted;
}

} // namespace kv
