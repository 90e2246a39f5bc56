#include "KVProjectData/effects/TextCommand.h"

#include "platform/com/Error.h"

#include <algorithm>

namespace kv {
namespace {

/// Takes characters off a template.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    /// What stands before the first of some characters, which is taken, too. Throws Error(E_FAIL) when none follows.
    std::string_view Until(std::string_view ends, char& end)
    {
        const std::size_t at = m_rest.find_first_of(ends);
        if (at == m_rest.npos) throw Error(E_FAIL);
        const std::string_view taken = m_rest.substr(0, at);
        end = m_rest[at];
        m_rest.remove_prefix(at + 1);
        return taken;
    }

    /// A value, and the "," or ">" that ends it.
    std::string Value(char& end)
    {
        std::string value;
        while (true) {
            value += Until(",>;\\", end);
            if (end == ',' || end == '>') return value;
            if (end == ';') {
                value += ',';
            } else if (m_rest.empty()) {
                throw Error(E_FAIL);
            } else {
                value += m_rest.front();
                m_rest.remove_prefix(1);
            }
        }
    }

private:
    std::string_view m_rest;
};

std::string_view WithoutBlanks(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

} // namespace

TextCommand TextCommand::Parse(std::string_view text)
{
    constexpr std::string_view kModes = "fxre";
    if (text.size() < 2 || kModes.find(text[0]) == kModes.npos || text[1] != ':') throw Error(E_FAIL);
    TextCommand command;
    command.mode = text[0];
    if (command.mode == 'r') {
        command.text = text.substr(2);
        return command;
    }
    if (text.substr(2, 1) != "<") throw Error(E_FAIL);
    Scanner scanner(text.substr(3));
    char end = '>';
    command.element = scanner.Until(" >", end);
    while (end != '>') {
        const std::string_view key = WithoutBlanks(scanner.Until("=>", end));
        if (end == '>' && key.empty()) break;
        if (end == '>') throw Error(E_FAIL);
        std::string value = scanner.Value(end);
        command.attributes.emplace_back(key, std::move(value));
    }
    return command;
}

std::string InCommand(std::string_view value)
{
    std::string text;
    for (const char c : value) {
        if (c == ';' || c == '>' || c == '\\') text += '\\';
        text += c == ',' ? ';' : c;
    }
    return text;
}

} // namespace kv
