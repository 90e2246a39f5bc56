#pragma once
// Texts that hosts hand over for elements.

#include "platform/com/BaseTypes.h"

namespace kv {

/// Throws Error(E_INVALIDARG) for what no document holds, control characters and lone surrogates: a project with such a
/// text could not be saved any more.
void RequireDocumentText(BSTR text);

} // namespace kv
