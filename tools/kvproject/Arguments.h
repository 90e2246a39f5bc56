#pragma once
// The words behind a command of the editor.

#include "platform/com/BaseTypes.h"

#include <string>
#include <string_view>

namespace kvproject {

std::string_view Trimmed(std::string_view text);

/// The first word; `text` keeps what follows.
std::string_view TakeWord(std::string_view& text);

/// Throws Failure.
LONG ParsePosition(std::string_view text);

/// What "add" names, and where it is to stand; 0 is behind the last.
struct Addition {
    std::string name;
    LONG place;
};

/// Reads "NAME [at N]". A name that ends like a place itself stands in double quotes.
Addition ParseAddition(std::string_view text);

/// The same with the path of the object that it is put into; empty where none is said.
struct Placement {
    std::string name;
    std::string owner;
    LONG place;
};

/// Reads "[NAME] [to OWNER] [at N]".
Placement ParsePlacement(std::string_view text);

} // namespace kvproject
