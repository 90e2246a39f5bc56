#pragma once
// Diagnostics of operations that talk to the engine.

#include "platform/com/Error.h"
#include "platform/system/ErrorReporter.h"

#include <string_view>

namespace kv {

/// Reports what fails in one source file to the host, each from the caller's line.
class EngineCalls {
public:
    /// `source` is what diagnostics call the file.
    explicit constexpr EngineCalls(std::string_view source) : m_source(source) {}

    /// An operation begins: what earlier ones reported is of no more interest.
    static void Begin() { ZXUClearErrorStack(); }

    /// Reports a call that failed, and gives its result on.
    HRESULT Checked(HRESULT result, std::string_view call, int line = __builtin_LINE()) const
    {
        if (FAILED(result)) ZXUReportError(ZXUErrResultStr({m_source, line}, call, result));
        return result;
    }

    /// The same for an argument that is null.
    HRESULT NullArgument(std::string_view parameter, int line = __builtin_LINE()) const
    {
        ZXUReportError(ZXUErrNullStr({m_source, line}, parameter));
        return E_POINTER;
    }

private:
    std::string_view m_source;
};

} // namespace kv
