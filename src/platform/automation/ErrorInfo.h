#pragma once
// What a thread last heard of a failed late-bound call.

#include "platform/automation/IDispatch.h"

namespace kv {

/// Frees the strings of a received record.
KV_EXPORT void FreeExceptionInfo(EXCEPINFO& exception);

/// Makes a record the thread's error information and takes over its strings.
KV_EXPORT void SetThreadErrorInfo(EXCEPINFO& exception);

/// Hands the thread's error information over and clears it. S_FALSE, and an empty record, when there is none.
KV_EXPORT HRESULT TakeThreadErrorInfo(EXCEPINFO* exception);

} // namespace kv
