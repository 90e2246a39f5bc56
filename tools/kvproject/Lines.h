#pragma once
// Lines of commands: typed at a terminal, with a prompt and a history, or read from a script.

#include <fstream>
#include <iosfwd>
#include <optional>
#include <string>

namespace kvproject {

class Lines {
public:
    /// From a script, or without one from standard input. Throws Failure when the script cannot be read.
    explicit Lines(const std::string& script);

    /// Empty at the end. Throws Failure when reading fails before it.
    std::optional<std::string> Next();

    /// Of the line that was read last; they count from 1.
    int Number() const { return m_number; }
    /// A person types the lines.
    bool Typed() const { return m_typed; }

private:
    const bool m_typed;
    const std::string m_name;
    std::ifstream m_script;
    std::istream& m_input;
    int m_number = 0;
};

} // namespace kvproject
