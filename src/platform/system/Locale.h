#pragma once
// What depends on the user's language.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <optional>
#include <string_view>

/// The language that the thread speaks; at first the user's default.
KV_EXPORT LCID GetThreadLocale();
KV_EXPORT void SetThreadLocale(LCID locale);

namespace kv {

/// Sets the thread's locale for a scope.
class ThreadLocaleScope {
public:
    explicit ThreadLocaleScope(LCID locale) : m_before(GetThreadLocale()) { SetThreadLocale(locale); }
    ThreadLocaleScope(const ThreadLocaleScope&) = delete;
    ThreadLocaleScope& operator=(const ThreadLocaleScope&) = delete;
    ~ThreadLocaleScope() { SetThreadLocale(m_before); }

private:
    LCID m_before;
};

/// A decimal number with "." as its point, with blanks around it. "," may part the digits before the point into groups
/// of three. Empty for anything else.
KV_EXPORT std::optional<double> ParseDoubleUS(std::u16string_view text);

/// The same with the decimal point, the separators and the groups of the user's language.
KV_EXPORT std::optional<double> ParseDoubleUserLocale(std::u16string_view text);

} // namespace kv
