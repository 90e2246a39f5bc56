#pragma once
// The folders of an installation, and the macros that stand for them in the paths of documents.

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kv {

/// "%CONTENT%", "%SKINS%", "%PLUGINS%" and "%TEMP%", each with its folder where the installation has one. The
/// folders are looked up once, when the object is made.
class ContentPaths {
public:
    ContentPaths();

    /// Folders by macro.
    const std::map<std::u16string, std::u16string>& Macros() const { return m_macros; }

    /// Puts the folder of a macro at the start of the path in its place; every other path stays as it is.
    std::u16string Resolve(std::u16string_view path) const;
    /// Puts macros in the place of their folders, wherever these occur in the path.
    std::u16string Unresolve(std::u16string_view path) const;

private:
    void AddContent();
    void AddSkins();
    void AddPlugIns();
    void Add(std::u16string_view macro, std::u16string_view folder);

    std::map<std::u16string, std::u16string> m_macros;
};

/// The folders that everything in the process translates paths by: as the last file service found them, or looked up
/// now where there was none.
std::shared_ptr<const ContentPaths> SharedContentPaths();
/// Looks the folders up again.
std::shared_ptr<const ContentPaths> RenewContentPaths();

} // namespace kv
