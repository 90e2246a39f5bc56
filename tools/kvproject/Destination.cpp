#include "Destination.h"

#include <algorithm>
#include <filesystem>

namespace kvproject {
namespace {

/// Whether a path on the disc, with either separator, leads out of the disc or names a place of its own.
bool LeavesDisc(std::string path)
{
    std::ranges::replace(path, '\\', '/');
    if (path.starts_with('/') || (path.size() > 1 && path[1] == ':')) return true;
    int depth = 0;
    for (const auto& part : std::filesystem::path(path)) {
        if (part == "..") --depth;
        if (part != ".." && part != "." && !part.empty()) ++depth;
        if (depth < 0) return true;
    }
    return false;
}

} // namespace

std::string DestinationFault(const std::string& destination)
{
    if (destination.empty()) return "the destination is empty";
    return LeavesDisc(destination) ? "the destination " + destination + " leads out of the disc" : "";
}

} // namespace kvproject
