#pragma once
// Lines of commands: typed at a terminal, with a prompt and a history, or read from a script.

#include <fstream>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace kvproject {

class Lines {
public:
    /// What a word of a typed line can become.
    using Words = std::function<std::vector<std::string>()>;

    /// From a script, or without one from standard input. Throws Failure when the script cannot be read.
    Lines(const std::string& script, Words words);
    ~Lines();
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

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
