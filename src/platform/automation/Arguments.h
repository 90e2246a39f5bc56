#pragma once
// The arguments of a late-bound call on their way from VARIANTs to a member's parameters and back.

#include "platform/automation/RecordInfo.h"
#include "platform/automation/TypeDescription.h"
#include "platform/com/Error.h"
#include "platform/com/TaskMemory.h"

#include <algorithm>
#include <utility>

namespace kv::detail {

/// The plain member of a VARIANT that holds a `T`.
template <class T>
auto& ValueMember(VARIANT& variant)
{
    if constexpr (std::is_same_v<T, VARIANT_BOOL>)
        return variant.boolVal;
    else if constexpr (std::is_same_v<T, USHORT>)
        return variant.uiVal;
    else if constexpr (std::is_same_v<T, BYTE>)
        return variant.bVal;
    else if constexpr (std::is_same_v<T, LONG>)
        return variant.lVal;
    else if constexpr (std::is_same_v<T, ULONG>)
        return variant.ulVal;
    else if constexpr (std::is_same_v<T, LONGLONG>)
        return variant.llVal;
    else if constexpr (std::is_same_v<T, ULONGLONG>)
        return variant.ullVal;
    else if constexpr (std::is_same_v<T, float>)
        return variant.fltVal;
    else if constexpr (std::is_same_v<T, double>)
        return variant.dblVal;
    else if constexpr (std::is_same_v<T, BSTR>)
        return variant.bstrVal;
}

/// One argument as the caller passed it.
struct Passed {
    /// Null where it was left out.
    VARIANT* value;
    const ParameterDescription& parameter;
    /// The argument that says how many records there are; null where none does.
    const VARIANT* counter;

    bool MayBeMissing() const { return parameter.flags & (kParameterOptional | kParameterRetval); }
};

/// What arguments have in common that the member does not write.
struct ReadArgument {
    void Finish(VARIANT*, ULONG) {}
    ULONG Count() const { return 1; }
};

/// An argument that the member takes by value; text and objects stay the caller's.
template <class T>
class InArgument : public ReadArgument {
public:
    HRESULT Load(const Passed& passed)
    {
        VARIANT* value = passed.value;
        if (!value) return passed.MayBeMissing() ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        if constexpr (std::is_same_v<T, VARIANT>) {
            // Scripts pass their variables by reference.
            const bool variable = value->vt == (VT_VARIANT | VT_BYREF);
            if (variable && !value->pvarVal) return E_INVALIDARG;
            m_value = variable ? *value->pvarVal : *value;
            return S_OK;
        } else if constexpr (std::is_enum_v<T>) {
            LONG number = 0;
            const HRESULT result = LoadPlain(*value, number);
            m_value = static_cast<T>(number);
            return result;
        } else {
            return LoadPlain(*value, m_value);
        }
    }

    T Pass() { return m_value; }

private:
    template <class Plain>
    HRESULT LoadPlain(VARIANT& value, Plain& target)
    {
        constexpr VARTYPE type = ValueType<Plain>();
        if (value.vt == type) {
            target = ValueMember<Plain>(value);
            return S_OK;
        }
        const HRESULT result = VariantChangeType(&m_converted, &value, 0, type);
        if (SUCCEEDED(result)) target = ValueMember<Plain>(m_converted);
        return result;
    }

    T m_value{};
    Variant m_converted;
};

/// An object, asked for the interface that the member wants. No object is passed as null.
template <class T>
requires std::is_base_of_v<IUnknown, T>
class InArgument<T*> : public ReadArgument {
public:
    HRESULT Load(const Passed& passed)
    {
        if (!passed.value) return passed.MayBeMissing() ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        Variant object;
        const HRESULT result = VariantCopyInd(&object, passed.value);
        if (FAILED(result)) return result;
        if (object.vt == VT_EMPTY || object.vt == VT_NULL) return S_OK;
        if (object.vt != VT_UNKNOWN && object.vt != VT_DISPATCH) return DISP_E_TYPEMISMATCH;
        if (!object.punkVal) return S_OK;
        m_object = Query<T>(object.punkVal);
        return m_object ? S_OK : DISP_E_TYPEMISMATCH;
    }

