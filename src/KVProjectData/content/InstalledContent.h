#pragma once
// The content folder that is installed with the library, and its entry in the registry.

#include "platform/com/BaseTypes.h"

#include <string_view>

namespace kv {

/// Enters the content folder that belongs to a library: "share/KVProjectData/Content" in the nearest folder above it
/// that has one. Nothing is entered where there is none.
HRESULT RegisterContent(std::u16string_view library);
/// Removes the entry, unless it names a folder that does not belong to the library.
HRESULT UnregisterContent(std::u16string_view library);

} // namespace kv
