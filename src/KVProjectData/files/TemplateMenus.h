#pragma once
// The template menus of a project, which its own menus are made from.

#include "KVProjectData/IKVProjectData.h"

namespace kv {

/// Removes those that no main or chapter menu is made from, and no template that is. A project that has neither titles
/// nor menus made from templates is a collection of templates, and keeps them all.
void PruneTemplateMenus(IKVProjectData& project);

} // namespace kv
