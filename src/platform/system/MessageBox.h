#pragma once
// A message that a person must see.

#include "platform/com/Export.h"

#include <functional>
#include <string_view>

namespace kv {

/// Shows a text until the person has seen it; by default as a line on standard error.
KV_EXPORT void ShowMessageBox(std::u16string_view text, std::u16string_view caption);

/// Lets the host show messages its own way; null brings the default back.
KV_EXPORT void SetMessageBoxHook(std::function<void(std::u16string_view text, std::u16string_view caption)> show);

} // namespace kv