    T* Pass() { return m_object.Get(); }

private:
    ComPtr<T> m_object;
};

/// A record that the member takes by value. What its fields refer to stays the caller's.
template <Record T>
class InArgument<T> : public ReadArgument {
public:
    HRESULT Load(const Passed& passed)
    {
        if (!passed.value) return passed.MayBeMissing() ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        void* found = nullptr;
        const HRESULT result = FindRecords(kRecordDescription<T>, *passed.value, 1, &found);
        if (FAILED(result)) return result;
        if (!found) return DISP_E_TYPEMISMATCH;
        m_value = *static_cast<T*>(found);
        return S_OK;
    }

    T Pass() { return m_value; }

private:
    T m_value{};
};

/// Records behind a pointer, which the member reads or writes as its row says.
template <Record T>
class RecordArgument {
public:
    HRESULT Load(const Passed& passed)
    {
        const bool writes = passed.parameter.flags & kParameterOut;
        ULONG count = passed.parameter.count;
        if (passed.counter) {
            Variant counted;
            const HRESULT result = VariantChangeType(&counted, passed.counter, 0, VT_I4);
            if (FAILED(result)) return result;
            count = static_cast<ULONG>(std::max(counted.lVal, LONG{0}));
        }
        if (writes && (!passed.value || passed.value->vt == (VT_VARIANT | VT_BYREF))) {
            if (!passed.value && !passed.MayBeMissing()) return DISP_E_PARAMNOTOPTIONAL;
            m_variable = passed.value ? passed.value->pvarVal : nullptr;
            if (passed.value && !m_variable) return E_POINTER;
            m_made = NewRecords(kDescription, count);
            m_records = static_cast<T*>(m_made.vt & VT_ARRAY ? m_made.parray->pvData : m_made.pvRecord);
            return S_OK;
        }
        if (!passed.value) return passed.MayBeMissing() ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        void* found = nullptr;
        const HRESULT result = FindRecords(kDescription, *passed.value, count, &found);
        m_records = static_cast<T*>(found);
        return result;
    }

    T* Pass() { return m_records; }

    void Finish(VARIANT* result, ULONG)
    {
        VARIANT* receiver = m_variable ? m_variable : result;
        if (m_made.vt == VT_EMPTY || !receiver) return;
        VariantClear(receiver);
        *receiver = m_made.Detach();
    }

    ULONG Count() const { return 1; }

private:
    static constexpr const RecordDescription& kDescription = kRecordDescription<std::remove_const_t<T>>;

    T* m_records = nullptr;
    /// What the member writes where the caller has no place for it.
    Variant m_made;
    VARIANT* m_variable = nullptr;
};

/// The VARIANT type in which a value of a member's out parameter reaches the caller.
template <class T>
consteval VARTYPE ResultType()
{
    if constexpr (std::is_enum_v<T>)
        return VT_I4;
    else if constexpr (ValueType<T>() != VT_EMPTY)
        return ValueType<T>();
    else if constexpr (Record<std::remove_pointer_t<T>>)
        return VT_RECORD;
    else if constexpr (std::is_pointer_v<T> && ValueType<std::remove_pointer_t<T>>() != VT_EMPTY)
        return ValueType<std::remove_pointer_t<T>>() | VT_BYREF;
    else if constexpr (std::is_base_of_v<IDispatch, std::remove_pointer_t<T>>)
        return VT_DISPATCH;
    else
        return VT_UNKNOWN;
}

/// Moves a value that the callee handed out into an empty VARIANT.
template <class T>
void StoreResult(VARIANT& variant, T value)
{
    if constexpr (std::is_same_v<T, VARIANT>) {
        variant = value;
    } else {
        variant.vt = ResultType<T>();
        if constexpr (std::is_enum_v<T>)
            variant.lVal = value;
        else if constexpr (ResultType<T>() == VT_UNKNOWN)
            variant.punkVal = value;
        else if constexpr (ResultType<T>() == VT_DISPATCH)
            variant.pdispVal = value;
        else if constexpr ((ResultType<T>() & VT_BYREF) != 0)
            variant.byref = value;
        else
            ValueMember<T>(variant) = value;
    }
}

/// An argument that the member writes: into the caller's storage, or into the call's result.
template <class T>
class OutArgument {
public:
    OutArgument() = default;
    OutArgument(const OutArgument&) = delete;
    OutArgument& operator=(const OutArgument&) = delete;

