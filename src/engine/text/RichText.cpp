#include "engine/text/RichText.h"

#include "KVProjectData/Engine/Text.h"
#include "KVProjectData/Engine/TextMarkup.h"
#include "platform/automation/Bstr.h"
#include "platform/com/Error.h"

#include <algorithm>
#include <utility>

namespace kv {
namespace {

constexpr std::size_t kMaxText = 100'000;
constexpr std::size_t kMaxRuns = 10'000;
constexpr std::size_t kMaxFace = 256;
constexpr double kMaxHeight = 1'000.0;
constexpr std::string_view kLineBreak = "\xe2\x80\xa8";

/// Black for a text that tells nothing.
Colour ReadColour(std::string_view text)
{
    const ZXTextColour colour = ParseTextColour(text);
    return {colour.red, colour.green, colour.blue, static_cast<std::uint8_t>(255 - colour.transparency)};
}

/// The beginning of a text, without a part of a character.
std::string_view Beginning(std::string_view text, std::size_t most)
{
    if (text.size() <= most) return text;
    const auto isPart = [&](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80; };
    while (most > 0 && isPart(most))
        --most;
    return text.substr(0, most);
}

/// Takes over what a "font" tells.
struct FontReader final : XMLAttributeVisitor {
    explicit FontReader(TextStyle& inner) : style(inner) {}

    void Attribute(std::string_view name, std::string_view value) override
    {
        constexpr double kMaxAside = 100.0;
        if (name == "face" && !value.empty()) {
            style.font.face = Beginning(value, kMaxFace);
        } else if (name == "fontHeight") {
            SetLength(style.font.height, value, 1.0, kMaxHeight);
        } else if (name == "color") {
            style.ink.colour = ReadColour(value);
        } else if (name == "edgeColor") {
            style.ink.edge = ReadColour(value);
        } else if (name == "edgeWidth") {
            SetLength(style.ink.edgeWidth, value, 0.0, kMaxAside);
        } else if (name == "shadowColor") {
            style.ink.shadow = ReadColour(value);
        } else if (name == "shadowOffset") {
            SetLength(style.ink.shadowOffset, value, 0.0, kMaxAside);
        }
    }

    /// Takes over a length from `least` on.
    static void SetLength(double& length, std::string_view text, double least, double most)
    {
        const auto value = ParseTextLength(text);
        if (value && *value >= least) length = std::min(*value, most);
    }

    TextStyle& style;
};

TextAlignment AlignmentOf(std::string_view align)
{
    if (align == "center") return 0.5;
    return align == "right" ? 1.0 : 0.0;
}

class Reader {
public:
    std::vector<Paragraph> Read(const XmlView& body)
    {
        ReadChildren(body, {});
        if (m_paragraphs.empty()) m_paragraphs.emplace_back();
        return std::move(m_paragraphs);
    }

private:
    void ReadChildren(const XmlView& parent, const TextStyle& style)
    {
        XmlView child = parent.FirstChild();
        for (; child && m_runs < kMaxRuns && m_length < kMaxText; child = child.Next()) {
            if (child.IsElement()) ReadElement(child, style);
            if (child.IsText()) ReadText(child.Text(), style);
        }
    }

    void ReadElement(const XmlView& element, const TextStyle& style)
    {
        const std::string_view name = element.Name();
        if (name == "br") return Add(std::string(kLineBreak), style);
        if (name == "p") return ReadParagraph(element, style);
        TextStyle inner = style;
        FontReader reader(inner);
        if (name == "font") element.ReadAttributes(reader);
        inner.font.bold |= name == "b";
        inner.font.italic |= name == "i";
        inner.ink.underline |= name == "u";
        ReadChildren(element, inner);
    }

    void ReadParagraph(const XmlView& element, const TextStyle& style)
    {
        const auto align = element.Attribute("align");
        const TextAlignment outer = std::exchange(m_alignment, align ? AlignmentOf(*align) : m_alignment);
        const bool around = std::exchange(m_isPlaceholder, IsTextPlaceholder(element));
        Open(style);
        ReadChildren(element, style);
        m_isPlaceholder = around;
        m_alignment = outer;
        m_open = false;
    }

    void ReadText(std::string_view value, const TextStyle& style)
    {
        std::u16string text = ToUtf16(value).substr(0, kMaxText - m_length);
        const auto isBlank = [](char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r'; };
        // Between paragraphs blanks set elements apart, and are no text.
        if (!m_open && std::ranges::all_of(text, isBlank)) return;
        if (m_isPlaceholder) return;
        // What breaks lines and paragraphs are elements.
        std::ranges::replace_if(
            text, [&](char16_t c) { return isBlank(c) || c == 0x2028 || c == 0x2029 || c == 0x85 || c < 0x20; }, u' ');
        m_length += text.size();
        Add(ToUtf8(text), style);
    }

    void Add(std::string text, const TextStyle& style)
    {
        if (!m_open) Open(style);
        ++m_runs;
        m_paragraphs.back().runs.push_back({style, std::move(text)});
    }

    void Open(const TextStyle& style)
    {
        // Empty paragraphs count as pieces, too.
        ++m_runs;
        m_paragraphs.push_back({m_alignment, style.font, {}});
        m_open = true;
    }

    std::vector<Paragraph> m_paragraphs;
    /// The last paragraph takes what follows.
    bool m_open = false;
    /// What the paragraphs around tell; the innermost counts.
    TextAlignment m_alignment = 0.0;
    /// Within such a paragraph.
    bool m_isPlaceholder = false;
    std::size_t m_runs = 0;
    std::size_t m_length = 0;
};

} // namespace

std::vector<Paragraph> ReadRichText(const XmlView& pluginData)
{
    const XmlView body = pluginData.Child("html").Child("body");
    if (!body) throw Error(ZXE_E_NO_TEXT);
    return Reader().Read(body);
}

} // namespace kv
