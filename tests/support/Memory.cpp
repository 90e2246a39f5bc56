#include "support/Memory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace kv::test {
namespace {

constexpr int kPlenty = std::numeric_limits<int>::max();

thread_local int t_left = kPlenty;
thread_local bool t_failed = false;

/// Null when this thread is to have no memory.
void* Allocate(std::size_t size)
{
    if (t_left == 0) {
        t_failed = true;
        return nullptr;
    }
    if (t_left != kPlenty) --t_left;
    return std::malloc(size ? size : 1);
}

} // namespace

LittleMemory::LittleMemory(int left)
{
    t_left = left;
    t_failed = false;
}

LittleMemory::~LittleMemory()
{
    t_left = kPlenty;
}

bool LittleMemory::HasFailed()
{
    return t_failed;
}

} // namespace kv::test

// Not inlined, so that the compiler sees pairs of new and delete rather than of new and free.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    if (void* memory = kv::test::Allocate(size)) return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return kv::test::Allocate(size);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}
