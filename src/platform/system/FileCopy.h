#pragma once
// Copies of files, for as long as that takes.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"
#include "platform/system/AtomicFile.h"

#include <functional>
#include <string>

namespace kv {

/// A copy of a regular file, which is there as a whole or not at all.
class KV_EXPORT FileCopy {
public:
    FileCopy() = default;
    FileCopy(const FileCopy&) = delete;
    FileCopy& operator=(const FileCopy&) = delete;
    ~FileCopy();

    /// Opens the file to copy, a host path. E_ACCESSDENIED for anything but a regular file, also for a pipe or a
    /// device, of which nothing is read.
    HRESULT Open(const std::string& source);
    /// Of the file when it was opened, in bytes.
    LONGLONG Size() const { return m_size; }

    /// How many bytes of the file have been copied. A failure ends the copy with its result.
    using Progress = std::function<HRESULT(LONGLONG bytes)>;

    /// Copies it beside a name that nothing bears yet, as a clone where the file system makes such, and has the disk
    /// begin with it. The copy goes again unless it gets the name. 0x800700B7 when there is something, which stays as
    /// it is; 0x80070020 when the file changed meanwhile.
    HRESULT CopyTo(const std::string& target, const Progress& progress);
    /// Whether CopyTo failed for the sake of the file that is copied, and not of the place of the copy.
    bool SourceFailed() const { return m_sourceFailed; }

    // What is left to do, best by steps for several copies: a sync of each alone takes longer than to copy it.
    /// Until the disk has what was written. Syncing the copy then costs little, and nearly nothing behind the first.
    HRESULT WaitForDisk();
    HRESULT Sync() { return m_copy.Sync(); }
    /// Syncs all that was written to where the copy is. S_FALSE where each copy is to be synced alone.
    HRESULT SyncFileSystem();
    /// 0x800700B7 when something bears the name by now. The folder is for the caller to sync.
    HRESULT TakeName() { return m_copy.TakeName(); }

private:
    void CloseSource();
    HRESULT CopyContent(int target, const Progress& progress);
    /// The next bytes, by reading and writing. -1 with errno set.
    std::ptrdiff_t CopyByHand(int target);
    bool Changed() const;

    AtomicFile m_copy;
    int m_source = -1;
    LONGLONG m_size = 0;
    struct Stamp {
        LONGLONG seconds = 0;
        LONGLONG nanoseconds = 0;
    } m_modified;
    bool m_sourceFailed = false;
    bool m_byHand = false;
    std::string m_buffer;
};

} // namespace kv
