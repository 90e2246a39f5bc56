#include "Lines.h"

#include "Failure.h"

#include <cstdio>
#include <cstdlib>
#include <editline/readline.h>
#include <iostream>
#include <memory>
#include <string_view>
#include <unistd.h>

namespace kvproject {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

} // namespace

Lines::Lines(const std::string& script)
    : m_typed(script.empty() && isatty(STDIN_FILENO)),
      m_name(script.empty() ? "the standard input" : script),
      m_script(script),
      m_input(script.empty() ? std::cin : m_script)
{
    if (!m_input) throw Failure("cannot read " + m_name);
}

std::optional<std::string> Lines::Next()
{
    ++m_number;
    if (!m_typed) {
        std::string line;
        if (std::getline(m_input, line)) {
            if (m_number == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
            return line;
        }
        // A folder can be opened, but not be read; of the standard input only the C library tells.
        if (!m_input.eof() || std::ferror(stdin)) throw Failure("cannot read " + m_name);
        return std::nullopt;
    }
    const std::unique_ptr<char, decltype(&std::free)> line(readline("kvproject> "), &std::free);
    if (!line) return std::nullopt;
    if (*line) add_history(line.get());
    return std::string(line.get());
}

} // namespace kvproject
