#pragma once
// The classes that the engine creates, for a host that enters them in a registry of its own. The engine does so itself
// when it is registered, which loads it.

#include "KVProjectData/Engine/Import.h"
#include "KVProjectData/Engine/Media.h"
#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/Engine/Strings.h"
#include "KVProjectData/Engine/Text.h"
#include "KVProjectData/Engine/UndoGroup.h"

#include <array>

namespace kv {

inline constexpr std::array kEngineClasses{CLSID_ZXEProduction, CLSID_ZXEUndoGroup, CLSID_ZXMediaInformation,
                                           CLSID_ZXStringTable, CLSID_ZXTextPlugIn, CLSID_Q71ProjectImport,
                                           CLSID_ZXClipImporter};

} // namespace kv
