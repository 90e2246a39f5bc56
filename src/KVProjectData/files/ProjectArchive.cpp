#include "KVProjectData/files/ProjectArchive.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/content/ContentPaths.h"
#include "KVProjectData/files/ProjectProductions.h"
#include "KVProjectData/menus/MenuPaths.h"
#include "KVProjectData/persistence/ProjectDocument.h"
#include "KVProjectData/project/ProjectStoryboards.h"
#include "platform/system/AtomicFile.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace kv {
namespace {

/// Hears of every path that a project file would name, in its order.
class Listener final : public FilePlace {
public:
    Listener(std::u16string_view fileName, const std::function<void(std::u16string_view)>& hear)
        : FilePlace(fileName), m_hear(hear)
    {
    }

    std::optional<std::u16string> ToFile(std::u16string_view path) override
    {
        m_hear(path);
        return std::nullopt;
    }

private:
    const std::function<void(std::u16string_view)>& m_hear;
};

/// Whether a name is for the engine to follow, and no path: it has a scheme of two or more characters.
bool IsMoniker(std::u16string_view name)
{
    const std::size_t colon = name.find(u':');
    return colon != name.npos && colon >= 2 && name.find_first_of(u"\\/") > colon;
}

} // namespace

ProjectArchive::ProjectArchive(IKVProjectData& project, std::u16string_view fileName, IKVArchiveEvents* events)
    : m_project(project),
      m_fileName(fileName),
      m_folderName(ArchiveFolder(fileName)),
      m_folder(ArchiveFolder(FullPath(fileName))),
      m_events(events),
      m_place(fileName)
{
    ThrowIfFailed(project.get_ProjectDirectory(m_directory.Put()));
    m_place.SetProjectDirectory(m_directory.View());
    if (const auto storyboards = Query<IProjectStoryboards>(&project)) m_place.SetNames(storyboards->Names());
}

std::u16string ProjectArchive::Full(std::u16string_view path) const
{
    if (auto found = m_place.FromProject(path)) return std::move(*found);
    return PathFileExists(path) ? ToUtf16(ToHostPath(FullPath(path))) : std::u16string(path);
}

void ProjectArchive::AddSource(std::u16string_view text)
{
    // Productions that are not loaded name files as documents do.
    const std::u16string path = SharedContentPaths()->Resolve(text);
    if (path.empty() || (IsMoniker(path) && !PathFileExists(path))) return;
    std::u16string full = Full(path);
    if (!m_positions.emplace(full, m_sources.size()).second) return;
    Source& source = m_sources.emplace_back();
    source.full = std::move(full);
    source.copy = m_folder + u'/' + PathFindFileName(source.full);
}

void ProjectArchive::Gather()
{
    const auto storyboards = Query<IProjectStoryboards>(&m_project);
    if (storyboards) {
        CArchiveHelper helper;
        helper.Visit(storyboards->Node(), 0);
        m_properties = std::move(helper.properties);
        for (MediaProperty& property : m_properties) {
            property.full = Full(property.path.View());
            AddSource(property.path.View());
        }
    }
    // What productions show, and the audio of menus.
    const std::function<void(std::u16string_view)> hear = [this](std::u16string_view path) {
        // The picture that effects begin with is named by nobody, and a part of every installation.
        const auto content = SharedContentPaths();
        if (content->Resolve(path) != content->Resolve(kPlaceHolder)) AddSource(path);
    };
    const Listener listener(m_fileName, hear);
    XmlMarkup markup(1);
    XmlStandIns productions;
    SaveWithProductions(m_project, XmlElement::New("Root"), markup, productions);
    for (Source& source : m_sources)
        Classify(source);
}

void ProjectArchive::Classify(Source& source) const
{
    struct stat status {};
    struct stat there {};
    source.size = 0;
    if (!PathFileExists(source.full) || stat(ToHostPath(source.full).c_str(), &status) != 0) {
        source.outcome = ArchivedFile_Missing;
    } else if (!S_ISREG(status.st_mode)) {
        source.outcome = ArchivedFile_NoFile;
    } else {
        source.size = status.st_size;
        const bool isTaken = lstat(HostCopy(source).c_str(), &there) == 0;
        const bool isSame = isTaken && there.st_dev == status.st_dev && there.st_ino == status.st_ino;
        source.outcome = isSame ? ArchivedFile_InPlace : isTaken ? ArchivedFile_NameTaken : ArchivedFile_Copied;
    }
}

