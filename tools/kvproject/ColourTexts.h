#pragma once
// Colours as a person reads and writes them.

#include "KVProjectData/MenuRecords.h"

#include <string>
#include <string_view>
#include <utility>

namespace kvproject {

/// "#FF8000". Parsing throws Failure for any other text.
std::string ColourText(const RGBEntry& colour);
RGBEntry ParseColour(std::string_view text);

/// "3 at 15": a colour of the palette and its contrast. Parsing throws Failure for any other text.
std::string ContrastText(BYTE colour, BYTE contrast);
std::pair<BYTE, BYTE> ParseContrast(std::string_view text);

} // namespace kvproject
