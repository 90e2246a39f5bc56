#pragma once
// Rows of member tables, with the code that unpacks a late-bound call into the member.

#include "platform/automation/SafeArray.h"
#include "platform/automation/TypeDescription.h"
#include "platform/com/Object.h"

#include <tuple>
#include <utility>

namespace kv {
namespace detail {

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

/// An argument that the member takes by value; text and objects stay the caller's.
template <class T>
class InArgument {
public:
    HRESULT Load(VARIANT* value, bool optional)
    {
        if (!value) return optional ? S_OK : DISP_E_PARAMNOTOPTIONAL;
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
class InArgument<T*> {
public:
    HRESULT Load(VARIANT* value, bool optional)
    {
        if (!value) return optional ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        Variant object;
        const HRESULT result = VariantCopyInd(&object, value);
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

/// An array of records, which only a caller in the same process can pass: by its address.
template <Record T>
class InArgument<T*> {
public:
    HRESULT Load(VARIANT* value, bool optional)
    {
        if (!value) return optional ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        if (value->vt == VT_EMPTY || value->vt == VT_NULL) return S_OK;
        if (value->vt != (VT_RECORD | VT_BYREF)) return DISP_E_TYPEMISMATCH;
        m_records = static_cast<T*>(value->byref);
        return S_OK;
    }

    T* Pass() { return m_records; }

private:
    T* m_records = nullptr;
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
    ~OutArgument() { TakeValue(); }

    HRESULT Load(VARIANT* value, bool optional, bool isResult)
    {
        if (!value) return optional || isResult ? S_OK : DISP_E_PARAMNOTOPTIONAL;
        // A variable gives up its old value, and only when the call succeeds.
        if (value->vt == (VT_VARIANT | VT_BYREF) && ResultType<T>() != VT_RECORD) {
            m_variant = value->pvarVal;
        } else if (value->vt == (ResultType<T>() | VT_BYREF)) {
            m_target = static_cast<T*>(value->byref);
        } else {
            return DISP_E_TYPEMISMATCH;
        }
        return m_target || m_variant ? S_OK : E_POINTER;
    }

    /// A parameter that is read, too, starts with what the caller's storage holds.
    HRESULT ReadInitial()
    {
        if (!m_variant) return S_OK;
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

    T* Pass() { return m_target ? m_target : &m_value; }

    /// After the call: hands over what the callee left in this holder.
    void Finish(VARIANT* result)
    {
        VARIANT* receiver = m_variant ? m_variant : result;
        if (m_target || !receiver) return;
        VariantClear(receiver);
        *receiver = TakeValue().Detach();
    }

private:
    /// The value with its ownership, so that nothing is lost when nobody asked for it or the call failed.
    Variant TakeValue()
    {
        Variant taken;
        if constexpr (ResultType<T>() != VT_RECORD) StoreResult(taken, std::exchange(m_value, T{}));
        return taken;
    }

    T* m_target = nullptr;
    VARIANT* m_variant = nullptr;
    T m_value{};
};

template <class T>
using Argument = std::conditional_t<ParameterTraits<T>::kOut, OutArgument<std::remove_pointer_t<T>>, InArgument<T>>;

template <auto Function>
struct MemberOf;

template <class Owner, class... Arguments, HRESULT (Owner::*Function)(Arguments...)>
struct MemberOf<Function> {
    using Interface = Owner;

    static HRESULT Call(void* self, ArgumentList& list, VARIANT* result)
    {
        return Call(self, list, result, std::index_sequence_for<Arguments...>());
    }

    template <std::size_t Count>
    static consteval MemberDescription Describe(const char* name, DISPID id, WORD kind,
                                                const std::array<ParameterName, Count>& names)
    {
        MemberDescription member;
        member.name = name;
        member.id = id;
        member.kind = kind;
        FillParameters<Arguments...>(member, names);
        member.thunk = &Call;
        return member;
    }

private:
    template <std::size_t... I>
    static HRESULT Call(void* self, ArgumentList& list, VARIANT* result, std::index_sequence<I...>)
    {
        std::tuple<Argument<Arguments>...> holders;
        HRESULT loaded = S_OK;
        [[maybe_unused]] const auto load = [&]<class T>(Argument<T>& holder, std::size_t index) {
            loaded = Load<T>(holder, list, index);
            if (FAILED(loaded)) list.bad = static_cast<BYTE>(index);
            return SUCCEEDED(loaded);
        };
        // Stops at the first argument that does not fit.
        if (!(load.template operator()<Arguments>(std::get<I>(holders), I) && ...)) return loaded;
        const HRESULT called = (static_cast<Owner*>(self)->*Function)(std::get<I>(holders).Pass()...);
        (Finish<Arguments>(std::get<I>(holders), called, list.retval == I ? result : nullptr), ...);
        return called;
    }

    template <class T>
    static HRESULT Load(Argument<T>& holder, ArgumentList& list, std::size_t index)
    {
        const bool optional = list.optional >> index & 1;
        if constexpr (ParameterTraits<T>::kOut) {
            const HRESULT result = holder.Load(list.values[index], optional, list.retval == index);
            return FAILED(result) || !(list.inOut >> index & 1) ? result : holder.ReadInitial();
        } else {
            return holder.Load(list.values[index], optional);
        }
    }

    template <class T>
    static void Finish(Argument<T>& holder, HRESULT called, VARIANT* result)
    {
        if constexpr (ParameterTraits<T>::kOut) {
            if (SUCCEEDED(called)) holder.Finish(result);
        }
    }
};

} // namespace detail

/// Row of a read-only property.
template <auto Getter>
consteval auto Get(const char* name, DISPID id)
{
    return std::array{
        detail::MemberOf<Getter>::Describe(name, id, DISPATCH_PROPERTYGET, std::array<ParameterName, 1>{"pVal"})};
}

/// Rows of a property with its getter and its setter.
template <auto Getter, auto Setter>
consteval auto GetPut(const char* name, DISPID id)
{
    return std::array{
        detail::MemberOf<Getter>::Describe(name, id, DISPATCH_PROPERTYGET, std::array<ParameterName, 1>{"pVal"}),
        detail::MemberOf<Setter>::Describe(name, id, DISPATCH_PROPERTYPUT, std::array<ParameterName, 1>{"newVal"})};
}

/// Row of a method, with a name for each parameter.
template <auto Function, class... Names>
consteval auto Method(const char* name, DISPID id, Names... names)
{
    return std::array{detail::MemberOf<Function>::Describe(name, id, DISPATCH_METHOD,
                                                           std::array<ParameterName, sizeof...(Names)>{names...})};
}

/// Row of an event, which has parameters of the given types and no slot.
template <class... Types, class... Names>
consteval auto Event(const char* name, DISPID id, Names... names)
{
    MemberDescription member;
    member.name = name;
    member.id = id;
    detail::FillParameters<Types...>(member, std::array<ParameterName, sizeof...(Names)>{names...});
    return std::array{member};
}

} // namespace kv
