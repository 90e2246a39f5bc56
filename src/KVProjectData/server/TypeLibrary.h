#pragma once
// The type library: every interface, enumeration and record of the library.

#include "platform/automation/TypeDescription.h"

namespace kv {

const LibraryDescription& ProjectTypeLibrary();

} // namespace kv
