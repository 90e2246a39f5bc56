#include "platform/automation/Variant.h"

#include "platform/automation/IDispatch.h"
#include "platform/automation/RealText.h"
#include "platform/automation/RecordInfo.h"
#include "platform/automation/SafeArray.h"
#include "platform/automation/ValueType.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <variant>

namespace {

using kv::ComPtr;

/// Every number type reads into one of these without loss.
using Number = std::variant<LONGLONG, ULONGLONG, double>;

/// Whether a variant may hold a value of this type.
bool IsKnown(VARTYPE type)
{
    const VARTYPE base = type & VT_TYPEMASK;
    if ((type & ~(VT_TYPEMASK | VT_ARRAY | VT_BYREF)) != 0) return false;
    if (base == VT_RECORD) return true;
    if (type & (VT_ARRAY | VT_BYREF)) return kv::ValueSize(base) != 0;
    return base == VT_EMPTY || base == VT_NULL || (base != VT_VARIANT && kv::ValueSize(base) != 0);
}

/// A record is known with its type only.
bool IsKnown(const VARIANT& value)
{
    return IsKnown(value.vt) && (value.vt != VT_RECORD || value.pRecInfo);
}

/// Looks through references at the value itself. The view owns nothing.
HRESULT Follow(const VARIANT& source, VARIANT& view)
{
    view = source;
    if (view.vt == (VT_BYREF | VT_VARIANT)) {
        if (!view.pvarVal) return E_INVALIDARG;
        view = *view.pvarVal;
        // A reference to a reference to a variant could go round in a circle.
        if (view.vt == (VT_BYREF | VT_VARIANT)) return E_INVALIDARG;
    }
    if (!IsKnown(view)) return DISP_E_BADVARTYPE;
    if (!(view.vt & VT_BYREF)) return S_OK;
    const void* place = view.byref;
    if (!place) return E_INVALIDARG;
    view.vt = static_cast<VARTYPE>(view.vt & ~VT_BYREF);
    if (view.vt == VT_RECORD) return IsKnown(view) ? S_OK : DISP_E_BADVARTYPE;
    view.ullVal = 0;
    std::memcpy(&view.ullVal, place, view.vt & VT_ARRAY ? sizeof(void*) : kv::ValueSize(view.vt));
    return S_OK;
}

/// Fills `copy`, which owns nothing yet, with a value of its own.
HRESULT CopyValue(const VARIANT& source, VARIANT& copy)
{
    if (!IsKnown(source)) return DISP_E_BADVARTYPE;
    copy = source;
    if (source.vt & VT_BYREF) return S_OK;
    if (source.vt & VT_ARRAY) {
        copy.parray = nullptr;
        return source.parray ? SafeArrayCopy(source.parray, &copy.parray) : S_OK;
    }
    switch (source.vt) {
    case VT_BSTR:
        if (source.bstrVal) copy.bstrVal = SysAllocStringLen(source.bstrVal, SysStringLen(source.bstrVal));
        return copy.bstrVal || !source.bstrVal ? S_OK : E_OUTOFMEMORY;
    case VT_UNKNOWN:
        copy.punkVal = ComPtr<IUnknown>(source.punkVal).Detach();
        return S_OK;
    case VT_DISPATCH:
        copy.pdispVal = ComPtr<IDispatch>(source.pdispVal).Detach();
        return S_OK;
    case VT_RECORD:
        copy.pvRecord = source.pRecInfo->RecordCreateCopy(source.pvRecord);
        if (!copy.pvRecord) return E_OUTOFMEMORY;
        copy.pRecInfo = ComPtr<IRecordInfo>(source.pRecInfo).Detach();
        return S_OK;
    default:
        return S_OK;
    }
}

/// Puts a finished value, which it takes over, in the place of the old one.
HRESULT Replace(VARIANT& target, const VARIANT& value)
{
    const HRESULT cleared = VariantClear(&target);
    VARIANT taken = value;
    if (FAILED(cleared)) {
        VariantClear(&taken);
        return cleared;
    }
    target = taken;
    return S_OK;
}

std::u16string_view Trimmed(std::u16string_view text)
{
    constexpr std::u16string_view kBlanks = u" \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// The characters of a number without its blanks and leading "+"; empty when it cannot be one. What is
/// left starts like a number, so that the words for infinity and for no number never reach the parser.
std::string NumberText(std::u16string_view text)
{
    text = Trimmed(text);
    if (text.starts_with(u'+')) {
        text.remove_prefix(1);
        if (text.starts_with(u'-')) return {};
    }
    const std::u16string_view unsignedText = text.substr(text.starts_with(u'-') ? 1 : 0);
    if (unsignedText.find_first_of(u"0123456789.") != 0) return {};
    if (text.find_first_not_of(u"0123456789.+-eE") != text.npos) return {};
    return {text.begin(), text.end()};
}

/// DISP_E_TYPEMISMATCH unless all of the text is one number of type T.
template <class T>
HRESULT ParseAs(const std::string& text, T& value)
{
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::invalid_argument || stop != end) return DISP_E_TYPEMISMATCH;
    return error == std::errc() ? S_OK : DISP_E_OVERFLOW;
}

template <class T>
HRESULT ParseReal(std::u16string_view text, T& value)
{
    const HRESULT result = ParseAs(NumberText(text), value);
    return result == S_OK && !std::isfinite(value) ? DISP_E_OVERFLOW : result;
}

HRESULT ParseNumber(std::u16string_view text, Number& number)
{
    const std::string narrow = NumberText(text);
    LONGLONG whole = 0;
    HRESULT result = ParseAs(narrow, whole);
    if (result == S_OK) {
        number = whole;
        return S_OK;
    }
    ULONGLONG wholeUnsigned = 0;
    if (result == DISP_E_OVERFLOW && ParseAs(narrow, wholeUnsigned) == S_OK) {
        number = wholeUnsigned;
        return S_OK;
    }
    double real = 0;
    result = ParseReal(text, real);
    number = real;
    return result;
}

HRESULT ReadNumber(const VARIANT& source, Number& number)
{
    switch (source.vt) {
    case VT_EMPTY:
        number = LONGLONG{0};
        return S_OK;
    case VT_I1:
        number = LONGLONG{source.cVal};
        return S_OK;
    case VT_I2:
        number = LONGLONG{source.iVal};
        return S_OK;
    case VT_I4:
    case VT_INT:
        number = LONGLONG{source.lVal};
        return S_OK;
    case VT_I8:
        number = source.llVal;
        return S_OK;
    case VT_UI1:
        number = ULONGLONG{source.bVal};
        return S_OK;
    case VT_UI2:
        number = ULONGLONG{source.uiVal};
        return S_OK;
    case VT_UI4:
    case VT_UINT:
        number = ULONGLONG{source.ulVal};
        return S_OK;
    case VT_UI8:
        number = source.ullVal;
        return S_OK;
    case VT_R4:
        number = double{source.fltVal};
        return S_OK;
    case VT_R8:
        number = source.dblVal;
        return S_OK;
    case VT_BOOL:
        number = LONGLONG{source.boolVal};
        return S_OK;
    case VT_BSTR:
        return ParseNumber(kv::View(source.bstrVal), number);
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

/// Empty when the value does not fit into T.
template <class T>
std::optional<T> Fit(const Number& number)
{
    return std::visit(
        [](auto value) -> std::optional<T> {
            if constexpr (std::integral<decltype(value)>) {
                if (!std::in_range<T>(value)) return std::nullopt;
                return static_cast<T>(value);
            } else {
                // The first power of two beyond T is exact in a double, T's largest value may not be.
                const double beyond = std::ldexp(1.0, std::numeric_limits<T>::digits);
                const double lowest = std::is_signed_v<T> ? -beyond : 0.0;
                const double rounded = std::nearbyint(value);
                if (!(rounded >= lowest && rounded < beyond)) return std::nullopt;
                return static_cast<T>(rounded);
            }
        },
        number);
}

template <class T>
HRESULT ToInteger(const VARIANT& source, VARIANT& converted, T VARIANT::*member)
{
    if (source.vt == VT_BOOL) {
        // True has all bits set, in unsigned types too.
        converted.*member = static_cast<T>(source.boolVal ? -1 : 0);
        return S_OK;
    }
    Number number;
    const HRESULT read = ReadNumber(source, number);
    if (FAILED(read)) return read;
    const std::optional<T> value = Fit<T>(number);
    if (!value) return DISP_E_OVERFLOW;
    converted.*member = *value;
    return S_OK;
}

HRESULT ToDouble(const VARIANT& source, VARIANT& converted)
{
    Number number;
    const HRESULT read = ReadNumber(source, number);
    if (FAILED(read)) return read;
    converted.dblVal = std::visit([](auto value) { return static_cast<double>(value); }, number);
    return S_OK;
}

HRESULT ToFloat(const VARIANT& source, VARIANT& converted)
{
    // Text is read as a float at once: by way of a double it would be rounded twice.
    if (source.vt == VT_BSTR) return ParseReal(kv::View(source.bstrVal), converted.fltVal);
    VARIANT real{};
    const HRESULT read = ToDouble(source, real);
    if (FAILED(read)) return read;
    if (std::isfinite(real.dblVal) && std::abs(real.dblVal) > std::numeric_limits<float>::max()) return DISP_E_OVERFLOW;
    converted.fltVal = static_cast<float>(real.dblVal);
    return S_OK;
}

HRESULT ToBool(const VARIANT& source, VARIANT& converted)
{
    if (source.vt == VT_BSTR) {
        const auto is = [text = Trimmed(kv::View(source.bstrVal))](std::u16string_view word) {
            return kv::SameText(text, word);
        };
        if (is(u"true") || is(u"false")) {
            converted.boolVal = is(u"true") ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        }
    }
    Number number;
    const HRESULT read = ReadNumber(source, number);
    if (FAILED(read)) return read;
    const bool truth = std::visit([](auto value) { return value != 0; }, number);
    converted.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT ToText(const VARIANT& source, VARIANT& converted)
{
    char digits[64];
    const char* end = digits;
    if (source.vt == VT_R4 || source.vt == VT_R8) {
        const bool isFloat = source.vt == VT_R4;
        // Infinity has no text that reads back.
        if (!std::isfinite(isFloat ? source.fltVal : source.dblVal)) return DISP_E_TYPEMISMATCH;
        end = isFloat ? kv::PrintReal(digits, std::end(digits), source.fltVal)
                      : kv::PrintReal(digits, std::end(digits), source.dblVal);
    } else if (source.vt == VT_BOOL) {
        end = std::to_chars(digits, std::end(digits), source.boolVal ? -1 : 0).ptr;
    } else if (source.vt != VT_EMPTY) {
        Number number;
        const HRESULT read = ReadNumber(source, number);
        if (FAILED(read)) return read;
        const auto print = [&](auto value) { return std::to_chars(digits, std::end(digits), value).ptr; };
        end = std::visit(print, number);
    }
    const auto length = static_cast<ULONG>(end - digits);
    converted.bstrVal = SysAllocStringLen(nullptr, length);
    if (!converted.bstrVal) return E_OUTOFMEMORY;
    std::copy(static_cast<const char*>(digits), end, converted.bstrVal);
    return S_OK;
}

/// Objects only: the other interface of the same object, or none for none.
template <class Interface>
HRESULT ToObject(const VARIANT& source, VARIANT& converted, Interface* VARIANT::*member)
{
    if (source.vt != VT_UNKNOWN && source.vt != VT_DISPATCH) return DISP_E_TYPEMISMATCH;
    auto* object = source.vt == VT_UNKNOWN ? source.punkVal : static_cast<IUnknown*>(source.pdispVal);
    ComPtr<Interface> found = kv::Query<Interface>(object);
    if (object && !found) return DISP_E_TYPEMISMATCH;
    converted.*member = found.Detach();
    return S_OK;
}

/// Fills `converted`, which owns nothing yet.
HRESULT Convert(const VARIANT& source, VARIANT& converted, VARTYPE type)
{
    if (source.vt == type) return CopyValue(source, converted);
    converted.vt = type;
    switch (type) {
    case VT_I1:
        return ToInteger(source, converted, &VARIANT::cVal);
    case VT_I2:
        return ToInteger(source, converted, &VARIANT::iVal);
    case VT_I4:
    case VT_INT:
        return ToInteger(source, converted, &VARIANT::lVal);
    case VT_I8:
        return ToInteger(source, converted, &VARIANT::llVal);
    case VT_UI1:
        return ToInteger(source, converted, &VARIANT::bVal);
    case VT_UI2:
        return ToInteger(source, converted, &VARIANT::uiVal);
    case VT_UI4:
    case VT_UINT:
        return ToInteger(source, converted, &VARIANT::ulVal);
    case VT_UI8:
        return ToInteger(source, converted, &VARIANT::ullVal);
    case VT_R4:
        return ToFloat(source, converted);
    case VT_R8:
        return ToDouble(source, converted);
    case VT_BOOL:
        return ToBool(source, converted);
    case VT_BSTR:
        return ToText(source, converted);
    case VT_UNKNOWN:
        return ToObject(source, converted, &VARIANT::punkVal);
    case VT_DISPATCH:
        return ToObject(source, converted, &VARIANT::pdispVal);
    default:
        return IsKnown(type) ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE;
    }
}

} // namespace

void VariantInit(VARIANT* variant)
{
    if (variant) *variant = VARIANT{};
}

HRESULT VariantClear(VARIANT* variant)
{
    if (!variant) return E_INVALIDARG;
    if (!IsKnown(*variant)) return DISP_E_BADVARTYPE;
    // Emptied first: what is released may look at the variant again.
    const VARIANT value = *variant;
    VariantInit(variant);
    if (value.vt & VT_BYREF) return S_OK;
    if (value.vt & VT_ARRAY) return SafeArrayDestroy(value.parray);
    switch (value.vt) {
    case VT_BSTR:
        SysFreeString(value.bstrVal);
        break;
    case VT_UNKNOWN:
        ComPtr<IUnknown>::Attach(value.punkVal).Reset();
        break;
    case VT_DISPATCH:
        ComPtr<IDispatch>::Attach(value.pdispVal).Reset();
        break;
    case VT_RECORD:
        value.pRecInfo->RecordDestroy(value.pvRecord);
        ComPtr<IRecordInfo>::Attach(value.pRecInfo).Reset();
        break;
    default:
        break;
    }
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source)
{
    if (!target || !source) return E_INVALIDARG;
    if (target == source) return IsKnown(*source) ? S_OK : DISP_E_BADVARTYPE;
    VARIANT copy{};
    const HRESULT copied = CopyValue(*source, copy);
    return SUCCEEDED(copied) ? Replace(*target, copy) : copied;
}

HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source)
{
    if (!target || !source) return E_INVALIDARG;
    VARIANT view{};
    const HRESULT followed = Follow(*source, view);
    if (FAILED(followed)) return followed;
    VARIANT copy{};
    const HRESULT copied = CopyValue(view, copy);
    return SUCCEEDED(copied) ? Replace(*target, copy) : copied;
}

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT, VARTYPE type)
{
    if (!target || !source) return E_INVALIDARG;
    return kv::Guarded([&] {
        VARIANT view{};
        const HRESULT followed = Follow(*source, view);
        if (FAILED(followed)) return followed;
        if (target == source && view.vt == type && !(source->vt & VT_BYREF)) return S_OK;
        VARIANT converted{};
        const HRESULT result = Convert(view, converted, type);
        return SUCCEEDED(result) ? Replace(*target, converted) : result;
    });
}
