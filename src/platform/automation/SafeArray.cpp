#include "platform/automation/SafeArray.h"

#include "platform/automation/IDispatch.h"
#include "platform/automation/RecordInfo.h"
#include "platform/automation/ValueType.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>

namespace {

using kv::ComPtr;

ULONG Count(const SAFEARRAY& array)
{
    return array.rgsabound[0].cElements;
}

BYTE* Element(const SAFEARRAY& array, ULONG position)
{
    return static_cast<BYTE*>(array.pvData) + std::size_t{position} * array.cbElements;
}

template <class T>
T& As(void* place)
{
    return *static_cast<T*>(place);
}

/// Fills a place that owns nothing yet with a copy of its own; on failure the place owns nothing still.
HRESULT CopyElement(const SAFEARRAY& array, void* target, const void* source)
{
    std::memset(target, 0, array.cbElements);
    switch (array.vt) {
    case VT_BSTR: {
        const BSTR string = *static_cast<const BSTR*>(source);
        if (!string) return S_OK;
        As<BSTR>(target) = SysAllocStringLen(string, SysStringLen(string));
        return As<BSTR>(target) ? S_OK : E_OUTOFMEMORY;
    }
    case VT_UNKNOWN:
    case VT_DISPATCH:
        // Both kinds are counted through the IUnknown they begin with.
        return ComPtr<IUnknown>(*static_cast<IUnknown* const*>(source)).CopyTo(&As<IUnknown*>(target));
    case VT_VARIANT:
        return VariantCopy(&As<VARIANT>(target), static_cast<const VARIANT*>(source));
    case VT_RECORD:
        return array.pRecInfo->RecordCopy(source, target);
    default:
        std::memcpy(target, source, array.cbElements);
        return S_OK;
    }
}

bool OwnsElements(const SAFEARRAY& array)
{
    constexpr VARTYPE kOwners[] = {VT_BSTR, VT_UNKNOWN, VT_DISPATCH, VT_VARIANT, VT_RECORD};
    return std::ranges::find(kOwners, array.vt) != std::end(kOwners);
}

/// Frees what an element owns; its bytes stay as they are.
void FreeElement(const SAFEARRAY& array, void* element)
{
    switch (array.vt) {
    case VT_BSTR:
        SysFreeString(As<BSTR>(element));
        break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
        ComPtr<IUnknown>::Attach(As<IUnknown*>(element)).Reset();
        break;
    case VT_VARIANT:
        VariantClear(&As<VARIANT>(element));
        break;
    case VT_RECORD:
        array.pRecInfo->RecordClear(element);
        break;
    default:
        break;
    }
}

/// Null where the index is out of bounds.
BYTE* ElementAt(const SAFEARRAY& array, LONG index)
{
    const LONGLONG position = LONGLONG{index} - array.rgsabound[0].lLbound;
    if (position < 0 || position >= LONGLONG{Count(array)}) return nullptr;
    return Element(array, static_cast<ULONG>(position));
}

} // namespace

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count)
{
    return SafeArrayCreateVectorEx(type, lowerBound, count, nullptr);
}

SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE type, LONG lowerBound, ULONG count, void* extra)
{
    ComPtr<IRecordInfo> record(type == VT_RECORD ? static_cast<IRecordInfo*>(extra) : nullptr);
    ULONG size = kv::ValueSize(type);
    if (record && FAILED(record->GetSize(&size))) return nullptr;
    // The upper bound, one below the lower one for an empty array, has to be a LONG as well.
    const LONGLONG upperBound = LONGLONG{lowerBound} + count - 1;
    if (size == 0 || !std::in_range<LONG>(upperBound)) return nullptr;
    auto* array = static_cast<SAFEARRAY*>(std::calloc(1, sizeof(SAFEARRAY)));
    if (!array) return nullptr;
    array->cDims = 1;
    array->vt = type;
    array->cbElements = size;
    array->rgsabound[0] = {count, lowerBound};
    array->pvData = std::calloc(count ? count : 1, size);
    if (!array->pvData) {
        std::free(array);
        return nullptr;
    }
    array->pRecInfo = record.Detach();
    return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array)
{
    if (!array) return S_OK;
    // Of the bytes of a picture there are millions.
    const ULONG owners = OwnsElements(*array) ? Count(*array) : 0;
    for (ULONG i = 0; i < owners; ++i)
        FreeElement(*array, Element(*array, i));
    ComPtr<IRecordInfo>::Attach(array->pRecInfo).Reset();
    std::free(array->pvData);
    std::free(array);
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy)
{
    if (!copy) return E_POINTER;
    *copy = nullptr;
    if (!array) return E_INVALIDARG;
    const LONG lowerBound = array->rgsabound[0].lLbound;
    kv::SafeArray made(SafeArrayCreateVectorEx(array->vt, lowerBound, Count(*array), array->pRecInfo));
    if (!made.Get()) return E_OUTOFMEMORY;
    for (ULONG i = 0; i < Count(*array); ++i) {
        const HRESULT copied = CopyElement(*array, Element(*made.Get(), i), Element(*array, i));
        if (FAILED(copied)) return copied;
    }
    *copy = made.Detach();
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, ULONG dimension, LONG* bound)
{
    if (!bound) return E_POINTER;
    *bound = 0;
    if (!array) return E_INVALIDARG;
    if (dimension != 1) return DISP_E_BADINDEX;
    *bound = array->rgsabound[0].lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, ULONG dimension, LONG* bound)
{
    const HRESULT result = SafeArrayGetLBound(array, dimension, bound);
    if (SUCCEEDED(result)) *bound = static_cast<LONG>(LONGLONG{*bound} + Count(*array) - 1);
    return result;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* index, void* out)
{
    if (!out) return E_POINTER;
    if (!array || !index) return E_INVALIDARG;
    const BYTE* element = ElementAt(*array, *index);
    if (element) return CopyElement(*array, out, element);
    std::memset(out, 0, array->cbElements);
    return DISP_E_BADINDEX;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* index, void* value)
{
    if (!array || !index) return E_INVALIDARG;
    const bool passedItself = array->vt == VT_BSTR || array->vt == VT_UNKNOWN || array->vt == VT_DISPATCH;
    if (!value && !passedItself) return E_INVALIDARG;
    BYTE* element = ElementAt(*array, *index);
    if (!element) return DISP_E_BADINDEX;
    if (array->vt == VT_RECORD) return array->pRecInfo->RecordCopy(value, element);

    // The new value is copied before the old one goes: they may be the same.
    alignas(VARIANT) BYTE copy[sizeof(VARIANT)];
    const HRESULT copied = CopyElement(*array, copy, passedItself ? &value : value);
    if (FAILED(copied)) return copied;
    alignas(VARIANT) BYTE old[sizeof(VARIANT)];
    std::memcpy(old, element, array->cbElements);
    std::memcpy(element, copy, array->cbElements);
    FreeElement(*array, old);
    return S_OK;
}
