#pragma once
// Texts on their way from a person and to the terminal: UTF-8, checked on the one way and escaped on the other.

#include <string>
#include <string_view>

namespace kvproject {

/// Throws Failure for bytes that are no UTF-8: they would be mended, and a mended file name is that of another file.
void RequireUtf8(std::string_view text);

/// Throws Failure, beginning with `what`, that names the first character which a project file cannot hold, and where in
/// `text` it stands.
void RequireStorable(std::string_view text, const std::string& what);
/// The same for the name of a file, which it tells itself.
void RequireStorableName(std::string_view name);

/// The name of a file or folder as the system has it: "back\slash.xml" is that file, or slash.xml in the folder back.
std::string HostPath(std::string_view name);

/// The text as it can be shown within a line. One with characters that would end the line, steer the terminal or turn
/// the direction of writing stands in double quotes, with these, backslashes and quotes escaped: "a\nb\u009B". U+FFFD
/// stands for what is no UTF-8.
std::string Shown(std::string_view text);

} // namespace kvproject
