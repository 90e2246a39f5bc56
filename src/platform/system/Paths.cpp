#include "platform/system/Paths.h"

#include "platform/automation/Bstr.h"
#include "platform/system/AtomicFile.h"

#include <algorithm>
#include <climits>
#include <filesystem>

namespace kv {
namespace {

constexpr std::u16string_view kSeparators = u"\\/";

bool Exists(const std::string& path)
{
    std::error_code error;
    return std::filesystem::exists(path, error);
}

HRESULT ResultFrom(const std::error_code& error)
{
    return error ? ResultFromErrno(error.value()) : S_OK;
}

/// Where the last component starts.
std::size_t FileNameStart(std::u16string_view path)
{
    const std::size_t separator = path.find_last_of(kSeparators);
    return separator == path.npos ? 0 : separator + 1;
}

} // namespace

std::string ToHostPath(std::u16string_view path)
{
    std::string host = ToUtf8(path);
    if (host.find('\\') == host.npos) return host;
    // What exists by the name as it stands is kept so; nothing exists by a name that is too long.
    std::size_t kept = host.size() < PATH_MAX ? host.size() : 0;
    while (kept > 0 && !Exists(host.substr(0, kept))) {
        const std::size_t separator = host.find_last_of("\\/", kept - 1);
        kept = separator == host.npos ? 0 : separator;
    }
    std::replace(host.begin() + static_cast<std::ptrdiff_t>(kept), host.end(), '\\', '/');
    return host;
}

bool PathFileExists(std::u16string_view path)
{
    return !path.empty() && path.find(u'\0') == path.npos && Exists(ToHostPath(path));
}

bool PathIsDirectory(std::u16string_view path)
{
    std::error_code error;
    return PathFileExists(path) && std::filesystem::is_directory(ToHostPath(path), error);
}

std::u16string PathAppend(std::u16string_view path, std::u16string_view more)
{
    std::u16string joined(path);
    while (!more.empty() && !path.empty() && kSeparators.find(more.front()) != more.npos)
        more.remove_prefix(1);
    if (!joined.empty() && kSeparators.find(joined.back()) == kSeparators.npos) {
        joined += joined.find(u'/') != joined.npos ? u'/' : u'\\';
    }
    return joined.append(more);
}

std::u16string PathRemoveFileSpec(std::u16string_view path)
{
    const std::size_t start = FileNameStart(path);
    // The separator of a root belongs to the root.
    return std::u16string(path.substr(0, start > 1 ? start - 1 : start));
}

std::u16string PathRemoveExtension(std::u16string_view path)
{
    const std::size_t dot = path.rfind(u'.');
    return std::u16string(dot == path.npos || dot < FileNameStart(path) ? path : path.substr(0, dot));
}

std::u16string PathFindFileName(std::u16string_view path)
{
    return std::u16string(path.substr(FileNameStart(path)));
}

HRESULT CreateDirectoryTree(std::u16string_view path)
{
    std::error_code error;
    const std::string folder = ToHostPath(path);
    if (std::filesystem::create_directories(folder, error) || error) return ResultFrom(error);
    return ResultFromErrno(EEXIST);
}

std::string BehindLinks(const std::string& target)
{
    constexpr int kMostLinks = 40;
    std::filesystem::path path = target;
    std::error_code error;
    for (int i = 0; i < kMostLinks; ++i) {
        const std::filesystem::path next = std::filesystem::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / next;
    }
    return path.string();
}

std::u16string TemporaryFolder()
{
    std::error_code error;
    std::u16string folder = ToUtf16(std::filesystem::temp_directory_path(error).string());
    if (!folder.empty() && folder.back() != u'/') folder += u'/';
    return folder;
}

std::u16string HostFolder()
{
    std::error_code error;
    return ToUtf16(std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string());
}

} // namespace kv
