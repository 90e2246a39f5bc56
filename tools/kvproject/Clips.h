#pragma once
// Clips as titles.

#include "EventPrinter.h"

#include <string>

namespace kvproject {

/// Adds a title that bears the name of the clip, and waits until the library has measured the clip, which it does while
/// it is the only one. The position counts from 1; 0 is behind the last. A clip that is no media is warned of on
/// standard error. Throws Failure.
void AddClip(EventPrinter& events, const std::string& clip, LONG position);

} // namespace kvproject
