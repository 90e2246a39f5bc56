#include "platform/system/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kv {
namespace {

/// Creates a file beside the target, with the permissions of any new file. -1 on failure, with errno set. Its name is
/// short, whatever the target's: that may be as long as the file system allows.
int CreateBeside(const std::string& target, std::string& name)
{
    const std::filesystem::path folder = std::filesystem::path(target).parent_path();
    std::random_device random;
    int file = -1;
    do {
        name = (folder / (".save." + std::to_string(random()))).string();
        file = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (file < 0 && errno == EEXIST);
    return file;
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

AtomicFile::~AtomicFile()
{
    Discard();
}

void AtomicFile::Discard()
{
    if (m_file >= 0) close(std::exchange(m_file, -1));
    if (!m_temporary.empty()) unlink(std::exchange(m_temporary, {}).c_str());
}

HRESULT AtomicFile::Create(const std::string& target)
{
    Discard();
    // A link is followed, so that the file behind it is the one that is replaced.
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(target, error);
    m_target = error ? target : real.string();
    // The folder alone decides whether a file can be renamed over another; its own protection is to hold as well.
    if (faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT) return ResultFromErrno(errno);
    std::string temporary;
    m_file = CreateBeside(m_target, temporary);
    if (m_file < 0) return ResultFromErrno(errno);
    m_temporary = std::move(temporary);

    struct stat existing {};
    const bool exists = stat(m_target.c_str(), &existing) == 0;
    return exists && fchmod(m_file, existing.st_mode & 07777) != 0 ? ResultFromErrno(errno) : S_OK;
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
    if (m_file < 0) return E_UNEXPECTED;
    if (fsync(m_file) != 0 || close(std::exchange(m_file, -1)) != 0) return ResultFromErrno(errno);
    if (rename(m_temporary.c_str(), m_target.c_str()) != 0) return ResultFromErrno(errno);
    m_temporary.clear();
    const std::string folder = std::filesystem::path(m_target).parent_path().string();
    const int folderFile = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFile >= 0) {
        // The file is in place whether or not the folder can be synced.
        fsync(folderFile);
        close(folderFile);
    }
    return S_OK;
}

} // namespace kv