void ProjectArchive::Tell(const Source& source) const
{
    if (!m_events) return;
    ThrowIfFailed(
        m_events->OnFile(Bstr(source.full).Get(), Bstr(source.copy).Get(), source.outcome, source.result, source.size));
}

void ProjectArchive::Start()
{
    // Of those of one name only the first is copied.
    LONGLONG bytes = 0;
    std::set<std::u16string_view> names;
    for (const Source& source : m_sources) {
        if (source.outcome == ArchivedFile_Copied && names.insert(source.copy).second) bytes += source.size;
    }
    if (m_events) ThrowIfFailed(m_events->OnStart(static_cast<LONG>(m_sources.size()), bytes));
}

void ProjectArchive::Plan()
{
    Gather();
    Start();
    for (Source& source : m_sources) {
        const bool isCopied = source.outcome == ArchivedFile_Copied;
        if (isCopied && !m_names.insert(source.copy).second) source.outcome = ArchivedFile_NameTaken;
        Tell(source);
    }
}

void ProjectArchive::MakeFolder()
{
    std::filesystem::path missing = ToHostPath(m_folder);
    std::error_code error;
    while (!missing.empty() && !std::filesystem::exists(missing, error)) {
        m_folders.push_back(missing.string());
        missing = missing.parent_path();
    }
    constexpr HRESULT kExists = MakeResult(0x800700B7);
    const HRESULT made = CreateDirectoryTree(m_folderName);
    if ((FAILED(made) && made != kExists) || !PathIsDirectory(m_folderName)) throw Error(KV_E_NO_ARCHIVE_FOLDER);
}

HRESULT ProjectArchive::CopyBeside(Source& source)
{
    Pending& pending = m_pending.emplace_back();
    pending.source = &source;
    FileCopy& file = pending.copy;
    const HRESULT opened = file.Open(ToHostPath(source.full));
    HRESULT cancelled = S_OK;
    HRESULT result = opened;
    if (SUCCEEDED(opened)) {
        const Bstr name(source.full);
        result = file.CopyTo(HostCopy(source), [&](LONGLONG bytes) {
            return cancelled = m_events ? m_events->OnProgress(name.Get(), m_done + bytes) : S_OK;
        });
    }
    if (SUCCEEDED(result)) {
        m_done += file.Size();
        m_names.insert(source.copy);
        return S_OK;
    }
    const bool isSources = FAILED(opened) || file.SourceFailed() || result == ResultFromErrno(ENAMETOOLONG);
    m_pending.pop_back();
    ThrowIfFailed(cancelled);
    if (result == ResultFromErrno(EMFILE)) return result;
    if (result == ResultFromErrno(EEXIST)) {
        source.outcome = ArchivedFile_NameTaken;
        return S_OK;
    }
    if (!isSources) return result;
    source.outcome = ArchivedFile_NotRead;
    source.result = result;
    return S_OK;
}

void ProjectArchive::Copy(Source& source)
{
    Classify(source);
    if (source.outcome == ArchivedFile_Copied && m_names.contains(source.copy)) source.outcome = ArchivedFile_NameTaken;
    if (source.outcome != ArchivedFile_Copied) return;
    HRESULT result = CopyBeside(source);
    // Of what a process may open, or of names beside one that is very long, the copies before it hold their share.
    if ((result == ResultFromErrno(EMFILE) || result == ResultFromErrno(EBUSY)) && !m_pending.empty()) {
        Settle();
        result = CopyBeside(source);
    }
    ThrowIfFailed(result);
    constexpr std::size_t kMostPending = 200;
    if (m_pending.size() >= kMostPending) Settle();
}

