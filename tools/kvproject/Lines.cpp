#include "Lines.h"

#include "Failure.h"

#include <cstdlib>
#include <editline/readline.h>
#include <iostream>
#include <memory>
#include <unistd.h>

namespace kvproject {

Lines::Lines(const std::string& script)
    : m_typed(script.empty() && isatty(STDIN_FILENO)), m_script(script), m_input(script.empty() ? std::cin : m_script)
{
    if (!script.empty() && !m_script) throw Failure("cannot read " + script);
}

std::optional<std::string> Lines::Next()
{
    ++m_number;
    if (!m_typed) {
        std::string line;
        return std::getline(m_input, line) ? std::optional(std::move(line)) : std::nullopt;
    }
    const std::unique_ptr<char, decltype(&std::free)> line(readline("kvproject> "), &std::free);
    if (!line) return std::nullopt;
    if (*line) add_history(line.get());
    return std::string(line.get());
}

} // namespace kvproject
