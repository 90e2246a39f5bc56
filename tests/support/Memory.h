#pragma once
// Lack of memory on demand, for test programs that have Memory.cpp.

namespace kv::test {

/// From here on this thread's allocations with `new` fail, except for the first ones; until this object ends.
class LittleMemory {
public:
    explicit LittleMemory(int left = 0);
    LittleMemory(const LittleMemory&) = delete;
    LittleMemory& operator=(const LittleMemory&) = delete;
    ~LittleMemory();

    /// Whether an allocation has failed.
    static bool HasFailed();
};

} // namespace kv::test
