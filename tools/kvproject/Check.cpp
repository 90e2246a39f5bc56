#include "Check.h"

#include "Losses.h"
#include "Markup.h"
#include "Session.h"
#include "platform/system/Paths.h"

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
    return faults;
}

} // namespace kvproject
