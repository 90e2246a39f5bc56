#include "engine/media/FileStamp.h"

#include "platform/system/Paths.h"

#include <sys/stat.h>

namespace kv {

std::optional<FileStamp> StampOf(std::u16string_view path)
{
    FileStamp stamp{ToHostPath(path)};
    struct stat status {};
    if (stat(stamp.path.c_str(), &status) != 0) return std::nullopt;
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    stamp.modified = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec;
    stamp.size = status.st_size;
    stamp.node = status.st_ino;
    return stamp;
}

} // namespace kv
