#pragma once
// The IDs of nodes: one counter for all projects of the process, which only grows.

#include "platform/com/BaseTypes.h"

namespace kv {

/// Takes the next ID that is free. Throws Error(E_UNEXPECTED) when none is left.
LONG TakeNextID();

/// `id` is not taken from now on, and neither is any that is lower, unless `id` is one of the last million: a document
/// must not use up the IDs of a process.
void PassOverID(LONG id);

} // namespace kv
