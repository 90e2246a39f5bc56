#include "engine/text/RichText.h"

#include "KVProjectData/Engine/Text.h"
#include "platform/com/ComPtr.h"
#include "platform/com/Error.h"

#include <algorithm>
#include <array>
#include <cctype>
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

bool StartsWithoutCase(std::string_view text, std::string_view start)
{
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return text.size() >= start.size() && std::ranges::equal(text.substr(0, start.size()), start, {}, lower, lower);
}

/// Two hexadecimal digits at most; 0 for none.
std::uint8_t HexAt(std::string_view text, std::size_t position)
{
    std::uint8_t value = 0;
    if (position < text.size()) {
        const std::string_view digits = text.substr(position, 2);
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    }
    return value;
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
        const bool within = std::exchange(m_within, true);
        ReadChildren(element, style);
        m_within = within;
        m_open = false;
    }

    void ReadText(IXMLDOMNode* node, const TextStyle& style)
    {
        Bstr value;
        ThrowIfFailed(node->get_text(value.Put()));
        std::u16string text(value.View().substr(0, kMaxText - m_length));
        const auto isBlank = [](char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r'; };
        // Between paragraphs blanks set elements apart, and are no text.
        if (!m_within && std::ranges::all_of(text, isBlank)) return;
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
    /// Within an element "p".
    bool m_within = false;
    std::size_t m_runs = 0;
    std::size_t m_length = 0;
};

} // namespace

Colour ReadColour(std::string_view text)
{
    constexpr std::array<std::pair<std::string_view, std::uint32_t>, 16> kNames{{
        {"Black", 0x000000},
        {"Silver", 0xC0C0C0},
        {"Gray", 0x808080},
        {"White", 0xFFFFFF},
        {"Maroon", 0x800000},
        {"Red", 0xFF0000},
        {"Purple", 0x800080},
        {"Fuchsia", 0xFF00FF},
        {"Green", 0x008000},
        {"Lime", 0x00FF00},
        {"Olive", 0x808000},
        {"Yellow", 0xFFFF00},
        {"Navy", 0x000080},
        {"Blue", 0x0000FF},
        {"Teal", 0x008080},
        {"Aqua", 0x00FFFF},
    }};
    const auto opaqueBut = [](std::uint8_t transparency) { return static_cast<std::uint8_t>(255 - transparency); };
    for (const auto& [name, colour] : kNames) {
        if (StartsWithoutCase(text, name)) {
            return {static_cast<std::uint8_t>(colour >> 16), static_cast<std::uint8_t>(colour >> 8 & 0xFF),
                    static_cast<std::uint8_t>(colour & 0xFF)};
        }
    }
    if (text.starts_with('#')) return {HexAt(text, 1), HexAt(text, 3), HexAt(text, 5), opaqueBut(HexAt(text, 7))};
    const auto after = [&](char letter) {
        const std::size_t found = text.find(letter);
        return found == text.npos ? std::uint8_t{0} : HexAt(text, found + 1);
    };
    return {after('R'), after('G'), after('B'), opaqueBut(after('T'))};
}

std::vector<Paragraph> ReadRichText(IXMLDOMNode* pluginData)
{
    const auto html = pluginData ? Find(pluginData, u"html") : nullptr;
    const auto body = html ? Find(html.Get(), u"body") : nullptr;
    if (!body) throw Error(ZXE_E_NO_TEXT);
    return Reader().Read(body.Get());
}

} // namespace kv
