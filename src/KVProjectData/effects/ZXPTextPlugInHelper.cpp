#include "KVProjectData/effects/ZXPTextPlugInHelper.h"

#include "KVProjectData/effects/RichTextEditor.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <bit>
#include <cstdio>

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

BSTR NewText(std::string_view text)
{
    return Bstr(ToUtf16(text)).Detach();
}

/// Has `get` write a value, which is nothing when that fails, and say whether it counts.
template <class T, class Get>
HRESULT Answer(T* out, const Get& get)
{
    if (!out) return E_POINTER;
    *out = {};
    return Guarded([&] { return get() ? S_OK : S_FALSE; });
}

} // namespace

void CZXPTextPlugInHelper::Read(const XmlElement& pluginData)
{
    m_attributes.reset();
    m_body = pluginData.Child("html").Child("body");
    if (!m_body) throw Error(E_INVALIDARG);
}

const TextAttributes& CZXPTextPlugInHelper::Attributes() const
{
    static const TextAttributes none;
    if (!IsLoaded()) return none;
    if (!m_attributes) m_attributes = ReadTextAttributes(m_body.View());
    return *m_attributes;
}

template <class Compose>
HRESULT CZXPTextPlugInHelper::Apply(const Compose& compose)
{
    if (!IsLoaded()) return E_FAIL;
    m_attributes.reset();
    const HRESULT applied = Guarded([&] {
        RichTextEditor(m_body).Apply(TextCommand::Parse(compose()));
        return S_OK;
    });
    return SUCCEEDED(applied) || applied == E_OUTOFMEMORY ? applied : E_FAIL;
}

template <class IsSame, class Compose>
HRESULT CZXPTextPlugInHelper::Change(const IsSame& isSame, const Compose& compose)
{
    return Guarded([&] { return IsLoaded() && isSame(Attributes()) ? S_OK : Apply(compose); });
}

HRESULT CZXPTextPlugInHelper::get_Face(BSTR* pVal) const
{
    return Answer(pVal, [&] {
        *pVal = NewText(Attributes().face);
        return IsLoaded();
    });
}

HRESULT CZXPTextPlugInHelper::put_Face(BSTR newVal)
{
    const auto isSame = [&](const TextAttributes& text) { return SameText(ToUtf16(text.face), View(newVal)); };
    return Change(isSame, [&] { return "f:<font face=" + InCommand(Checked(newVal)) + "></font>"; });
}

HRESULT CZXPTextPlugInHelper::get_Height(LONG* pVal) const
{
    return Answer(pVal, [&] {
        *pVal = Attributes().height;
        return IsLoaded() && *pVal != 0;
    });
}

HRESULT CZXPTextPlugInHelper::put_Height(LONG newVal)
{
    constexpr LONG kLowest = 8;
    constexpr LONG kHighest = 300;
    if (newVal < kLowest || newVal > kHighest) return E_INVALIDARG;
    const auto isSame = [&](const TextAttributes& text) { return text.height == newVal; };
    return Change(isSame, [&] { return "f:<font fontHeight=" + std::to_string(newVal) + "></font>"; });
}

HRESULT CZXPTextPlugInHelper::get_HeightString(BSTR* pVal) const
{
    return Answer(pVal, [&] {
        if (const auto& text = Attributes().heightText) *pVal = NewText(*text);
        return true;
    });
}

HRESULT CZXPTextPlugInHelper::put_HeightString(BSTR newVal)
{
    return Apply([&] { return "f:<font fontHeight=" + InCommand(Checked(newVal)) + "></font>"; });
}

HRESULT CZXPTextPlugInHelper::get_Justify(ULONG* pVal) const
{
    const HRESULT answered = Answer(pVal, [&] {
        const std::string& align = Attributes().align;
        const auto* const named = std::ranges::find(kAlignments, align, &Alignment::name);
        *pVal = kNoAlignment;
        if (IsLoaded() && named != std::end(kAlignments)) *pVal = named->bit;
        if (IsLoaded() && align == kUndetermined) *pVal = 0;
        return !align.empty();
    });
    return IsLoaded() || FAILED(answered) ? answered : E_FAIL;
}

HRESULT CZXPTextPlugInHelper::put_Justify(ULONG newVal)
{
    const auto* const named = std::ranges::find(kAlignments, newVal, &Alignment::bit);
    if (named == std::end(kAlignments)) return E_INVALIDARG;
    const auto isSame = [&](const TextAttributes& text) { return text.align == named->name; };
    return Change(isSame, [&] { return std::string("f:<p align=") + named->name + "></p>"; });
}

HRESULT CZXPTextPlugInHelper::get_SelectedStyleId(LONG* pVal) const
{
    return Answer(pVal, [&] {
        *pVal = Attributes().styleID;
        return true;
    });
}

HRESULT CZXPTextPlugInHelper::put_SelectedStyleId(LONG newVal)
{
    const auto isSame = [&](const TextAttributes& text) { return text.styleID == newVal; };
    return Change(isSame, [&] { return "f:<font SelectedStyleId=" + std::to_string(newVal) + "></font>"; });
}

HRESULT CZXPTextPlugInHelper::get_Style(ULONG* pVal) const
{
    return Answer(pVal, [&] {
        *pVal = Attributes().style;
        return IsLoaded();
    });
}

HRESULT CZXPTextPlugInHelper::put_Style(ULONG newVal)
{
    constexpr std::pair<ULONG, const char*> kCommands[] = {
        {kItalicOff, "x:<i></i>"},   {kItalicOn, "f:<i></i>"}, {kUnderlineOff, "x:<u></u>"},
        {kUnderlineOn, "f:<u></u>"}, {kBoldOff, "x:<b></b>"},  {kBoldOn, "f:<b></b>"},
    };
    if (newVal & kMixedStyles) return E_INVALIDARG;
    if (!IsLoaded()) return E_FAIL;
    return Guarded([&] {
        if (newVal & Attributes().style) return S_OK;
        RichTextEditor(m_body).CheckRoom(std::popcount(newVal & (kItalicOn | kUnderlineOn | kBoldOn)));
        for (const auto& [bit, text] : kCommands) {
            const char* const command = text;
            const HRESULT applied = newVal & bit ? Apply([&] { return command; }) : S_OK;
            if (FAILED(applied)) return applied;
        }
        return S_OK;
    });
}

HRESULT CZXPTextPlugInHelper::get_Color(ULONG* pVal) const
{
    return Answer(pVal, [&] {
        *pVal = Attributes().colour;
        return IsLoaded() && Attributes().hasColour;
    });
}

HRESULT CZXPTextPlugInHelper::put_Color(ULONG newVal)
{
    const auto isSame = [&](const TextAttributes& text) { return text.hasColour && text.colour == newVal; };
    return Change(isSame, [&] {
        char command[64];
        std::snprintf(command, sizeof command, "f:<font color=#%02x%02x%02x%02x,faceTexture=0></font>", newVal & 0xFF,
                      newVal >> 8 & 0xFF, newVal >> 16 & 0xFF, newVal >> 24);
        return std::string(command);
    });
}

HRESULT CZXPTextPlugInHelper::get_String(BSTR* pVal) const
{
    return Answer(pVal, [&] {
        *pVal = NewText(Attributes().text);
        return !Attributes().text.empty();
    });
}

HRESULT CZXPTextPlugInHelper::put_String(BSTR newVal)
{
    return Apply([&] { return "r:" + Checked(newVal); });
}

} // namespace kv
