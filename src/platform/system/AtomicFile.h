#pragma once
// Writes a file so that it is either there as a whole or as it was before.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <cstddef>
#include <string>

namespace kv {

/// The platform's code for a system error.
KV_EXPORT HRESULT ResultFromErrno(int error);

class KV_EXPORT AtomicFile {
public:
    AtomicFile() = default;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    /// Removes what was not committed.
    ~AtomicFile();

    /// Opens a temporary file in the folder of the target, a host path. E_ACCESSDENIED for a target that the process
    /// may not write.
    HRESULT Create(const std::string& target);
    HRESULT Write(const void* data, std::size_t size);
    /// Syncs the file, gives it the target's name and permissions, and syncs the folder.
    HRESULT Commit();

private:
    void Discard();

    std::string m_target;
    std::string m_temporary;
    int m_file = -1;
};

} // namespace kv
