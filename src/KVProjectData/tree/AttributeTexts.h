#pragma once
// The values of attributes as a document's text, which is UTF-8.

#include "platform/automation/Bstr.h"

#include <optional>
#include <string>
#include <string_view>

namespace kv {

/// These throw Error with DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW for a text that is no such number.
LONG ParseLong(std::string_view text);
ULONG ParseULong(std::string_view text);
float ParseFloat(std::string_view text);
double ParseDouble(std::string_view text);
/// Throws Error with DISP_E_OVERFLOW also for what no byte holds.
BYTE ParseByte(std::string_view text);
/// An object ID, which is written unsigned and held signed.
LONG ParseID(std::string_view text);
/// Any non-zero number, and the word true, is true.
bool ParseBool(std::string_view text);

/// The 32 bits of the integer, signed or unsigned, that the text starts with; nothing when it starts with none.
std::optional<ULONG> ParseLeading(std::string_view text);

/// The hexadecimal digits after a lower-case "0x"; all bits set for any other text.
ULONG ParseHex(std::string_view text);

void AppendNumber(LONG value, std::string& text);
void AppendNumber(ULONG value, std::string& text);
/// The shortest text that reads back to the same value. Throw Error(DISP_E_TYPEMISMATCH) for what is not finite, which
/// has no text.
void AppendNumber(float value, std::string& text);
void AppendNumber(double value, std::string& text);
/// "0x" and at least so many digits, in capitals.
void AppendHex(ULONG value, int digits, std::string& text);

} // namespace kv
