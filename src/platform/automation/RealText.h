#pragma once
// The text of real numbers.

#include <charconv>
#include <cmath>

namespace kv {

/// The fewest digits that read back to the same value, with an exponent only for very large or small ones. The value is
/// finite; 32 characters hold every text.
template <class Real>
char* PrintReal(char* begin, char* end, Real value)
{
    const Real size = std::abs(value);
    const bool plain = size == 0 || (size >= Real(1e-5) && size < Real(1e15));
    return std::to_chars(begin, end, value, plain ? std::chars_format::fixed : std::chars_format::scientific).ptr;
}

} // namespace kv
