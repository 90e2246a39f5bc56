#include "engine/text/RichText.h"

#include "KVProjectData/Engine/Text.h"
#include "KVProjectData/Engine/TextMarkup.h"
#include "platform/com/ComPtr.h"
#include "platform/com/Error.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

namespace kv {
namespace {

constexpr std::size_t kMaxText = 100'000;
constexpr std::size_t kMaxRuns = 10'000;
constexpr std::size_t kMaxFace = 256;
constexpr double kMaxHeight = 1'000.0;
constexpr std::string_view kLineBreak = "\xe2\x80\xa8";

std::string NameOf(IXMLDOMNode* node)
{
    Bstr name;
    ThrowIfFailed(node->get_nodeName(name.Put()));
    return ToUtf8(name.View());
}

std::optional<std::string> AttributeOf(IXMLDOMNode* node, std::u16string_view name)
{
    Variant value;
    ThrowIfFailed(Query<IXMLDOMElement>(node)->getAttribute(Bstr(name).Get(), value.Put()));
    if (value.vt != VT_BSTR) return std::nullopt;
    return ToUtf8(View(value.bstrVal));
}

ComPtr<IXMLDOMNode> Find(IXMLDOMNode* node, std::u16string_view expression)
{
    ComPtr<IXMLDOMNode> found;
    ThrowIfFailed(node->selectSingleNode(Bstr(expression).Get(), found.Put()));
    return found;
}

/// Black for a text that tells nothing.
Colour ReadColour(std::string_view text)
{
    const ZXTextColour colour = ParseTextColour(text);
    return {colour.red, colour.green, colour.blue, static_cast<std::uint8_t>(255 - colour.transparency)};
}

/// Takes over a length from `least` on.
void SetLength(double& length, IXMLDOMNode* font, std::u16string_view name, double least, double most)
{
    const std::string text = AttributeOf(font, name).value_or("");
    double value = 0.0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec == std::errc() && value >= least) length = std::min(value, most);
}

void SetFont(TextStyle& style, IXMLDOMNode* font)
{
    constexpr double kMaxAside = 100.0;
    if (const auto face = AttributeOf(font, u"face"); face && !face->empty()) {
        style.font.face = face->substr(0, kMaxFace);
    }
    SetLength(style.font.height, font, u"fontHeight", 1.0, kMaxHeight);
    if (const auto colour = AttributeOf(font, u"color")) style.ink.colour = ReadColour(*colour);
    if (const auto edge = AttributeOf(font, u"edgeColor")) style.ink.edge = ReadColour(*edge);
    SetLength(style.ink.edgeWidth, font, u"edgeWidth", 0.0, kMaxAside);
    if (const auto shadow = AttributeOf(font, u"shadowColor")) style.ink.shadow = ReadColour(*shadow);
    SetLength(style.ink.shadowOffset, font, u"shadowOffset", 0.0, kMaxAside);
}

bool IsPlaceholder(IXMLDOMNode* paragraph)
{
    const std::string attribute = AttributeOf(paragraph, u"placeholder").value_or("");
    Bstr text;
    if (!attribute.empty()) ThrowIfFailed(paragraph->get_text(text.Put()));
    return IsTextPlaceholder(attribute, ToUtf8(text.View()));
}

TextAlignment AlignmentOf(std::string_view align)
{
    if (align == "center") return 0.5;
    return align == "right" ? 1.0 : 0.0;
}

class Reader {
public:
    std::vector<Paragraph> Read(IXMLDOMNode* body)
    {
        ReadChildren(body, {});
        if (m_paragraphs.empty()) m_paragraphs.emplace_back();
        return std::move(m_paragraphs);
    }

private:
    void ReadChildren(IXMLDOMNode* parent, const TextStyle& style)
    {
        ComPtr<IXMLDOMNode> child;
        ThrowIfFailed(parent->get_firstChild(child.Put()));
        while (child && m_runs < kMaxRuns && m_length < kMaxText) {
            DOMNodeType type = NODE_INVALID;
            ThrowIfFailed(child->get_nodeType(&type));
            if (type == NODE_ELEMENT) ReadElement(child.Get(), style);
            if (type == NODE_TEXT || type == NODE_CDATA_SECTION) ReadText(child.Get(), style);
            ComPtr<IXMLDOMNode> next;
            ThrowIfFailed(child->get_nextSibling(next.Put()));
            child = std::move(next);
        }
    }

    void ReadElement(IXMLDOMNode* element, TextStyle style)
    {
        const std::string name = NameOf(element);
        if (name == "br") return Add(std::string(kLineBreak), style);
        if (name == "p") return ReadParagraph(element, style);
        if (name == "font") SetFont(style, element);
        style.font.bold |= name == "b";
        style.font.italic |= name == "i";
        style.ink.underline |= name == "u";
        ReadChildren(element, style);
    }

    void ReadParagraph(IXMLDOMNode* element, const TextStyle& style)
    {
        Open(AlignmentOf(AttributeOf(element, u"align").value_or("")), style);
        const bool around = std::exchange(m_isPlaceholder, IsPlaceholder(element));
        ReadChildren(element, style);
        m_isPlaceholder = around;
        m_open = false;
    }

    void ReadText(IXMLDOMNode* node, const TextStyle& style)
    {
        Bstr value;
        ThrowIfFailed(node->get_text(value.Put()));
        std::u16string text(value.View().substr(0, kMaxText - m_length));
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
        if (!m_open) Open(0.0, style);
        ++m_runs;
        m_paragraphs.back().runs.push_back({style, std::move(text)});
    }

    void Open(TextAlignment alignment, const TextStyle& style)
    {
        // Empty paragraphs count as pieces, too.
        ++m_runs;
        m_paragraphs.push_back({alignment, style.font, {}});
        m_open = true;
    }

    std::vector<Paragraph> m_paragraphs;
    /// The last paragraph takes what follows.
    bool m_open = false;
    /// Within such a paragraph.
    bool m_isPlaceholder = false;
    std::size_t m_runs = 0;
    std::size_t m_length = 0;
};

} // namespace

std::vector<Paragraph> ReadRichText(IXMLDOMNode* pluginData)
{
    const auto html = pluginData ? Find(pluginData, u"html") : nullptr;
    const auto body = html ? Find(html.Get(), u"body") : nullptr;
    if (!body) throw Error(ZXE_E_NO_TEXT);
    return Reader().Read(body.Get());
}

} // namespace kv
