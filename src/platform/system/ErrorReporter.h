#pragma once
// The host's error reporter: lines that tell where in the sources something failed.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kv {

/// Where a failure was noticed: the name of a source without folder and ending, and a line.
struct ErrorPlace {
    std::string_view source;
    int line;
};

/// "0x%08X"
KV_EXPORT std::string ResultText(HRESULT result);

/// Forgets the lines that were reported so far.
KV_EXPORT void ZXUClearErrorStack();

/// "source(line): *** Error message\n"
KV_EXPORT std::string ZXUErrStr(ErrorPlace place, std::string_view message);
/// "source(line): *** Error NULL = parameter\n"
KV_EXPORT std::string ZXUErrNullStr(ErrorPlace place, std::string_view parameter);
/// "source(line): *** Error result = expression\n"
KV_EXPORT std::string ZXUErrResultStr(ErrorPlace place, std::string_view expression, HRESULT result);

/// Keeps a line on the error stack, which holds the newest ones, and hands it to the host's hook.
KV_EXPORT void ZXUReportError(std::string_view line);

/// The lines since the last clearing, oldest first.
KV_EXPORT std::vector<std::string> ZXUErrorStack();

/// Lets the host see every line; null ends that.
KV_EXPORT void SetErrorReporter(std::function<void(std::string_view line)> report);

} // namespace kv
