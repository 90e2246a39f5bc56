#pragma once
// What tests of rich texts share: every getter of a helper as one line, every setter by name.

#include "KVProjectData/effects/ZXPTextPlugInHelper.h"
#include "support/Markup.h"

#include <gtest/gtest.h>

#include <string>

namespace kv::test {

inline XmlElement TextData(const std::string& content)
{
    return XmlElement::Parse("<plugin_data><html><body>" + content + "</body></html></plugin_data>");
}

/// What stands in the body. The helper writes nothing else in a document of texts alone before it is saved.
inline std::string BodyOf(const XmlElement& data)
{
    const std::string markup = Plain(data.Child("html").Child("body").Markup());
    return markup == "<body/>" ? "" : markup.substr(6, markup.size() - 13);
}

/// A value with what a getter answered: nothing for S_OK, "?" for S_FALSE.
template <class T, class Get>
std::string Answer(const Get& get, std::string (*print)(const T&))
{
    T value{};
    const HRESULT result = get(&value);
    std::string text = print(value);
    if constexpr (std::is_same_v<T, BSTR>) SysFreeString(value);
    return text + (result == S_FALSE ? "?" : result == S_OK ? "" : "!");
}

inline std::string Decimal(const LONG& value)
{
    return std::to_string(value);
}

inline std::string Hex(const ULONG& value)
{
    char text[16];
    std::snprintf(text, sizeof text, "%x", value);
    return text;
}

inline std::string Words(const BSTR& value)
{
    return value ? ToUtf8(View(value)) : "null";
}

/// "face height heightString justify styleId style colour string".
inline std::string Told(const CZXPTextPlugInHelper& text)
{
    using Helper = CZXPTextPlugInHelper;
    const auto get = [&](auto member) { return [&text, member](auto* out) { return (text.*member)(out); }; };
    return Answer<BSTR>(get(&Helper::get_Face), Words) + " " + Answer<LONG>(get(&Helper::get_Height), Decimal) + " " +
           Answer<BSTR>(get(&Helper::get_HeightString), Words) + " " + Answer<ULONG>(get(&Helper::get_Justify), Hex) +
           " " + Answer<LONG>(get(&Helper::get_SelectedStyleId), Decimal) + " " +
           Answer<ULONG>(get(&Helper::get_Style), Hex) + " " + Answer<ULONG>(get(&Helper::get_Color), Hex) + " '" +
           Answer<BSTR>(get(&Helper::get_String), Words) + "'";
}

/// Numbers of styles and colours are hexadecimal.
inline HRESULT Put(CZXPTextPlugInHelper& text, const std::string& name, const std::string& value)
{
    const Bstr words(ToUtf16(value));
    const auto number = [&](int base) { return std::strtoll(value.c_str(), nullptr, base); };
    if (name == "face") return text.put_Face(words.Get());
    if (name == "height") return text.put_Height(static_cast<LONG>(number(10)));
    if (name == "heightString") return text.put_HeightString(words.Get());
    if (name == "justify") return text.put_Justify(static_cast<ULONG>(number(10)));
    if (name == "styleId") return text.put_SelectedStyleId(static_cast<LONG>(number(10)));
    if (name == "style") return text.put_Style(static_cast<ULONG>(number(16)));
    if (name == "colour") return text.put_Color(static_cast<ULONG>(number(16)));
    return text.put_String(words.Get());
}

} // namespace kv::test
