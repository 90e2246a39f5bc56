#pragma once
// The task allocator: memory that one side of an interface allocates and the other frees.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <memory>

/// Null on lack of memory.
KV_EXPORT void* CoTaskMemAlloc(std::size_t size);
KV_EXPORT void* CoTaskMemRealloc(void* memory, std::size_t size);
/// Null is allowed.
KV_EXPORT void CoTaskMemFree(void* memory);

namespace kv {

struct TaskMemDeleter {
    void operator()(void* memory) const { CoTaskMemFree(memory); }
};

/// Owner of task memory; the elements themselves are not destroyed.
template <class T>
using UniqueTaskMem = std::unique_ptr<T, TaskMemDeleter>;

} // namespace kv