void ProjectArchive::Settle()
{
    for (Pending& pending : m_pending) {
        ThrowIfFailed(pending.copy.WaitForDisk());
        if (m_events) ThrowIfFailed(m_events->OnProgress(Bstr(pending.source->full).Get(), m_done));
    }
    // A sync of everything may have to wait for what others write, and each of many has its price.
    constexpr std::size_t kFew = 8;
    const HRESULT synced = m_pending.size() > kFew ? m_pending.front().copy.SyncFileSystem() : S_FALSE;
    ThrowIfFailed(synced);
    for (Pending& pending : m_pending) {
        if (synced == S_FALSE) ThrowIfFailed(pending.copy.Sync());
    }
    for (Pending& pending : m_pending) {
        const HRESULT named = pending.copy.TakeName();
        if (SUCCEEDED(named)) {
            m_copies.push_back(HostCopy(*pending.source));
        } else if (named == ResultFromErrno(EEXIST)) {
            pending.source->outcome = ArchivedFile_NameTaken;
        } else {
            throw Error(named);
        }
    }
    if (!m_pending.empty()) SyncFolder(ToHostPath(m_folder));
    m_pending.clear();
}

void ProjectArchive::TellUpTo(const Source& last)
{
    while (m_told <= static_cast<std::size_t>(&last - m_sources.data()))
        Tell(m_sources[m_told++]);
}

bool ProjectArchive::IsArchived(std::u16string_view full) const
{
    const auto found = m_positions.find(full);
    if (found == m_positions.end()) return false;
    const ArchivedFile outcome = m_sources[found->second].outcome;
    return outcome == ArchivedFile_Copied || outcome == ArchivedFile_InPlace;
}

void ProjectArchive::PointAtCopies()
{
    const std::u16string folder = PathFindFileName(m_folder);
    for (const MediaProperty& property : m_properties) {
        if (property.isShown) continue;
        // A relative path of the project without a copy leads to nothing from here.
        const bool isArchived = IsArchived(property.full);
        if (!isArchived && !m_place.FromProject(property.path.View())) continue;
        const Bstr path(isArchived ? PathAppend(folder, PathFindFileName(property.full)) : property.full);
        if (isArchived) m_place.Know(path.View(), m_folder + u'/' + PathFindFileName(property.full));
        m_replaced.emplace_back(&property, path);
    }
    m_place.SetProjectDirectory(m_folder);
    // Whoever is told of the paths finds the copies.
    if (const auto storyboards = Query<IProjectStoryboards>(&m_project)) storyboards->KeepNames(m_place.Names());
    for (const auto& [property, path] : m_replaced)
        property->Replace(property->path, path);
}

void ProjectArchive::TakeBack() noexcept
{
    m_pending.clear();
    for (const auto& [property, path] : m_replaced)
        property->Replace(path, property->path);
    m_project.put_ProjectDirectory(m_directory.Get());
    for (const std::string& copy : m_copies)
        unlink(copy.c_str());
    for (const std::string& folder : m_folders)
        rmdir(folder.c_str());
}

void ProjectArchive::Run(const std::function<HRESULT()>& write)
{
    Gather();
    const auto storyboards = Query<IProjectStoryboards>(&m_project);
    KnownNames names = storyboards ? storyboards->Names() : KnownNames();
    KnownNames before = names;
    try {
        ThrowIfFailed(m_project.put_ProjectDirectory(Bstr(m_folderName).Get()));
        MakeFolder();
        Start();
        for (Source& source : m_sources) {
            Copy(source);
            if (m_pending.empty()) TellUpTo(source);
        }
        Settle();
        if (!m_sources.empty()) TellUpTo(m_sources.back());
        for (const Source& source : m_sources) {
            if (IsArchived(source.full)) names[source.full] = source.copy;
        }
        m_place.SetNames(names);
        PointAtCopies();
        ThrowIfFailed(write());
    } catch (...) {
        m_place.SetProjectDirectory(m_directory.View());
        if (storyboards) storyboards->KeepNames(std::move(before));
        TakeBack();
        throw;
    }
    if (storyboards) storyboards->KeepNames(m_place.Names());
}

} // namespace kv
