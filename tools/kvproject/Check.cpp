#include "Check.h"

#include "Losses.h"
#include "Markup.h"
#include "Session.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace kvproject {
namespace {

using kv::ComPtr;

void FindDoubleIds(const Element& element, const std::string& path, std::set<ULONG>& seen,
                   std::vector<std::string>& faults)
{
    const auto attributes = element.Attributes();
    const auto text = attributes.find("ID");
    const auto id = text == attributes.end() ? std::nullopt : ReadId(text->second);
    if (id && *id != 0 && !seen.insert(*id).second) {
        faults.push_back(path + ": the ID " + text->second + " is used twice");
    }
    ForEachChild(element, path, [&](const Element& child, const std::string& childPath) {
        FindDoubleIds(child, childPath, seen, faults);
    });
}

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

void FindDestinations(IKVProjectData& project, std::vector<std::string>& faults)
{
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i) {
        kv::Bstr text;
        file->get_DestPath(text.Put());
        const std::string destination = kv::ToUtf8(text.View());
        if (LeavesDisc(destination)) {
            faults.push_back("dataFiles[" + std::to_string(i) + "]: the destination " + destination +
                             " leads out of the disc");
        }
    }
}

void FindMissingFiles(IKVProjectData& project, std::vector<std::string>& faults)
{
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i) {
        kv::Bstr source;
        file->get_SourcePath(source.Put());
        if (source.Empty()) {
            faults.push_back("dataFiles[" + std::to_string(i) + "] has no source");
        } else if (!kv::PathFileExists(source.View())) {
            faults.push_back("dataFiles[" + std::to_string(i) + "]: the file " + kv::ToUtf8(source.View()) +
                             " is missing");
        }
    }
}

} // namespace

std::vector<std::string> CheckFile(const std::string& file)
{
    std::vector<std::string> faults = FindUnread(file);
    std::set<ULONG> seen;
    ForEachChild(RootOf(*ParseFile(file)), {}, [&](const Element& child, const std::string& path) {
        // The IDs of productions are the host's.
        if (child.Name() != kProductionsElement) FindDoubleIds(child, path, seen, faults);
    });
    Session session;
    session.Load(file);
    FindMissingFiles(session.Project(), faults);
    FindDestinations(session.Project(), faults);
    return faults;
}

} // namespace kvproject
