#pragma once
// Edits of a rich text, as short markup:
//
//     f:<b></b>                                        forces a style on all of the text
//     x:<b></b>                                        takes it away
//     f:<font color=#11223344,faceTexture=0></font>    forces attributes
//     r:words                                          replaces the text
//
// Attributes are parted by ",". In a value ";" stands for ",", and a backslash takes the next character as it is.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kv {

/// As the value of an attribute: the attribute is removed.
inline constexpr std::string_view kRemoveAttribute = "TEXTED_REMOVE";

struct TextCommand {
    /// 'f', 'x', 'r', or 'e', which edits nothing.
    char mode = 'e';
    /// What 'f' forces, and 'x' takes away.
    std::string element;
    std::vector<std::pair<std::string, std::string>> attributes;
    /// What 'r' puts in the place of the text.
    std::string text;

    /// Throws Error(E_FAIL) for what is no command.
    static TextCommand Parse(std::string_view text);
};

/// A value as it stands in a command.
std::string InCommand(std::string_view value);

} // namespace kv
