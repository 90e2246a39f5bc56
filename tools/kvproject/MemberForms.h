#pragma once
// The forms that members have: a value of its own, several numbers, another element by its name.

#include "MemberValues.h"

#include <array>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kvproject {

/// A value that the object has a getter and perhaps a setter for.
template <class Interface, class T>
Member Single(std::string name, const kv::ComPtr<Interface>& object, HRESULT (Interface::*get)(T*),
              HRESULT (Interface::*put)(T) = nullptr)
{
    using Held = std::conditional_t<std::is_same_v<T, BSTR>, kv::Bstr, T>;
    Member member{std::move(name), {}, nullptr, nullptr};
    member.read = [object, get](std::vector<Json>& values) {
        Held held{};
        HRESULT result = S_OK;
        if constexpr (std::is_same_v<T, BSTR>) {
            result = ((*object).*get)(held.Put());
        } else {
            result = ((*object).*get)(&held);
        }
        values = {ToJson(held)};
        return result;
    };
    if constexpr (std::is_same_v<T, VARIANT_BOOL>) {
        member.names = [] { return Member::Texts{"true", "false"}; };
    }
    if (!put) return member;
    member.write = [object, put](const Member::Texts& texts) {
        Held held{};
        Parse(texts.at(0), held);
        if constexpr (std::is_same_v<T, BSTR>) {
            return ((*object).*put)(held.Get());
        } else {
            return ((*object).*put)(held);
        }
    };
    return member;
}

template <class T, std::size_t Count>
using Numbers = std::array<T, Count>;

/// Several numbers that are read together, and written together where there is a way to.
template <class T, std::size_t Count, class Read, class Write = std::nullptr_t>
Member Several(std::string name, const std::array<std::string_view, Count>& parts, Read&& read, Write&& write = nullptr)
{
    Member member{std::move(name), {parts.begin(), parts.end()}, nullptr, nullptr};
    member.read = [read](std::vector<Json>& values) {
        Numbers<T, Count> numbers{};
        const HRESULT result = read(numbers);
        for (const T number : numbers)
            values.push_back(ToJson(number));
        return result;
    };
    if constexpr (!std::is_null_pointer_v<std::decay_t<Write>>) {
        member.write = [write](const Member::Texts& texts) -> HRESULT {
            Numbers<T, Count> numbers{};
            for (std::size_t i = 0; i < Count; ++i)
                Parse(texts.at(i), numbers[i]);
            return write(numbers);
        };
    }
    return member;
}

constexpr std::array<std::string_view, 4> kEdges{"Left", "Top", "Right", "Bottom"};
constexpr std::array<std::string_view, 2> kPoint{"X", "Y"};
constexpr std::array<std::string_view, 2> kSize{"Width", "Height"};
constexpr std::array<std::string_view, 4> kFrame{"CenterX", "CenterY", "Width", "Height"};
using Edges = Numbers<float, 4>;
using Pair = Numbers<float, 2>;

Edges EdgesOf(const FloatRect& rect);
FloatRect RectOf(const Edges& edges);

/// The name of an element of the menu; its ID as text where there is none.
Json Reference(const MenuView* view, LONG id);
/// The other way. Throws Failure for what is no element's name.
LONG Referenced(const MenuView* view, const std::string& text);

} // namespace kvproject
