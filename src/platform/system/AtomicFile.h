#pragma once
// Writes a file so that it is either there as a whole or as it was before.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"
#include "platform/system/FileState.h"

#include <cstddef>
#include <string>

namespace kv {

/// The platform's code for a system error.
KV_EXPORT HRESULT ResultFromErrno(int error);

/// Has the names that stand in a folder on the disk, as far as its file system can.
KV_EXPORT void SyncFolder(const std::string& folder);

class KV_EXPORT AtomicFile {
public:
    AtomicFile() = default;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    /// Removes what was not committed.
    ~AtomicFile();

    /// Opens a temporary file in the folder of the target, a host path, or of the file behind it when it is a link, and
    /// removes those that earlier saves of it could not. E_ACCESSDENIED for a target that the process may not write or
    /// that is no regular file; 0x80070020 when too many others are saving it.
    HRESULT Create(const std::string& target);
    /// The same for a name that nothing bears yet, which it does not follow as a link. 0x800700B7 when there is
    /// something.
    HRESULT CreateNew(const std::string& target);
    HRESULT Write(const void* data, std::size_t size);
    /// The open file, for the system's own calls; -1 without one.
    int Handle() const { return m_file; }
    /// Syncs the file, gives it the target's name, and syncs the folder. Permissions are those of the file that it
    /// replaces; so are owner and group, as far as the process may give them. A new file replaces none: 0x800700B7 when
    /// something bears its name by now.
    HRESULT Commit();
    /// The same by steps, for several files that are to share the cost: all are synced, then all get their names, and
    /// then their folders are synced.
    HRESULT Sync();
    HRESULT TakeName();

    /// The file that this thread committed last, as it was when it got its name: whatever bears the name by now.
    static FileState LastCommitted();

private:
    void Discard();
    HRESULT Open();

    std::string m_target;
    std::string m_temporary;
    bool m_isNew = false;
    int m_file = -1;
};

} // namespace kv
