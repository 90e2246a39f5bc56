#pragma once
// How a failure travels inside a library, and how it becomes a result code at an interface.

#include "platform/com/BaseTypes.h"

#include <exception>
#include <new>

namespace kv {

/// Thrown inside a library only; `Guarded` turns it into its result code.
class Error : public std::exception {
public:
    explicit Error(HRESULT result) : m_result(result) {}

    HRESULT Result() const { return m_result; }
    const char* what() const noexcept override { return "operation failed with a result code"; }

private:
    HRESULT m_result;
};

inline void ThrowIfFailed(HRESULT result)
{
    if (FAILED(result)) throw Error(result);
}

/// Runs a body that returns a result code; no exception leaves it.
template <class Body>
HRESULT Guarded(Body&& body) noexcept
{
    try {
        return body();
    } catch (const Error& error) {
        return error.Result();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace kv
