#pragma once
// Markup as tests compare it.

#include <string>

namespace kv::test {

/// Without line ends and the blanks behind them, and without declarations of the prefix of data types.
inline std::string Plain(std::string markup)
{
    for (std::size_t at = 0; (at = markup.find('\n', at)) != markup.npos;)
        markup.erase(at, markup.find_first_not_of(' ', at + 1) - at);
    for (std::size_t at = 0; (at = markup.find(" xmlns:dt=\"", at)) != markup.npos;)
        markup.erase(at, markup.find('"', markup.find('"', at) + 1) + 1 - at);
    return markup;
}

} // namespace kv::test
