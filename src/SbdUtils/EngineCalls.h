#pragma once
// How the library calls the host's engine: what fails is reported to the host, and its result passed on.

#include "platform/com/ComPtr.h"
#include "platform/com/Error.h"
#include "platform/system/ErrorReporter.h"

#include <string_view>

namespace kv {

/// Reports what fails in one source file to the host, each from the caller's line.
///
///     constexpr EngineCalls kEngine("SbdUtils");
///     return EngineCalls::Operation([&] {
///         const auto spSbd = kEngine.Need<IZXEProductionData>(pUnkSbd, "(IZXEProductionData*)spSbd");
///         kEngine.Need(spSbd->DeletePanel(0), "spSbd->DeletePanel(0)");
///         return S_OK;
///     });
class EngineCalls {
public:
    /// `source` is what diagnostics call the file.
    explicit constexpr EngineCalls(std::string_view source) : m_source(source) {}

    /// An operation begins: what earlier ones reported is of no more interest.
    static void Begin() { ZXUClearErrorStack(); }

    /// Runs an operation from its beginning. Its result is what the body returns or throws as Error.
    template <class Body>
    static HRESULT Operation(Body&& body)
    {
        Begin();
        return Guarded(body);
    }

    /// Reports a call that failed, by its text where it has one, and gives its result on.
    HRESULT Checked(HRESULT result, std::string_view call = {}, int line = __builtin_LINE()) const
    {
        if (SUCCEEDED(result)) return result;
        const ErrorPlace place{m_source, line};
        ZXUReportError(call.empty() ? ZXUErrStr(place, ResultText(result)) : ZXUErrResultStr(place, call, result));
        return result;
    }

    /// Reports something that is null, by its name.
    HRESULT NullArgument(std::string_view name, int line = __builtin_LINE()) const
    {
        ZXUReportError(ZXUErrNullStr({m_source, line}, name));
        return E_POINTER;
    }

    /// Reports anything else.
    void Report(std::string_view message, int line = __builtin_LINE()) const
    {
        ZXUReportError(ZXUErrStr({m_source, line}, message));
    }

    // The same, thrown as Error.

    /// A call that has to succeed.
    HRESULT Need(HRESULT result, std::string_view call = {}, int line = __builtin_LINE()) const
    {
        if (FAILED(Checked(result, call, line))) throw Error(result);
        return result;
    }

    /// An argument or an answer that must not be null.
    void NeedPointer(const void* pointer, std::string_view name, int line = __builtin_LINE()) const
    {
        if (!pointer) throw Error(NullArgument(name, line));
    }

    /// An interface that an object has to have.
    template <class Interface>
    ComPtr<Interface> Need(IUnknown* object, std::string_view name, int line = __builtin_LINE()) const
    {
        auto found = Query<Interface>(object);
        NeedPointer(found.Get(), name, line);
        return found;
    }

    /// What throws Error by itself.
    template <class Body>
    void Reporting(Body&& body, int line = __builtin_LINE()) const
    {
        Need(Guarded([&] {
                 body();
                 return S_OK;
             }),
             {}, line);
    }

private:
    std::string_view m_source;
};

} // namespace kv
