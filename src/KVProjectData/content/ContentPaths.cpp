#include "KVProjectData/content/ContentPaths.h"

#include "KVProjectData/content/ContentKeys.h"
#include "platform/system/Paths.h"
#include "platform/system/Registry.h"

#include <algorithm>
#include <initializer_list>
#include <mutex>
#include <utility>

namespace kv {
namespace {

constexpr std::u16string_view kUsualContent = u"K:\\Orvel\\AppData\\Content";
constexpr std::u16string_view kUsualSkins = u"K:\\Orvel\\skins";
constexpr std::u16string_view kUsualPlugIns = u"K:\\Orvel\\AppData\\PlugIns";

constexpr std::size_t kLongestPath = 260;

std::u16string Setting(std::u16string_view key, std::u16string_view name)
{
    std::u16string text = Registry::QueryText(Hive::LocalMachine, key, name);
    if (text.size() > kLongestPath) text.clear();
    return text;
}

/// Empty when none of them exists.
std::u16string_view FirstThatExists(std::initializer_list<std::u16string_view> paths)
{
    const auto found = std::ranges::find_if(paths, [](auto path) { return !path.empty() && PathFileExists(path); });
    return found == paths.end() ? std::u16string_view() : *found;
}

std::u16string ReplaceAll(std::u16string_view text, std::u16string_view what, std::u16string_view with)
{
    std::u16string replaced;
    for (;;) {
        const auto at = text.find(what);
        replaced += text.substr(0, at);
        if (at == text.npos) return replaced;
        replaced += with;
        text.remove_prefix(at + what.size());
    }
}

struct SharedPlace {
    std::mutex guard;
    std::shared_ptr<const ContentPaths> paths;
};

SharedPlace& Shared()
{
    static SharedPlace shared;
    return shared;
}

} // namespace

ContentPaths::ContentPaths()
{
    AddContent();
    AddSkins();
    AddPlugIns();
    Add(u"%TEMP%", TemporaryFolder());
}

void ContentPaths::AddContent()
{
    const std::u16string named = Setting(kPathsKey, kContentName);
    // A name that is no path of its own continues the path of the host's folder.
    const std::u16string besideHost = named.empty() ? named : HostFolder() + named;
    Add(u"%CONTENT%", FirstThatExists({Setting(kPathsKey, kAlternateContentName), named, besideHost, kUsualContent}));
}

void ContentPaths::AddSkins()
{
    std::u16string skin = Setting(kSkinKey, kSkinName);
    if (!skin.empty()) skin = PathAppend(HostFolder(), skin);
    if (skin.size() > kLongestPath) skin.clear();
    Add(u"%SKINS%", FirstThatExists({skin, kUsualSkins}));
}

void ContentPaths::AddPlugIns()
{
    Add(u"%PLUGINS%", FirstThatExists({Setting(kPlugInsKey, kPlugInsName), kUsualPlugIns}));
}

void ContentPaths::Add(std::u16string_view macro, std::u16string_view folder)
{
    if (!folder.empty()) m_macros.emplace(macro, folder);
}

std::u16string ContentPaths::Resolve(std::u16string_view path) const
{
    std::u16string resolved(path);
    for (const auto& [macro, folder] : m_macros) {
        if (!resolved.starts_with(macro)) continue;
        const std::u16string rest = ReplaceAll(resolved, macro, {});
        resolved = rest.empty() ? folder : PathAppend(folder, rest);
    }
    return resolved;
}

std::u16string ContentPaths::Unresolve(std::u16string_view path) const
{
    std::u16string unresolved(path);
    for (const auto& [macro, folder] : m_macros)
        unresolved = ReplaceAll(unresolved, folder, macro);
    return unresolved;
}

std::shared_ptr<const ContentPaths> SharedContentPaths()
{
    {
        const std::lock_guard lock(Shared().guard);
        if (Shared().paths) return Shared().paths;
    }
    return RenewContentPaths();
}

std::shared_ptr<const ContentPaths> RenewContentPaths()
{
    auto paths = std::make_shared<const ContentPaths>();
    // Those before go outside of the guard.
    auto before = paths;
    const std::lock_guard lock(Shared().guard);
    std::swap(Shared().paths, before);
    return paths;
}

} // namespace kv
