// A rich text, a zero byte, and any bytes as settings of it: what is set is what is told, the words stay, setting it
// twice changes nothing, what fails has changed nothing, and what is saved loads alike.

#include "Choices.h"
#include "Fuzz.h"
#include "KVProjectData/Engine/Text.h"
#include "KVProjectData/effects/TextCommand.h"
#include "KVProjectData/effects/ZXPTextPlugInHelper.h"
#include "platform/system/Case.h"

#include <array>

namespace kv::fuzz {
namespace {

constexpr int kSettings = 30;

/// What every getter answers.
struct Answers {
    Bstr face;
    Bstr heightString;
    Bstr string;
    LONG height = 0;
    LONG styleID = 0;
    ULONG align = 0;
    ULONG style = 0;
    ULONG colour = 0;
    std::array<HRESULT, 8> results{};

    explicit Answers(const CZXPTextPlugInHelper& text)
        : results{text.get_Face(face.Put()),
                  text.get_HeightString(heightString.Put()),
                  text.get_String(string.Put()),
                  text.get_Height(&height),
                  text.get_SelectedStyleId(&styleID),
                  text.get_Justify(&align),
                  text.get_Style(&style),
                  text.get_Color(&colour)}
    {
        for (const HRESULT result : results)
            Require(SUCCEEDED(result), "a getter answers");
    }

    bool operator==(const Answers& other) const
    {
        return face.View() == other.face.View() && heightString.View() == other.heightString.View() &&
               string.View() == other.string.View() && height == other.height && styleID == other.styleID &&
               align == other.align && style == other.style && colour == other.colour && results == other.results;
    }
};

std::u16string WithoutBlanks(std::u16string_view text)
{
    std::u16string rest(text);
    std::erase(rest, u' ');
    return rest;
}

constexpr ULONG kOff = kItalicOff | kBoldOff | kUnderlineOff;

/// Whether styles are told as they were turned on and off; on counts where both were asked for.
bool HasStyle(ULONG told, ULONG set)
{
    const ULONG on = set & kOff << 1;
    const ULONG off = set & kOff & ~(on >> 1);
    return (told & on) == on && (told & (off << 1 | off << 2)) == 0;
}

/// One setter with a value.
struct Setting {
    enum Kind { Face, HeightString, String, Height, StyleID, Align, Style, Colour, Count };

    Kind kind;
    Bstr text;
    LONG number = 0;
    ULONG bits = 0;

    explicit Setting(Choices& choices) : kind(static_cast<Kind>(choices.Below(Count)))
    {
        constexpr std::array<ULONG, 7> kStyles{kItalicOff,    kItalicOn,    kBoldOff,  kBoldOn,
                                               kUnderlineOff, kUnderlineOn, kBoldMixed};
        if (kind <= String) text = Bstr(choices.Below(16) ? choices.Text() : ToUtf16(kRemoveAttribute));
        if (kind == Height) number = static_cast<LONG>(choices.Below(2) ? 24 : choices.Take<std::uint16_t>() % 310);
        if (kind == StyleID) number = choices.Take<LONG>();
        if (kind == Align) bits = 1U << choices.Below(5);
        if (kind == Colour) bits = choices.Take<ULONG>();
        if (kind == Style) {
            for (std::size_t count = choices.Below(4); count > 0; --count)
                bits |= kStyles[choices.Below(kStyles.size())];
        }
    }

    HRESULT Put(CZXPTextPlugInHelper& helper) const
    {
        switch (kind) {
        case Face:
            return helper.put_Face(text.Get());
        case HeightString:
            return helper.put_HeightString(text.Get());
        case String:
            return helper.put_String(text.Get());
        case Height:
            return helper.put_Height(number);
        case StyleID:
            return helper.put_SelectedStyleId(number);
        case Align:
            return helper.put_Justify(bits);
        case Style:
            return helper.put_Style(bits);
        default:
            return helper.put_Color(bits);
        }
    }

    bool IsTold(const Answers& before, const Answers& after) const
    {
        const bool removes = kind != String && text.View() == ToUtf16(kRemoveAttribute);
        switch (kind) {
        case Face:
            return SameText(after.face.View(), text.View()) || (removes && after.face.View() == u"Arial");
        case HeightString:
            return removes ? !after.heightString.Get() : after.heightString.View() == text.View();
        case String:
            return after.string.View() == text.View();
        case Height:
            return after.height == number;
        case StyleID:
            return after.styleID == number;
        case Align:
            return after.align == bits;
        case Style:
            return bits & before.style ? after == before : HasStyle(after.style, bits);
        default:
            return after.colour == bits && after.results.back() == S_OK;
        }
    }

    bool KeepsText(const Answers& before, const Answers& after) const
    {
        if (kind == String) return true;
        if (kind == Style && bits & kOff)
            return WithoutBlanks(before.string.View()) == WithoutBlanks(after.string.View());
        return before.string.View() == after.string.View();
    }
};

void Set(CZXPTextPlugInHelper& text, const XmlElement& data, const Setting& setting)
{
    const Answers before(text);
    const std::string was = data.Markup();
    if (FAILED(setting.Put(text))) {
        Require(data.Markup() == was && Answers(text) == before, "a failure changes nothing");
        return;
    }
    const Answers after(text);
    const std::string edited = data.Markup();
    Require(setting.IsTold(before, after), "what is set is what is told");
    Require(setting.KeepsText(before, after), "the words stay");
    Require(SUCCEEDED(setting.Put(text)), "it can be set twice");
    Require(data.Markup() == edited && Answers(text) == after, "twice changes nothing");
}

void EditText(Choices choices)
{
    Guarded([&] {
        const std::string content(choices.Line());
        const XmlElement data =
            XmlElement::Parse("<plugin_data><html><body>" + content + "</body></html></plugin_data>");
        CZXPTextPlugInHelper text;
        if (FAILED(text.Attach(data))) return S_FALSE;
        for (int i = 0; i < kSettings && choices.Any(); ++i)
            Set(text, data, Setting(choices));
        const Answers told(text);
        XmlElement saved;
        CZXPTextPlugInHelper loaded;
        Require(text.Save(saved) == S_OK, "the text is saved");
        Require(loaded.Load(XmlElement::Parse(saved.Markup())) == S_OK, "what was saved loads");
        Require(Answers(loaded) == told, "what was saved loads as it was");
        const auto plugIn = Create<IZXTextPlugIn>(CLSID_ZXTextPlugIn);
        Require(plugIn->SetText(saved.Get()) == S_OK, "the text plug-in reads it");
        return S_OK;
    });
}

} // namespace
} // namespace kv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kv::fuzz::PrepareHost();
    kv::fuzz::EditText(kv::fuzz::Choices(data, size));
    return 0;
}
