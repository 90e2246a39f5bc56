#pragma once
// What tests of rich texts share: every getter of a helper, and every setter by name.

#include "KVProjectData/effects/ZXPTextPlugInHelper.h"
#include "support/Markup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

namespace kv::test {

inline XmlElement TextData(const std::string& content)
{
    return XmlElement::Parse("<plugin_data><html><body>" + content + "</body></html></plugin_data>");
}

/// What stands in the body, with apostrophes for quotation marks.
inline std::string BodyOf(const XmlElement& data)
{
    std::string markup = Plain(data.Child("html").Child("body").Markup());
    std::ranges::replace(markup, '"', '\'');
    return markup == "<body/>" ? "" : markup.substr(6, markup.size() - 13);
}

/// A getter's value, and "?" for S_FALSE, "!" for a failure.
template <class T>
std::string Answer(const CZXPTextPlugInHelper& text, HRESULT (CZXPTextPlugInHelper::*get)(T*) const)
{
    T value{};
    const HRESULT result = (text.*get)(&value);
    std::string answer;
    if constexpr (std::is_same_v<T, BSTR>) {
        answer = value ? ToUtf8(Bstr::Attach(value).View()) : "null";
    } else if constexpr (std::is_same_v<T, LONG>) {
        answer = std::to_string(value);
    } else {
        char hex[16];
        std::snprintf(hex, sizeof hex, "%x", value);
        answer = hex;
    }
    return answer + (result == S_FALSE ? "?" : result == S_OK ? "" : "!");
}

/// What each getter answers, by the name of its setter.
inline std::map<std::string, std::string> Answers(const CZXPTextPlugInHelper& text)
{
    using Helper = CZXPTextPlugInHelper;
    return {{"face", Answer(text, &Helper::get_Face)},
            {"height", Answer(text, &Helper::get_Height)},
            {"heightString", Answer(text, &Helper::get_HeightString)},
            {"justify", Answer(text, &Helper::get_Justify)},
            {"styleId", Answer(text, &Helper::get_SelectedStyleId)},
            {"style", Answer(text, &Helper::get_Style)},
            {"colour", Answer(text, &Helper::get_Color)},
            {"string", Answer(text, &Helper::get_String)}};
}

/// "face height heightString justify styleId style colour 'string'".
inline std::string Told(const CZXPTextPlugInHelper& text)
{
    auto answers = Answers(text);
    std::string told;
    for (const char* name : {"face", "height", "heightString", "justify", "styleId", "style", "colour"})
        told += answers[name] + " ";
    return told + "'" + answers["string"] + "'";
}

/// "name=value"; styles and colours are hexadecimal.
inline HRESULT Put(CZXPTextPlugInHelper& text, const std::string& setting)
{
    const std::string name = setting.substr(0, setting.find('='));
    const std::string value = setting.substr(name.size() + 1);
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
