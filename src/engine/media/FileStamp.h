#pragma once
// A file as it stands.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace kv {

/// Its path, and what changes when it is written anew.
struct FileStamp {
    std::string path;
    std::int64_t modified = 0;
    std::int64_t size = 0;
    std::uint64_t node = 0;

    bool operator<(const FileStamp& other) const
    {
        return std::tie(path, modified, size, node) < std::tie(other.path, other.modified, other.size, other.node);
    }
    bool operator==(const FileStamp&) const = default;
};

/// Nothing where there is none.
std::optional<FileStamp> StampOf(std::u16string_view path);

} // namespace kv
