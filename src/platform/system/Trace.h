#pragma once
// What only those who debug the library read.

#include <string_view>

#ifndef NDEBUG
#include <iostream>
#endif

namespace kv {

/// Writes a text to standard error; nothing in a release build.
inline void Trace([[maybe_unused]] std::string_view text)
{
#ifndef NDEBUG
    std::cerr << text;
#endif
}

} // namespace kv
