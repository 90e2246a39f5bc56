#pragma once
// The data types of elements: how their text and their typed values turn into each other.

#include "platform/automation/Variant.h"

#include <string>
#include <string_view>

namespace kv {

bool IsDataType(std::string_view type);

/// The value of a text; a string for the empty type. Throws Error where the text is no such value.
Variant ParseTyped(std::string_view type, std::string_view text);

/// The text of a value. Throws Error where the value is not of the type.
std::u16string FormatTyped(std::string_view type, const VARIANT& value);

} // namespace kv