    /// Nothing is lost when nobody asked for it or the call failed.
    ~OutArgument()
    {
        if constexpr (kIsBuffer) {
            CoTaskMemFree(m_value);
        } else if constexpr (kIsRecord) {
            // Making the receiver of the records may lack memory.
            if (m_value) {
                Guarded([&] {
                    TakeValue(1);
                    return S_OK;
                });
            }
        } else {
            TakeValue(1);
        }
    }

    HRESULT Load(const Passed& passed)
    {
        const VARIANT* value = passed.value;
        if (!value) return passed.MayBeMissing() ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        // A variable gives up its old value, and only when the call succeeds.
        if (value->vt == (VT_VARIANT | VT_BYREF)) {
            m_variant = value->pvarVal;
        } else if (kIsRecord && value->vt == (VT_RECORD | VT_BYREF) && value->pRecInfo) {
            // A record itself is no place for the address of others.
            return DISP_E_TYPEMISMATCH;
        } else if (!kIsBuffer && value->vt == (ResultType<T>() | VT_BYREF)) {
            m_target = static_cast<T*>(value->byref);
        } else {
            return DISP_E_TYPEMISMATCH;
        }
        if (!m_target && !m_variant) return E_POINTER;
        return m_variant && (passed.parameter.flags & kParameterIn) ? ReadInitial() : S_OK;
    }

    T* Pass() { return m_target ? m_target : &m_value; }

    /// After the call: hands over what the callee left in this holder.
    void Finish(VARIANT* result, ULONG count)
    {
        VARIANT* receiver = m_variant ? m_variant : result;
        if (m_target || !receiver) return;
        VariantClear(receiver);
        *receiver = TakeValue(count).Detach();
    }

    /// How many records go with this argument, if it is that which says so.
    ULONG Count()
    {
        if constexpr (std::is_same_v<T, LONG>) return static_cast<ULONG>(std::max(*Pass(), LONG{0}));
        return 1;
    }

private:
    /// Task memory, which the caller frees.
    static constexpr bool kIsBuffer = (ResultType<T>() & VT_BYREF) != 0;
    static constexpr bool kIsRecord = ResultType<T>() == VT_RECORD;

    /// A parameter that is read, too, starts with what the caller's storage holds.
    HRESULT ReadInitial()
    {
        if constexpr (std::is_same_v<T, BSTR>) {
            Variant text;
            const HRESULT result = VariantChangeType(&text, m_variant, 0, VT_BSTR);
            if (SUCCEEDED(result)) std::swap(m_value, text.bstrVal);
            return result;
        } else if constexpr (std::is_same_v<T, VARIANT>) {
            return VariantCopyInd(&m_value, m_variant);
        } else {
            return DISP_E_TYPEMISMATCH;
        }
    }

    /// The value with its ownership.
    Variant TakeValue(ULONG count)
    {
        if constexpr (kIsRecord) {
            using Type = std::remove_pointer_t<T>;
            return TakeRecords(kRecordDescription<Type>, std::exchange(m_value, nullptr), count);
        } else {
            Variant taken;
            StoreResult(taken, std::exchange(m_value, T{}));
            return taken;
        }
    }

    T* m_target = nullptr;
    VARIANT* m_variant = nullptr;
    T m_value{};
};

template <class T>
struct ArgumentFor {
    using type = InArgument<T>;
};

template <class T>
requires ParameterTraits<T>::kOut struct ArgumentFor<T> {
    using type = OutArgument<std::remove_pointer_t<T>>;
};

template <Record T>
struct ArgumentFor<T*> {
    using type = RecordArgument<T>;
};

template <class T>
using Argument = typename ArgumentFor<T>::type;

} // namespace kv::detail
