#pragma once
// A project and its media files in one place.

#include "KVProjectData/IKVProjectArchive.h"
#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/content/FilePlace.h"
#include "KVProjectData/files/ArchiveHelper.h"
#include "platform/system/FileCopy.h"
#include "platform/system/Paths.h"

#include <functional>
#include <list>
#include <set>

namespace kv {

/// One archive, or the plan of one. Copies every file that the project's objects name and that its productions show,
/// each once, into the folder beside the project file; what names a copy then says so by a relative path. Of two files
/// of one name the second is not copied.
class ProjectArchive {
public:
    /// `events` may be null.
    ProjectArchive(IKVProjectData& project, std::u16string_view fileName, IKVArchiveEvents* events);

    /// Throws Error: KV_E_NO_ARCHIVE_FOLDER, what the place of the copies, an event or `write` failed with. Then the
    /// project is as it was, and copies and folders that were made are gone. `write` writes the project file.
    void Run(const std::function<HRESULT()>& write);
    void Plan();

private:
    struct Source {
        /// Full paths, of the file where it exists.
        std::u16string full;
        std::u16string copy;
        LONGLONG size = 0;
        ArchivedFile outcome = ArchivedFile_Missing;
        HRESULT result = S_OK;
    };

    void Gather();
    void AddSource(std::u16string_view text);
    /// What is to be done with a source now.
    void Classify(Source& source) const;
    void Tell(const Source& source) const;
    void Start();
    void MakeFolder();
    void Copy(Source& source);
    /// Without a name yet. Fails for the place of the copies; what is wrong with the source stands there.
    HRESULT CopyBeside(Source& source);
    /// Gives the copies their names.
    void Settle();
    void TellUpTo(const Source& last);
    /// Lets the objects name the copies, by paths that lead from the place of the file.
    void PointAtCopies();
    void TakeBack() noexcept;
    std::u16string Full(std::u16string_view path) const;
    std::string HostCopy(const Source& source) const { return ToHostPath(source.copy); }
    bool IsArchived(std::u16string_view full) const;

    IKVProjectData& m_project;
    const std::u16string m_fileName;
    /// As the name of the file has it, and in full.
    const std::u16string m_folderName;
    const std::u16string m_folder;
    const ComPtr<IKVArchiveEvents> m_events;
    Bstr m_directory;
    FilePlace m_place;
    std::vector<MediaProperty> m_properties;
    std::vector<Source> m_sources;
    std::map<std::u16string, std::size_t, std::less<>> m_positions;
    /// The names that the copies have or are to get.
    std::set<std::u16string, std::less<>> m_names;
    LONGLONG m_done = 0;
    /// Copies without a name, and how many of the sources have been told.
    struct Pending {
        Source* source;
        FileCopy copy;
    };
    std::list<Pending> m_pending;
    std::size_t m_told = 0;
    // What is taken back after a failure.
    std::vector<std::string> m_folders;
    std::vector<std::string> m_copies;
    std::vector<std::pair<const MediaProperty*, Bstr>> m_replaced;
};

} // namespace kv
