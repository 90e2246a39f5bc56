#pragma once
// Taking back what a failed operation did.

#include "platform/com/Export.h"

namespace kv {

/// While one lives, clearing the error stack does nothing on its thread: the report of the failure stays.
class KV_EXPORT KeptErrors {
public:
    KeptErrors();
    KeptErrors(const KeptErrors&) = delete;
    KeptErrors& operator=(const KeptErrors&) = delete;
    ~KeptErrors();
};

} // namespace kv
