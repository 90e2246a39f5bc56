#pragma once
// The data types of elements: their names, and how typed values turn into text and back.

#include "platform/automation/Variant.h"

#include <string>
#include <string_view>

namespace kv {

/// The attribute that names an element's data type, the one that declares its prefix, and what that one says.
inline constexpr const char* kDataTypeAttribute = "dt:dt";
inline constexpr const char* kDataTypePrefix = "xmlns:dt";
inline constexpr const char* kDataTypeNamespace = "urn:schemas-microsoft-com:datatypes";

/// The name of the data type that holds values of a VARTYPE without loss; empty for VT_EMPTY, which an element without
/// data type and text stands for, and for types that no element can hold.
KV_EXPORT std::string_view DataTypeName(VARTYPE type);

/// VT_EMPTY for a name that is none.
KV_EXPORT VARTYPE DataTypeOf(std::string_view name);

/// The value of a text, by the name of a data type; a string for other names, and VT_EMPTY without name and text.
/// Throws Error where the text is no such value.
Variant ParseTyped(std::string_view type, std::string_view text);

/// The text of a value, by the name of a data type. Throws Error where the value is not of the type.
std::u16string FormatTyped(std::string_view type, const VARIANT& value);

} // namespace kv
