#pragma once
// Bytes as choices.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace kv::fuzz {

/// Takes choices from the input; zeros when it has run out.
class Choices {
public:
    Choices(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool Any() const { return m_next != m_end; }

    template <class T>
    T Take()
    {
        T value{};
        const std::size_t count = std::min(sizeof value, static_cast<std::size_t>(m_end - m_next));
        std::memcpy(&value, m_next, count);
        m_next += count;
        return value;
    }

    std::size_t Below(std::size_t count) { return count ? Take<std::uint8_t>() % count : 0; }

    std::u16string Text()
    {
        std::u16string text(Below(12), u'\0');
        for (char16_t& unit : text)
            unit = Below(8) ? Take<std::uint8_t>() : Take<std::uint16_t>();
        return text;
    }

    /// What stands before the first zero byte, which is taken, too.
    std::string_view Line()
    {
        const std::uint8_t* const end = std::find(m_next, m_end, std::uint8_t{0});
        const std::string_view line(reinterpret_cast<const char*>(m_next), static_cast<std::size_t>(end - m_next));
        m_next = end == m_end ? end : end + 1;
        return line;
    }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

} // namespace kv::fuzz
