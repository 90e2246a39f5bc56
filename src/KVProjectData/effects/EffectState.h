#pragma once
// What the effects of all projects of the process share.

#include "platform/com/BaseTypes.h"

#include <atomic>

namespace kv {

struct EffectState {
    /// Chosen by the host; decides how effect data is written for themes.
    std::atomic<LONG> saveThemeMode{0};
};

inline EffectState& SharedEffectState()
{
    static EffectState state;
    return state;
}

} // namespace kv
