#include "Check.h"

#include "Destination.h"
#include "Failure.h"
#include "Losses.h"
#include "Markup.h"
#include "MediaFiles.h"
#include "MenuCheck.h"
#include "Session.h"
#include "Storyboard.h"

#include <optional>
#include <set>
#include <utility>

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

void FindDestinations(IKVProjectData& project, std::vector<std::string>& faults)
{
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i) {
        kv::Bstr text;
        file->get_DestPath(text.Put());
        const std::string fault = DestinationFault(kv::ToUtf8(text.View()));
        if (!fault.empty()) faults.push_back("dataFiles[" + std::to_string(i) + "]: " + fault);
    }
}

void FindMissingFiles(IKVProjectData& project, MediaFiles& files, std::vector<std::string>& faults)
{
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i) {
        kv::Bstr source;
        file->get_SourcePath(source.Put());
        const std::string path = "dataFiles[" + std::to_string(i) + "]";
        if (source.Empty()) {
            faults.push_back(path + " has no source");
        } else if (const std::string fault = files.Fault(source.View(), true); !fault.empty()) {
            faults.push_back(path + ": the file " + kv::ToUtf8(source.View()) + ' ' + fault);
            files.Told(source.View());
        }
    }
}

/// "title:3", but neither a path nor a drive.
bool IsMoniker(std::string_view source)
{
    const std::size_t colon = source.find(':');
    return colon != source.npos && colon > 1 && source.find_first_of("/\\") > colon;
}

/// Neither from a root nor with a drive or a macro in front.
bool IsRelative(std::string_view path)
{
    const std::string_view first = path.substr(0, path.find_first_of("/\\"));
    return !first.empty() && first.front() != '%' && first.find(':') == first.npos;
}

/// 0 for none, and for what is none.
ULONG IdOf(const Element& element, const std::string& attribute)
{
    const auto attributes = element.Attributes();
    const auto text = attributes.find(attribute);
    return text == attributes.end() ? 0 : ReadId(text->second).value_or(0);
}

/// What stands among the productions of a file.
class ProductionCheck {
public:
    ProductionCheck(const Session& session, const std::string& file, const Element& project, MediaFiles& files,
                    std::vector<std::string>& faults)
        : m_session(session), m_folder(file.substr(0, file.find_last_of('/') + 1)), m_files(files), m_faults(faults)
    {
        ForEachChild(project, {}, [this](const Element& list, const std::string& path) {
            if (list.Name() == "Titles") CollectOwners(list, path, "Title");
            if (list.Name() == "Menus") CollectOwners(list, path, "Menu");
        });
    }

    void Run(const Element& productions, const std::string& path)
    {
        ForEachChild(productions, path, [this](const Element& child, const std::string& childPath) {
            if (child.Name() == "Production") CheckProduction(child, childPath);
        });
    }

    /// Files of menus, which tell what they show by themselves: only what they have not told.
    void TellFaultyInMenus()
    {
        for (const auto& [file, fault] : m_faultyInMenus) {
            if (!m_files.IsTold(file)) m_faults.push_back(fault);
        }
    }

private:
    void CollectOwners(const Element& list, const std::string& path, std::string_view kind)
    {
        ForEachChild(list, path, [&](const Element& owner, const std::string&) {
            if (owner.Name() != kind) return;
            // A native menu has a production for its background alone.
            const bool isNative = kind == "Menu" && IdOf(owner, "native") != 0;
            m_owners.emplace(IdOf(owner, "ID"), isNative ? "Background" : "Storyboard");
            if (kind == "Menu") m_menus.insert(IdOf(owner, "ID"));
        });
    }

