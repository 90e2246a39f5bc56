#pragma once
// Rows of member tables, with the code that unpacks a late-bound call into the member.

#include "platform/automation/Arguments.h"
#include "platform/com/Object.h"

#include <tuple>

namespace kv {
namespace detail {

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
    using Holders = std::tuple<Argument<Arguments>...>;

    template <std::size_t... I>
    static HRESULT Call(void* self, ArgumentList& list, VARIANT* result, std::index_sequence<I...>)
    {
        Holders holders;
        HRESULT loaded = S_OK;
        [[maybe_unused]] const auto load = [&](auto& holder, std::size_t index) {
            const ParameterDescription& parameter = list.member.parameters[index];
            const bool counted = parameter.counter != ParameterDescription::kNone;
            loaded = holder.Load({list.values[index], parameter, counted ? list.values[parameter.counter] : nullptr});
            if (FAILED(loaded)) list.bad = static_cast<BYTE>(index);
            return SUCCEEDED(loaded);
        };
        // Stops at the first argument that does not fit.
        if (!(load(std::get<I>(holders), I) && ...)) return loaded;
        const HRESULT called = (static_cast<Owner*>(self)->*Function)(std::get<I>(holders).Pass()...);
        if (FAILED(called)) return called;
        [[maybe_unused]] const std::array<ULONG, sizeof...(I)> counts{std::get<I>(holders).Count()...};
        [[maybe_unused]] const auto finish = [&](auto& holder, std::size_t index) {
            const ParameterDescription& parameter = list.member.parameters[index];
            const bool counted = parameter.counter != ParameterDescription::kNone;
            holder.Finish(parameter.flags & kParameterRetval ? result : nullptr,
                          counted ? counts[parameter.counter] : parameter.count);
        };
        (finish(std::get<I>(holders), I), ...);
        return called;
    }
};

} // namespace detail

/// Row of a read-only property. Names of parameters before the value may follow.
template <auto Getter, class... Names>
consteval auto Get(const char* name, DISPID id, Names... names)
{
    constexpr std::size_t kCount = sizeof...(Names) + 1;
    return std::array{detail::MemberOf<Getter>::Describe(name, id, DISPATCH_PROPERTYGET,
                                                         std::array<ParameterName, kCount>{names..., "pVal"})};
}

/// Rows of a property with its getter and its setter.
template <auto Getter, auto Setter, class... Names>
consteval auto GetPut(const char* name, DISPID id, Names... names)
{
    constexpr std::size_t kCount = sizeof...(Names) + 1;
    return std::array{detail::MemberOf<Getter>::Describe(name, id, DISPATCH_PROPERTYGET,
                                                         std::array<ParameterName, kCount>{names..., "pVal"}),
                      detail::MemberOf<Setter>::Describe(name, id, DISPATCH_PROPERTYPUT,
                                                         std::array<ParameterName, kCount>{names..., "newVal"})};
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
