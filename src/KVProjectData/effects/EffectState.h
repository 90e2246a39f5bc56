#pragma once
// What the effects of all projects of the process share.

#include "platform/com/BaseTypes.h"

#include <atomic>

namespace kv {

struct EffectState {
    /// Chosen by the host. While it is not 0, parameter documents are given to the engine without refresh.
    std::atomic<LONG> saveThemeMode{0};
};

inline EffectState& SharedEffectState()
{
    static EffectState state;
    return state;
}

} // namespace kv
