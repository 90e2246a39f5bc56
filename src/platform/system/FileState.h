#pragma once
// How files that bear one name after the other are told apart.

#include "platform/com/Export.h"

#include <ctime>
#include <string>
#include <sys/types.h>

namespace kv {

/// Which file it is, and when it was written. Another name leaves it as it is.
struct KV_EXPORT FileState {
    dev_t device = 0;
    ino_t file = 0;
    off_t size = 0;
    std::time_t seconds = 0;
    long nanoseconds = 0;

    bool operator==(const FileState&) const = default;
    bool Exists() const { return *this != FileState(); }

    /// That of no file where there is none.
    static FileState Of(const std::string& file);
    static FileState OfOpen(int file);
};

} // namespace kv
