#pragma once
// The place of a project file, which relative paths in it lead from.

#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/ProjectNode.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kv {

/// Neither from a root nor with a drive, a scheme or a macro in front.
bool IsRelative(std::u16string_view path);

/// Where a path leads whatever the working folder is; the path itself where it has a drive, a scheme or a macro, or is
/// empty.
std::u16string FullPath(std::u16string_view path);

/// The folder that belongs to a project file: its name without extension, and "_Files".
std::u16string ArchiveFolder(std::u16string_view fileName);

/// By the full paths of files: the relative path that a project file had for one, or the full path of the copy that was
/// made of it in an archive folder. By the relative paths of a project in memory: the full paths of what they lead to,
/// where its directory does not tell any more.
using KnownNames = std::map<std::u16string, std::u16string, std::less<>>;

/// A project file that this thread reads or writes. While the object lives, the paths of documents that the thread
/// loads or saves lead from this place:
///
/// - A relative path that is read is tried from the folder of the file, and is a full path from then on. It is written
///   as it was read where that leads to the same file.
/// - A file in the archive folder beside the file is written as a relative path, so that both can be moved together.
///   So is one of which a copy stands there.
/// - A relative path of the project that leads somewhere else from this place than before is written in full.
class FilePlace {
public:
    explicit FilePlace(std::u16string_view fileName);
    FilePlace(const FilePlace&) = delete;
    FilePlace& operator=(const FilePlace&) = delete;
    virtual ~FilePlace();

    /// Null where the thread is at no file.
    static FilePlace* Current();

    /// Where relative paths of a project in memory lead from that no known name tells of: the folder above its
    /// directory where they begin with the directory's own name, as those that an archive leaves do, or the directory.
    void SetProjectDirectory(std::u16string_view directory);
    /// A path that is written in full, as its project leaves the place that it leads from, is among them afterwards.
    const KnownNames& Names() const { return m_names; }
    /// Where a relative path of the project leads from now on.
    void Know(std::u16string_view path, std::u16string_view full)
    {
        m_names.insert_or_assign(std::u16string(path), full);
    }
    void SetNames(KnownNames names) { m_names = std::move(names); }

    /// The path that a text of the file stands for, if that is another one.
    std::optional<std::u16string> Read(std::u16string_view text);

    /// The full path of what a relative path leads to from the file; nothing for other paths, and where nothing is.
    std::optional<std::u16string> FromFile(std::u16string_view path) const;
    /// The same of a path of the project in memory.
    std::optional<std::u16string> FromProject(std::u16string_view path) const;
    /// What is written for a path of the project, if that is something else.
    virtual std::optional<std::u16string> ToFile(std::u16string_view path);

private:
    std::optional<std::u16string> InArchive(std::u16string_view path) const;

    const std::u16string m_folder;
    const std::u16string m_archive;
    std::u16string m_directory;
    KnownNames m_names;
    FilePlace* const m_outer;
};

/// Whether a path of a node leads to anything, as it stands, by what the project knows or from where its file is.
bool LeadsAnywhere(CProjectNode& node, std::u16string_view path);

/// A path in a document.
bool PathAttribute(AttributeArchive& archive, std::string_view name, Bstr& path);

} // namespace kv
