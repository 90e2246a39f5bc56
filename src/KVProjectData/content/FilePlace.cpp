#include "KVProjectData/content/FilePlace.h"

#include "platform/system/Paths.h"

#include <algorithm>
#include <filesystem>

namespace kv {
namespace {

thread_local FilePlace* t_current = nullptr;

constexpr std::u16string_view kSeparators = u"\\/";

/// What exists by a relative path below a folder.
std::optional<std::u16string> Below(std::u16string_view folder, std::u16string_view path)
{
    if (folder.empty() || !IsRelative(path)) return std::nullopt;
    std::u16string full = std::u16string(folder).append(u"/").append(path);
    if (!PathFileExists(full)) return std::nullopt;
    return ToUtf16(ToHostPath(full));
}

/// Whatever the ways are that paths take to it.
bool IsSameFile(std::u16string_view left, std::u16string_view right)
{
    std::error_code error;
    return left == right || std::filesystem::equivalent(ToHostPath(left), ToHostPath(right), error);
}

} // namespace

bool IsRelative(std::u16string_view path)
{
    const std::u16string_view first = path.substr(0, path.find_first_of(kSeparators));
    return !first.empty() && first.front() != u'%' && first.find(u':') == first.npos;
}

std::u16string FullPath(std::u16string_view path)
{
    const bool isRoot = !path.empty() && kSeparators.find(path.front()) != path.npos;
    if (!isRoot && !IsRelative(path)) return std::u16string(path);
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(ToHostPath(path), error);
    return error ? std::u16string(path) : ToUtf16(full.string());
}

std::u16string ArchiveFolder(std::u16string_view fileName)
{
    return PathRemoveExtension(fileName).append(u"_Files");
}

FilePlace::FilePlace(std::u16string_view fileName)
    : m_folder(PathRemoveFileSpec(FullPath(fileName))), m_archive(ArchiveFolder(FullPath(fileName))), m_outer(t_current)
{
    t_current = this;
}

FilePlace::~FilePlace()
{
    t_current = m_outer;
}

FilePlace* FilePlace::Current()
{
    return t_current;
}

void FilePlace::SetProjectDirectory(std::u16string_view directory)
{
    m_directory = directory.empty() ? std::u16string() : FullPath(directory);
}

std::optional<std::u16string> FilePlace::Read(std::u16string_view text)
{
    auto full = FromFile(text);
    if (full) m_names[*full] = text;
    return full;
}

std::optional<std::u16string> FilePlace::FromFile(std::u16string_view path) const
{
    return Below(m_folder, path);
}

std::optional<std::u16string> FilePlace::FromProject(std::u16string_view path) const
{
    const auto known = IsRelative(path) ? m_names.find(path) : m_names.end();
    if (known != m_names.end() && PathFileExists(known->second)) return known->second;
    const std::u16string_view first = path.substr(0, path.find_first_of(kSeparators));
    if (!m_directory.empty() && first == PathFindFileName(m_directory)) {
        if (auto found = Below(PathRemoveFileSpec(m_directory), path)) return found;
    }
    return Below(m_directory, path);
}

std::optional<std::u16string> FilePlace::ToFile(std::u16string_view path)
{
    if (IsRelative(path)) {
        const auto before = FromProject(path);
        if (!before) return std::nullopt;
        if (const auto there = FromFile(path); there && IsSameFile(*there, *before)) return std::nullopt;
        Know(path, *before);
        const auto archived = InArchive(*before);
        return archived ? archived : before;
    }
    const auto known = m_names.find(path);
    if (known != m_names.end() && FromFile(known->second) == path) return known->second;
    if (auto archived = InArchive(path)) return archived;
    if (known == m_names.end() || !PathFileExists(known->second)) return std::nullopt;
    if (auto archived = InArchive(known->second)) return archived;
    // Where only the copy is left, it stands for the file everywhere.
    return IsRelative(known->second) || PathFileExists(path) ? std::nullopt : std::optional(known->second);
}

std::optional<std::u16string> FilePlace::InArchive(std::u16string_view path) const
{
    if (!path.starts_with(m_archive)) return std::nullopt;
    std::u16string_view rest = path.substr(m_archive.size());
    // A "\" in the rest would be read as a separator.
    if (rest.size() < 2 || rest.front() != u'/' || rest.find(u'\\') != rest.npos) return std::nullopt;
    std::u16string text = PathFindFileName(m_archive).append(rest);
    std::ranges::replace(text, u'/', u'\\');
    return FromFile(text) == path ? std::optional(std::move(text)) : std::nullopt;
}

bool LeadsAnywhere(CProjectNode& node, std::u16string_view path)
{
    return PathFileExists(path) || PathFileExists(node.FullPathOf(path)) ||
           (FilePlace::Current() && FilePlace::Current()->FromProject(path));
}

bool PathAttribute(AttributeArchive& archive, std::string_view name, Bstr& path)
{
    FilePlace* const place = archive.Records() ? nullptr : FilePlace::Current();
    if (!place) return archive(name, path);
    return archive.Value<Bstr>(
        name,
        [&] {
            const auto text = place->ToFile(path.View());
            return text ? Bstr(*text) : path;
        },
        [&](const Bstr& text) {
            const auto full = place->Read(text.View());
            path = full ? Bstr(*full) : text;
        });
}

} // namespace kv
