#pragma once
// Length-prefixed UTF-16 strings and their owner.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <string>
#include <string_view>
#include <utility>

/// Copies `length` code units (or leaves them unset when `text` is null) and ends them with a zero.
/// Null on lack of memory.
KV_EXPORT BSTR SysAllocStringLen(const OLECHAR* text, ULONG length);

/// Copies zero-terminated text; null for null.
KV_EXPORT BSTR SysAllocString(const OLECHAR* text);

/// Null is allowed.
KV_EXPORT void SysFreeString(BSTR string);

/// In code units; 0 for null.
KV_EXPORT ULONG SysStringLen(BSTR string);

/// In bytes; 0 for null.
KV_EXPORT ULONG SysStringByteLen(BSTR string);

namespace kv {

/// The code units of a string; empty for null.
inline std::u16string_view View(BSTR string)
{
    return string ? std::u16string_view(string, SysStringLen(string)) : std::u16string_view();
}

/// Conversions between the encodings. Malformed input is mended with U+FFFD, never refused.
KV_EXPORT std::u16string ToUtf16(std::string_view utf8);
KV_EXPORT std::string ToUtf8(std::u16string_view utf16);

/// Owner of a BSTR.
class Bstr {
public:
    constexpr Bstr() = default;
    constexpr Bstr(std::nullptr_t) {}
    /// Throws Error(E_OUTOFMEMORY), as every copy here does.
    KV_EXPORT explicit Bstr(std::u16string_view text);
    Bstr(const Bstr& other) : m_string(Copy(other.m_string)) {}
    Bstr(Bstr&& other) noexcept : m_string(other.Detach()) {}
    ~Bstr() { SysFreeString(m_string); }

    Bstr& operator=(Bstr other) noexcept
    {
        std::swap(m_string, other.m_string);
        return *this;
    }

    /// Takes over a string that the caller owned.
    static Bstr Attach(BSTR string)
    {
        Bstr owner;
        owner.m_string = string;
        return owner;
    }

    /// A counted copy; null for null. Throws Error(E_OUTOFMEMORY).
    KV_EXPORT static BSTR Copy(BSTR string);

    static Bstr CopyOf(BSTR string) { return Attach(Copy(string)); }

    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_string, nullptr); }
    BSTR Get() const { return m_string; }
    explicit operator bool() const { return m_string != nullptr; }
    bool Empty() const { return SysStringLen(m_string) == 0; }
    std::u16string_view View() const { return kv::View(m_string); }

    /// The place where a callee stores a string for this owner.
    BSTR* Put()
    {
        SysFreeString(Detach());
        return &m_string;
    }

private:
    BSTR m_string = nullptr;
};

} // namespace kv
