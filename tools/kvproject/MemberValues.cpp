#include "MemberValues.h"

#include "Failure.h"

#include <algorithm>
#include <charconv>

namespace kvproject {
namespace {

using kv::Variant;

Variant Converted(const std::string& text, VARTYPE type)
{
    Variant value(kv::ToUtf16(text));
    const HRESULT result = VariantChangeType(&value, &value, 0, type);
    if (FAILED(result)) throw Failure("'" + text + "': " + Describe(result));
    return value;
}

} // namespace

Json FloatValue(float value)
{
    char text[32];
    const auto* end = std::to_chars(std::begin(text), std::end(text), value).ptr;
    double same = 0.0;
    std::from_chars(text, end, same);
    return same;
}

Json ToJson(double value)
{
    return value;
}

Json ToJson(float value)
{
    return FloatValue(value);
}

Json ToJson(LONG value)
{
    return value;
}

Json ToJson(VARIANT_BOOL value)
{
    return value != VARIANT_FALSE;
}

Json ToJson(const kv::Bstr& value)
{
    return value.Get() ? Json(kv::ToUtf8(value.View())) : Json();
}

void Parse(const std::string& text, double& value)
{
    value = Converted(text, VT_R8).dblVal;
}

void Parse(const std::string& text, float& value)
{
    value = Converted(text, VT_R4).fltVal;
}

void Parse(const std::string& text, LONG& value)
{
    double number = 0.0;
    Parse(text, number);
    value = Converted(text, VT_I4).lVal;
    if (number != value) throw Failure("'" + text + "': a whole number is wanted");
}

void Parse(const std::string& text, VARIANT_BOOL& value)
{
    value = Converted(text, VT_BOOL).boolVal;
}

void Parse(const std::string& text, kv::Bstr& value)
{
    value = kv::Bstr(kv::ToUtf16(text));
}

std::string TextOf(const Json& value)
{
    if (value.is_null()) return {};
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) {
        // A whole number is written like one, as with other members.
        std::string text = value.dump();
        if (value.is_number_float() && text.ends_with(".0")) text.resize(text.size() - 2);
        return text;
    }
    std::string joined;
    for (const Json& item : value)
        joined += (joined.empty() ? "" : "|") + item.get<std::string>();
    return joined;
}

Member::Texts TextsOf(const std::vector<Json>& values)
{
    Member::Texts texts;
    for (const Json& value : values)
        texts.push_back(TextOf(value));
    return texts;
}

Member::Texts Split(std::string_view text, char separator)
{
    Member::Texts pieces;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        std::string_view piece = text.substr(0, end);
        while (piece.starts_with(' '))
            piece.remove_prefix(1);
        while (piece.ends_with(' '))
            piece.remove_suffix(1);
        pieces.emplace_back(piece);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

} // namespace kvproject
