#pragma once
// Creating documents.

#include "platform/com/Unknown.h"

namespace kv {

/// Makes an empty document. CLASS_E_NOAGGREGATION with an outer object.
HRESULT CreateDomDocument(IUnknown* outer, REFIID iid, void** out);

} // namespace kv
