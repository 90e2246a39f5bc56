#pragma once
// The way from an item of a project's list up to the project.

#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/tree/ProjectNode.h"

namespace kv {

/// Gives the project in one of whose lists the item stands; null and S_FALSE where it stands in none, and while the
/// project ends.
HRESULT GiveProject(CProjectNode& item, IKVProjectData** ppProject);

} // namespace kv
