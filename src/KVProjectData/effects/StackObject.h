#pragma once
// The base of what answers for an interface on the stack of its user, for one operation.

#include "platform/com/Error.h"
#include "platform/com/Unknown.h"

namespace kv {

/// Nobody may keep it, nor ask it for more.
template <class Interface>
class StackObject : public Interface {
public:
    StackObject() = default;
    StackObject(const StackObject&) = delete;
    StackObject& operator=(const StackObject&) = delete;
    virtual ~StackObject() = default;

    HRESULT QueryInterface(REFIID, void** out) override
    {
        if (out) *out = nullptr;
        return E_NOTIMPL;
    }
    ULONG AddRef() override { return static_cast<ULONG>(E_NOTIMPL); }
    ULONG Release() override { return static_cast<ULONG>(E_NOTIMPL); }
};

/// Hands out a value. E_POINTER for nowhere to put it.
template <class T>
HRESULT HandOut(T value, T* out)
{
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
}

inline HRESULT HandOut(bool value, VARIANT_BOOL* out)
{
    return HandOut(value ? VARIANT_TRUE : VARIANT_FALSE, out);
}

} // namespace kv
