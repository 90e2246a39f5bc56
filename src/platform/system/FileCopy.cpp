#include "platform/system/FileCopy.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>
#include <utility>

namespace kv {
namespace {

/// Between two looks at who may cancel.
constexpr std::size_t kStep = std::size_t{8} << 20;
constexpr std::size_t kBuffer = std::size_t{256} << 10;

/// What the kernel answers where it copies nothing between two files itself, or does not tell which of them failed.
bool IsUnsupported(int error)
{
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EPERM ||
           error == ETXTBSY || error == EIO;
}

} // namespace

FileCopy::~FileCopy()
{
    CloseSource();
}

void FileCopy::CloseSource()
{
    if (m_source >= 0) close(std::exchange(m_source, -1));
}

HRESULT FileCopy::Open(const std::string& source)
{
    CloseSource();
    m_source = open(source.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (m_source < 0) return ResultFromErrno(errno);
    struct stat status {};
    if (fstat(m_source, &status) != 0) return ResultFromErrno(errno);
    if (!S_ISREG(status.st_mode)) {
        CloseSource();
        return E_ACCESSDENIED;
    }
    m_size = status.st_size;
    m_modified = {status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    return S_OK;
}

HRESULT FileCopy::CopyTo(const std::string& target, const Progress& progress)
{
    m_sourceFailed = false;
    if (m_source < 0) return E_UNEXPECTED;
    HRESULT result = m_copy.CreateNew(target);
    if (SUCCEEDED(result)) result = CopyContent(m_copy.Handle(), progress);
    if (SUCCEEDED(result)) CloseSource();
    m_buffer = {};
    return result;
}

HRESULT FileCopy::WaitForDisk()
{
    constexpr unsigned kAll = SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    const bool isWritten = sync_file_range(m_copy.Handle(), 0, 0, kAll) == 0;
    // Its failure is told once, and not again by a sync.
    return isWritten || errno == ENOSYS || errno == EINVAL ? S_OK : ResultFromErrno(errno);
}

HRESULT FileCopy::SyncFileSystem()
{
    // Of others, such as those of a network or of a process, it is not known that this reaches the disk.
    constexpr unsigned kXfs = 0x58465342;
    constexpr unsigned kF2fs = 0xF2F52010;
    constexpr unsigned kExFat = 0x2011BAB0;
    constexpr std::array<unsigned, 7> kLocal{EXT4_SUPER_MAGIC, kXfs,  BTRFS_SUPER_MAGIC, kF2fs, MSDOS_SUPER_MAGIC,
                                             TMPFS_MAGIC,      kExFat};
    struct statfs status {};
    if (fstatfs(m_copy.Handle(), &status) != 0) return S_FALSE;
    if (std::ranges::find(kLocal, static_cast<unsigned>(status.f_type)) == kLocal.end()) return S_FALSE;
    return syncfs(m_copy.Handle()) == 0 ? S_OK : ResultFromErrno(errno);
}

HRESULT FileCopy::CopyContent(int target, const Progress& progress)
{
    const bool isCloned = ioctl(target, FICLONE, m_source) == 0;
    LONGLONG copied = 0;
    if (isCloned) {
        copied = m_size;
        const HRESULT told = progress ? progress(copied) : S_OK;
        if (FAILED(told)) return told;
    }
    lseek(m_source, 0, SEEK_SET);
    while (!isCloned) {
        std::ptrdiff_t step = m_byHand ? -1 : copy_file_range(m_source, nullptr, target, nullptr, kStep, 0);
        // Files that the kernel makes up as they are read have no content for it.
        const bool isRefused =
            m_byHand || (step < 0 && IsUnsupported(errno)) || (step == 0 && (copied < m_size || copied == 0));
        if (isRefused) {
            m_byHand = true;
            step = CopyByHand(target);
        }
        if (step < 0 && errno == EINTR) continue;
        if (step < 0) return ResultFromErrno(errno);
        if (step == 0) break;
        copied += step;
        // One that grows as it is read has no end.
        if (copied > m_size) break;
        const HRESULT told = progress ? progress(copied) : S_OK;
        if (FAILED(told)) return told;
        // The disk works while the rest is read.
        sync_file_range(target, copied - step, step, SYNC_FILE_RANGE_WRITE);
    }
    if (copied == m_size && !Changed()) return S_OK;
    m_sourceFailed = true;
    return ResultFromErrno(EBUSY);
}

std::ptrdiff_t FileCopy::CopyByHand(int target)
{
    m_buffer.resize(kBuffer);
    const ssize_t got = read(m_source, m_buffer.data(), m_buffer.size());
    if (got < 0 && errno != EINTR) m_sourceFailed = true;
    for (ssize_t done = 0; done < got;) {
        const ssize_t put = write(target, m_buffer.data() + done, static_cast<std::size_t>(got - done));
        if (put < 0 && errno != EINTR) return -1;
        done += put < 0 ? 0 : put;
    }
    return got;
}

bool FileCopy::Changed() const
{
    struct stat status {};
    return fstat(m_source, &status) != 0 || status.st_size != m_size || status.st_mtim.tv_sec != m_modified.seconds ||
           status.st_mtim.tv_nsec != m_modified.nanoseconds;
}

} // namespace kv
