#pragma once
// Which clips a folder or a playlist names, and in which order.

#include <optional>
#include <string>
#include <vector>

namespace kv {

struct ListedClip {
    /// A path, or what stands in the playlist where that is none.
    std::u16string path;
    /// What the playlist calls it; empty where it does not.
    std::u16string label;
};

/// What stands in a folder, whatever it is, but for what is hidden, by their names: numbers in them count as numbers.
/// Nothing for what is no folder.
std::optional<std::vector<ListedClip>> ClipsInFolder(const std::string& folder);

/// The entries of an M3U playlist, in UTF-8, UTF-16 with a mark, or else in Latin-1. Paths lead from its folder.
/// Nothing for a file that is no playlist: by its name ("….m3u", "….m3u8") or its first line ("#EXTM3U").
std::optional<std::vector<ListedClip>> ClipsInPlaylist(const std::string& file);

} // namespace kv
