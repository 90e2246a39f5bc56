#pragma once
// The IDs of nodes: one counter for all projects of the process, which only grows.

#include "platform/com/BaseTypes.h"

namespace kv {

/// Takes the next ID. Throws Error(E_UNEXPECTED) when none is left.
LONG TakeNextID();

/// IDs taken from now on are greater than `id`.
void PassOverID(LONG id);

} // namespace kv
