#pragma once
// The values of a node's attributes without their names: what an undo record keeps of it.

#include "platform/automation/Bstr.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

namespace kv {

/// Strings and numbers, each kind in an order that the node itself knows. One block holds them all: a record is made
/// for every object that is edited in a step.
class RecordedValues {
public:
    RecordedValues() = default;
    /// Null strings and zeros.
    RecordedValues(std::uint32_t strings, std::uint32_t numbers)
        : m_slots(std::make_unique<Slot[]>(strings + numbers)), m_strings(strings), m_numbers(numbers)
    {
    }
    RecordedValues(RecordedValues&& other) noexcept
        : m_slots(std::move(other.m_slots)),
          m_strings(std::exchange(other.m_strings, 0)),
          m_numbers(std::exchange(other.m_numbers, 0))
    {
    }
    RecordedValues& operator=(RecordedValues&& other) noexcept
    {
        std::swap(m_slots, other.m_slots);
        std::swap(m_strings, other.m_strings);
        std::swap(m_numbers, other.m_numbers);
        return *this;
    }
    ~RecordedValues()
    {
        for (std::uint32_t i = 0; i < m_strings; ++i)
            SysFreeString(m_slots[i].string);
    }

    RecordedValues Copy() const
    {
        RecordedValues copy(m_strings, m_numbers);
        for (std::uint32_t i = 0; i < m_strings; ++i)
            copy.m_slots[i].string = Bstr::Copy(m_slots[i].string);
        std::copy_n(m_slots.get() + m_strings, m_numbers, copy.m_slots.get() + m_strings);
        return copy;
    }

    /// Keeps a string and gives the one that was kept.
    Bstr Exchange(std::uint32_t index, Bstr value)
    {
        return Bstr::Attach(std::exchange(m_slots[index].string, value.Detach()));
    }

    template <class Number>
    Number Exchange(std::uint32_t index, Number value)
    {
        static_assert(std::is_trivially_copyable_v<Number> && sizeof(Number) <= sizeof(Slot::number));
        std::uint64_t& slot = m_slots[m_strings + index].number;
        Number before;
        std::memcpy(&before, &slot, sizeof before);
        std::memcpy(&slot, &value, sizeof value);
        return before;
    }

private:
    union Slot {
        BSTR string;
        std::uint64_t number;
    };

    std::unique_ptr<Slot[]> m_slots;
    std::uint32_t m_strings = 0;
    std::uint32_t m_numbers = 0;
};

} // namespace kv
