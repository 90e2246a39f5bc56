#pragma once
// Looks whether files are there, without ever waiting long for one: a folder of a network that is gone answers nobody.

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace kvproject {

enum class FileKind : unsigned char { Missing, File, Folder, Other, Silent };

/// Each file is looked for once.
class MediaFiles {
public:
    /// Of what stands at a path of a project. Silent where that is not known after a while, and for all else in the
    /// same folder from then on.
    FileKind KindOf(std::u16string_view path);

    /// "is missing", "is a folder"; empty for a file, and for a folder where that will do.
    std::string Fault(std::u16string_view path, bool orFolder = false);

    /// Whether a fault of the file was told already.
    void Told(std::u16string_view path) { m_told.emplace(path); }
    bool IsTold(std::u16string_view path) const { return m_told.contains(path); }

private:
    std::map<std::u16string, FileKind, std::less<>> m_known;
    std::set<std::u16string, std::less<>> m_told;
    std::set<std::string> m_silentFolders;
};

} // namespace kvproject
