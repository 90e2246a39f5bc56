#pragma once
// The base of objects that are aggregates: the interfaces of their inner objects are theirs, too.

#include "platform/com/Object.h"

#include <tuple>

namespace kv {

/// The classes of an aggregate's inner objects.
template <class... Classes>
struct Parts;

template <class List, class... Interfaces>
class Aggregate;

/// Answers for `Interfaces` and then for the interfaces of its parts, which are asked in the order of the list. A part
/// exists from `MakePart` to `ReleaseParts`.
template <class... Classes, class... Interfaces>
class Aggregate<Parts<Classes...>, Interfaces...> : public Object<Interfaces...> {
public:
    using Object<Interfaces...>::Object;

protected:
    HRESULT FindInterface(REFIID iid, void** out) override
    {
        HRESULT result = Object<Interfaces...>::FindInterface(iid, out);
        const auto ask = [&](const auto& part) {
            if (result == E_NOINTERFACE && part) result = part->Inner()->QueryInterface(iid, out);
        };
        std::apply([&](const auto&... parts) { (ask(parts), ...); }, m_parts);
        return result;
    }

    /// Throws on lack of memory.
    template <class T, class... Arguments>
    T& MakePart(Arguments&&... arguments)
    {
        Aggregated<T>& part = std::get<Aggregated<T>>(m_parts);
        part = MakeInner<T>(this->Controlling(), std::forward<Arguments>(arguments)...);
        return *part.Get();
    }

    template <class T>
    T& Part() const
    {
        return *std::get<Aggregated<T>>(m_parts).Get();
    }

    /// Releases the parts in the order of the list.
    void ReleaseParts()
    {
        std::apply([](auto&... parts) { (parts.Reset(), ...); }, m_parts);
    }

private:
    std::tuple<Aggregated<Classes>...> m_parts;
};

} // namespace kv
