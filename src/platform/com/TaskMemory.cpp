#include "platform/com/TaskMemory.h"

#include <cstdlib>

void* CoTaskMemAlloc(std::size_t size)
{
    // An empty block is still a block: null is kept for lack of memory.
    return std::malloc(size ? size : 1);
}

void* CoTaskMemRealloc(void* memory, std::size_t size)
{
    if (memory && size == 0) {
        std::free(memory);
        return nullptr;
    }
    return std::realloc(memory, size ? size : 1);
}

void CoTaskMemFree(void* memory)
{
    std::free(memory);
}
