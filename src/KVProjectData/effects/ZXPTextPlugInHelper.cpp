#include "KVProjectData/effects/ZXPTextPlugInHelper.h"

#include "KVProjectData/effects/RichTextEditor.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cwctype>

namespace kv {
namespace {

struct Alignment {
    ULONG bit;
    const char* name;
};
constexpr Alignment kAlignments[] = {{1, "left"}, {2, "center"}, {4, "right"}, {8, "justify"}};

constexpr ULONG kNoAlignment = 0xFFFFFFFF;

/// Throws Error for text that XML cannot hold.
std::string Checked(BSTR text)
{
    return XmlValue(text).Text();
}

bool EqualWithoutCase(std::u16string_view left, std::u16string_view right)
{
    const auto lower = [](char16_t c) { return std::towlower(c); };
    return std::ranges::equal(left, right, {}, lower, lower);
}

HRESULT HandOutText(std::string_view text, BSTR* out)
{
    return Guarded([&] {
        if (!out) return E_POINTER;
        *out = nullptr;
        *out = Bstr(ToUtf16(text)).Detach();
        return S_OK;
    });
}

/// S_FALSE in the place of S_OK when a value does not count.
HRESULT Unless(bool counts, HRESULT result)
{
    return result == S_OK && !counts ? S_FALSE : result;
}

} // namespace

void CZXPTextPlugInHelper::Read(const XmlElement& pluginData)
{
    m_body = pluginData.Child("html").Child("body");
    if (!m_body) throw Error(E_INVALIDARG);
    m_attributes = ReadTextAttributes(m_body.View());
}

const TextAttributes& CZXPTextPlugInHelper::Attributes() const
{
    static const TextAttributes none;
    return IsLoaded() ? m_attributes : none;
}

template <class Compose>
HRESULT CZXPTextPlugInHelper::Apply(const Compose& compose)
{
    if (!IsLoaded()) return E_FAIL;
    const HRESULT applied = Guarded([&] {
        RichTextEditor(m_body).Apply(TextCommand::Parse(compose()));
        return S_OK;
    });
    const HRESULT read = Guarded([&] {
        m_attributes = ReadTextAttributes(m_body.View());
        return S_OK;
    });
    if (SUCCEEDED(applied)) return read;
    return applied == E_OUTOFMEMORY ? applied : E_FAIL;
}

HRESULT CZXPTextPlugInHelper::ApplyFont(const char* attribute, BSTR value)
{
    return Apply([&] { return std::string("f:<font ") + attribute + "=" + InCommand(Checked(value)) + "></font>"; });
}

HRESULT CZXPTextPlugInHelper::get_Face(BSTR* pVal) const
{
    return Unless(IsLoaded(), HandOutText(Attributes().face, pVal));
}

HRESULT CZXPTextPlugInHelper::put_Face(BSTR newVal)
{
    return Guarded([&] {
        const bool isSame = IsLoaded() && EqualWithoutCase(ToUtf16(m_attributes.face), View(newVal));
        return isSame ? S_OK : ApplyFont("face", newVal);
    });
}

HRESULT CZXPTextPlugInHelper::get_Height(LONG* pVal) const
{
    const LONG height = Attributes().height;
    return Unless(IsLoaded() && height != 0, HandOut(height, pVal));
}

HRESULT CZXPTextPlugInHelper::put_Height(LONG newVal)
{
    constexpr LONG kLowest = 8;
    constexpr LONG kHighest = 300;
    if (newVal < kLowest || newVal > kHighest) return E_INVALIDARG;
    if (!IsLoaded()) return E_FAIL;
    if (newVal == m_attributes.height) return S_OK;
    return Apply([&] { return "f:<font fontHeight=" + std::to_string(newVal) + "></font>"; });
}

HRESULT CZXPTextPlugInHelper::get_HeightString(BSTR* pVal) const
{
    if (const auto& text = Attributes().heightText) return HandOutText(*text, pVal);
    return HandOut<BSTR>(nullptr, pVal);
}

HRESULT CZXPTextPlugInHelper::put_HeightString(BSTR newVal)
{
    return ApplyFont("fontHeight", newVal);
}

HRESULT CZXPTextPlugInHelper::get_Justify(ULONG* pVal) const
{
    const std::string& align = Attributes().align;
    const auto* const named = std::ranges::find(kAlignments, align, &Alignment::name);
    ULONG value = kNoAlignment;
    if (IsLoaded() && named != std::end(kAlignments)) value = named->bit;
    if (IsLoaded() && align == kUndetermined) value = 0;
    const HRESULT handed = Unless(!align.empty(), HandOut(value, pVal));
    return IsLoaded() || FAILED(handed) ? handed : E_FAIL;
}

HRESULT CZXPTextPlugInHelper::put_Justify(ULONG newVal)
{
    const auto* const named = std::ranges::find(kAlignments, newVal, &Alignment::bit);
    if (named == std::end(kAlignments)) return E_INVALIDARG;
    if (!IsLoaded()) return E_FAIL;
    if (m_attributes.align == named->name) return S_OK;
    return Apply([&] { return std::string("f:<p align=") + named->name + "></p>"; });
}

HRESULT CZXPTextPlugInHelper::get_SelectedStyleId(LONG* pVal) const
{
    return HandOut(Attributes().styleID, pVal);
}

HRESULT CZXPTextPlugInHelper::put_SelectedStyleId(LONG newVal)
{
    if (!IsLoaded()) return E_FAIL;
    if (newVal == m_attributes.styleID) return S_OK;
    return Apply([&] { return "f:<font SelectedStyleId=" + std::to_string(newVal) + "></font>"; });
}

HRESULT CZXPTextPlugInHelper::get_Style(ULONG* pVal) const
{
    return Unless(IsLoaded(), HandOut(Attributes().style, pVal));
}

HRESULT CZXPTextPlugInHelper::put_Style(ULONG newVal)
{
    constexpr std::pair<ULONG, const char*> kCommands[] = {
        {kItalicOff, "x:<i></i>"},   {kItalicOn, "f:<i></i>"}, {kUnderlineOff, "x:<u></u>"},
        {kUnderlineOn, "f:<u></u>"}, {kBoldOff, "x:<b></b>"},  {kBoldOn, "f:<b></b>"},
    };
    if (newVal & kMixedStyles) return E_INVALIDARG;
    if (!IsLoaded()) return E_FAIL;
    if (newVal & m_attributes.style) return S_OK;
    for (const auto& [bit, text] : kCommands) {
        const char* const command = text;
        const HRESULT applied = newVal & bit ? Apply([&] { return command; }) : S_OK;
        if (FAILED(applied)) return applied;
    }
    return S_OK;
}

HRESULT CZXPTextPlugInHelper::get_Color(ULONG* pVal) const
{
    return Unless(IsLoaded() && Attributes().hasColour, HandOut(Attributes().colour, pVal));
}

HRESULT CZXPTextPlugInHelper::put_Color(ULONG newVal)
{
    if (!IsLoaded()) return E_FAIL;
    if (m_attributes.hasColour && m_attributes.colour == newVal) return S_OK;
    char text[64];
    std::snprintf(text, sizeof text, "f:<font color=#%02x%02x%02x%02x,faceTexture=0></font>", newVal & 0xFF,
                  newVal >> 8 & 0xFF, newVal >> 16 & 0xFF, newVal >> 24);
    return Apply([&] { return text; });
}

HRESULT CZXPTextPlugInHelper::get_String(BSTR* pVal) const
{
    return Unless(!Attributes().text.empty(), HandOutText(Attributes().text, pVal));
}

HRESULT CZXPTextPlugInHelper::put_String(BSTR newVal)
{
    return Apply([&] { return "r:" + Checked(newVal); });
}

} // namespace kv
