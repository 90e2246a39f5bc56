#pragma once
// One-dimensional safe arrays.

#include "platform/automation/Variant.h"

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

/// A one-dimensional array that knows its element type and frees its elements with itself.
struct SAFEARRAY {
    USHORT cDims;
    VARTYPE vt;
    ULONG cbElements;
    ULONG cLocks;
    void* pvData;
    /// Of an array of records only.
    IRecordInfo* pRecInfo;
    SAFEARRAYBOUND rgsabound[1];
};

/// Elements start zeroed. Null for an element type that is not known, or on lack of memory.
KV_EXPORT SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count);
/// For VT_RECORD, too, where `extra` is the IRecordInfo of the elements.
KV_EXPORT SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE type, LONG lowerBound, ULONG count, void* extra);
KV_EXPORT HRESULT SafeArrayDestroy(SAFEARRAY* array);
KV_EXPORT HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
KV_EXPORT HRESULT SafeArrayGetLBound(SAFEARRAY* array, ULONG dimension, LONG* bound);
/// One below the lower bound for an empty array.
KV_EXPORT HRESULT SafeArrayGetUBound(SAFEARRAY* array, ULONG dimension, LONG* bound);
/// Copies one element out: a string as a new string, an object as a new reference.
KV_EXPORT HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* index, void* out);
/// Copies one element in; `value` is the string or object itself, else a pointer to the value.
KV_EXPORT HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* index, void* value);

namespace kv {

/// Owner of a safe array.
class SafeArray {
public:
    SafeArray() = default;
    explicit SafeArray(SAFEARRAY* array) : m_array(array) {}
    SafeArray(SafeArray&& other) noexcept : m_array(std::exchange(other.m_array, nullptr)) {}
    SafeArray& operator=(SafeArray&& other) noexcept
    {
        std::swap(m_array, other.m_array);
        return *this;
    }
    ~SafeArray() { SafeArrayDestroy(m_array); }

    SAFEARRAY* Get() const { return m_array; }
    [[nodiscard]] SAFEARRAY* Detach() { return std::exchange(m_array, nullptr); }
    SAFEARRAY** Put()
    {
        SafeArrayDestroy(std::exchange(m_array, nullptr));
        return &m_array;
    }

private:
    SAFEARRAY* m_array = nullptr;
};

} // namespace kv