    void CheckProduction(const Element& production, const std::string& path)
    {
        std::optional<Element> storyboard;
        std::string storyboardPath;
        ForEachChild(production, path, [&](const Element& child, const std::string& childPath) {
            if (child.Name() != "Storyboard" || storyboard) return;
            storyboard = child;
            storyboardPath = childPath;
        });
        const ULONG owner = IdOf(production, "ownerID");
        const auto attributes = production.Attributes();
        const auto which = attributes.find("name");
        // Of owners that share an ID one without a production leaves an entry that holds nothing.
        const std::string name = which == attributes.end() ? std::string() : which->second;
        const bool isPlace = !storyboard && production.Children().empty() && m_owners.count({owner, name}) > 1;
        if (owner == 0 || which == attributes.end() || !(storyboard || isPlace)) {
            m_faults.push_back(path + ": no production that can be loaded");
            return;
        }
        const auto found = m_owners.find({owner, name});
        if (name != "Storyboard" && name != "Background") {
            m_faults.push_back(path + ": neither titles nor menus have a production of the name " + name);
        } else if (found == m_owners.end()) {
            const char* kind = name == "Storyboard" ? "title or menu" : "native menu";
            m_faults.push_back(path + ": there is no " + kind + " of the ID " + std::to_string(owner) + " for it");
        } else {
            m_owners.erase(found);
        }
        if (!storyboard) return;
        const HRESULT read = TryStoryboard(storyboard->Node().Get());
        if (FAILED(read)) m_faults.push_back(storyboardPath + ": " + Describe(read, "the engine does not read it"));
        ForEachChild(*storyboard, storyboardPath, [this, owner](const Element& part, const std::string& partPath) {
            for (const auto& [attribute, value] : part.Attributes()) {
                if (attribute == "source" || attribute == "mask") CheckMedia(value, partPath, m_menus.contains(owner));
            }
        });
    }

    void CheckMedia(const std::string& source, const std::string& path, bool isOfMenu)
    {
        if (IsMoniker(source)) return;
        kv::Bstr file = m_session.Resolved(source);
        // Relative paths are tried from the folder of the project's file.
        const kv::Bstr beside(kv::ToUtf16(m_folder + source));
        if (IsRelative(source) && m_files.KindOf(beside.View()) != FileKind::Missing) file = beside;
        const std::string fault = m_files.Fault(file.View());
        if (fault.empty()) return;
        std::string sentence = path + ": the file " + kv::ToUtf8(file.View()) + ' ' + fault;
        if (isOfMenu) {
            m_faultyInMenus.emplace_back(file.View(), std::move(sentence));
        } else {
            m_faults.push_back(std::move(sentence));
        }
    }

    const Session& m_session;
    /// Of the file, with its separator; empty for the working folder.
    const std::string m_folder;
    MediaFiles& m_files;
    /// The titles and menus whose production was not met yet, by ID, with its name.
    std::multiset<std::pair<ULONG, std::string>> m_owners;
    std::set<ULONG> m_menus;
    /// The file, and what is told of it.
    std::vector<std::pair<std::u16string, std::string>> m_faultyInMenus;
    std::vector<std::string>& m_faults;
};

} // namespace

std::vector<std::string> CheckFile(const std::string& file)
{
    Session session;
    session.Load(file);
    const auto document = ParseFile(file);
    std::vector<std::string> faults = FindLosses(*document, file);
    std::set<ULONG> seen;
    MediaFiles files;
    ProductionCheck productions(session, file, Element(FindProject(*document)), files, faults);
    bool firstProductions = true;
    ForEachChild(RootOf(*document), {}, [&](const Element& child, const std::string& path) {
        // Productions have no IDs of their own.
        if (child.Name() != kProductionsElement) {
            FindDoubleIds(child, path, seen, faults);
        } else if (std::exchange(firstProductions, false)) {
            productions.Run(child, path);
        } else {
            faults.push_back(path + ": further productions, which are not loaded");
        }
    });
    FindMissingFiles(session.Project(), files, faults);
    FindDestinations(session.Project(), faults);
    FindMenuFaults(session.Project(), files, faults);
    productions.TellFaultyInMenus();
    return faults;
}

} // namespace kvproject
