#include "platform/system/FileState.h"

#include <sys/stat.h>

namespace kv {
namespace {

FileState StateIn(const struct stat& status)
{
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

} // namespace

FileState FileState::Of(const std::string& file)
{
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? StateIn(status) : FileState();
}

FileState FileState::OfOpen(int file)
{
    struct stat status {};
    return fstat(file, &status) == 0 ? StateIn(status) : FileState();
}

} // namespace kv
