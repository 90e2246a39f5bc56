#pragma once
// What the automation types occupy in memory.

#include "platform/automation/Variant.h"

namespace kv {

/// Bytes that one value of a simple type takes in an array or behind a pointer; 0 for VT_EMPTY, VT_NULL and
/// whatever is not a simple type.
constexpr ULONG ValueSize(VARTYPE type)
{
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
        return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
        return 8;
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
        return sizeof(void*);
    case VT_VARIANT:
        return sizeof(VARIANT);
    default:
        return 0;
    }
}

} // namespace kv
