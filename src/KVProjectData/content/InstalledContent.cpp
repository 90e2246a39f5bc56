#include "KVProjectData/content/InstalledContent.h"

#include "KVProjectData/content/ContentKeys.h"
#include "platform/automation/Bstr.h"
#include "platform/system/Paths.h"
#include "platform/system/Registry.h"

#include <filesystem>
#include <vector>

namespace kv {
namespace {

/// Where the content of a library may be, the nearest place first.
std::vector<std::u16string> ContentOf(std::u16string_view library)
{
    std::vector<std::u16string> folders;
    std::filesystem::path above(library);
    while (above != above.parent_path()) {
        above = above.parent_path();
        folders.push_back(ToUtf16((above / KV_INSTALLED_CONTENT).string()));
    }
    return folders;
}

} // namespace

HRESULT RegisterContent(std::u16string_view library)
{
    for (std::u16string& folder : ContentOf(library)) {
        if (PathIsDirectory(folder))
            return Registry::Set(Hive::LocalMachine, kPathsKey, kContentName, std::move(folder));
    }
    return S_OK;
}

HRESULT UnregisterContent(std::u16string_view library)
{
    const std::u16string entered = Registry::QueryText(Hive::LocalMachine, kPathsKey, kContentName);
    for (const std::u16string& folder : ContentOf(library)) {
        if (folder == entered) return Registry::DeleteValue(Hive::LocalMachine, kPathsKey, kContentName);
    }
    return S_OK;
}

} // namespace kv
