#pragma once
// The values of members, as JSON and as text.

#include "Members.h"
#include "platform/automation/Bstr.h"

#include <string>
#include <string_view>
#include <vector>

namespace kvproject {

/// With the digits that tell it from other floats, no more.
Json FloatValue(float value);

Json ToJson(double value);
Json ToJson(float value);
Json ToJson(LONG value);
Json ToJson(VARIANT_BOOL value);
Json ToJson(const kv::Bstr& value);

/// Throw Failure for a text that is no such value.
void Parse(const std::string& text, double& value);
void Parse(const std::string& text, float& value);
void Parse(const std::string& text, LONG& value);
void Parse(const std::string& text, VARIANT_BOOL& value);
void Parse(const std::string& text, kv::Bstr& value);

/// As a person reads it: null is empty, names in an array are parted by "|".
std::string TextOf(const Json& value);
Member::Texts TextsOf(const std::vector<Json>& values);

/// Without the spaces around the pieces. A separator at the end begins no piece.
Member::Texts Split(std::string_view text, char separator);

} // namespace kvproject
