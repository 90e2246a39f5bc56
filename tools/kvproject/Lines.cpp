#include "Lines.h"

#include "Failure.h"
#include "platform/system/Case.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <editline/readline.h>
#include <iostream>
#include <memory>
#include <string_view>
#include <unistd.h>

namespace kvproject {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

char wordBreaks[] = " \t=";

/// The completion of the terminal's line is one for the process.
Lines::Words completionWords;

/// One match after the other, in new memory of the C library; null at the end.
char* NextMatch(const char* word, int state)
{
    static std::vector<std::string> words;
    static std::size_t next;
    if (state == 0) {
        words = completionWords();
        next = 0;
    }
    while (next < words.size()) {
        const std::string& candidate = words[next++];
        if (kv::StartsWithText(candidate, word)) return strdup(candidate.c_str());
    }
    return nullptr;
}

/// Null, where names of files are tried, without a match.
char** Complete(const char* word, int, int)
{
    return rl_completion_matches(word, &NextMatch);
}

} // namespace

Lines::Lines(const std::string& script, Words words)
    : m_typed(script.empty() && isatty(STDIN_FILENO)),
      m_name(script.empty() ? "the standard input" : script),
      m_script(script),
      m_input(script.empty() ? std::cin : m_script)
{
    if (!m_input) throw Failure("cannot read " + m_name);
    completionWords = std::move(words);
    rl_attempted_completion_function = &Complete;
    rl_completer_word_break_characters = wordBreaks;
    rl_completion_append_character = '\0';
}

Lines::~Lines()
{
    rl_attempted_completion_function = nullptr;
    completionWords = nullptr;
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
