#include "platform/xml/XmlStandIns.h"

#include "platform/xml/DomObject.h"
#include "platform/xml/XmlChecker.h"

#include <array>

namespace kv {
namespace {

enum class PieceKind { Text, StartTag, EmptyTag, EndTag, Other };

struct Piece {
    PieceKind kind;
    std::string_view text;
};

/// Goes over well-formed markup piece by piece: tags, texts, and whatever else there is.
class Pieces {
public:
    explicit Pieces(std::string_view markup) : m_rest(markup) {}

    bool AtEnd() const { return m_rest.empty(); }

    Piece Next()
    {
        if (m_rest.front() != '<') return Take(PieceKind::Text, m_rest.find('<'));
        switch (m_rest[1]) {
        case '/':
            return Take(PieceKind::EndTag, m_rest.find('>') + 1);
        case '?':
            return Take(PieceKind::Other, m_rest.find("?>") + 2);
        case '!':
            if (m_rest[2] == '-') return Take(PieceKind::Other, m_rest.find("-->") + 3);
            return Take(PieceKind::Text, m_rest.find("]]>") + 3);
        default:
            const std::size_t end = EndOfTag();
            return Take(m_rest[end - 1] == '/' ? PieceKind::EmptyTag : PieceKind::StartTag, end + 1);
        }
    }

private:
    /// Values may hold what ends a tag.
    std::size_t EndOfTag() const
    {
        std::size_t at = 1;
        for (char c = m_rest[at]; c != '>'; c = m_rest[++at]) {
            if (c == '"' || c == '\'') at = m_rest.find(c, at + 1);
        }
        return at;
    }

    Piece Take(PieceKind kind, std::size_t size)
    {
        const Piece piece{kind, m_rest.substr(0, size)};
        m_rest.remove_prefix(piece.text.size());
        return piece;
    }

    std::string_view m_rest;
};

const void* KeyOf(const XmlElement& element)
{
    const DomObject* object = ObjectOf(element.Get());
    return object ? object->Key() : nullptr;
}

bool IsElementNamed(std::string_view markup, std::string_view name)
{
    constexpr std::string_view kBehindName = " \t\r\n/>";
    return markup.starts_with('<') && markup.substr(1).starts_with(name) && markup.size() > name.size() + 1 &&
           kBehindName.find(markup[name.size() + 1]) != kBehindName.npos;
}

/// Of each element, in the order of the document, whether a text stands among its children. Throws Error(E_INVALIDARG)
/// when there is anything behind the first one, or not room for all levels.
std::vector<bool> FindTexts(std::string_view markup, int room)
{
    std::vector<bool> holdText;
    std::array<std::size_t, kMaxXmlDepth> open;
    int depth = 0;
    for (Pieces pieces(markup); !pieces.AtEnd();) {
        const Piece piece = pieces.Next();
        const bool isElement = piece.kind == PieceKind::StartTag || piece.kind == PieceKind::EmptyTag;
        const bool isBehind = depth == 0 && !holdText.empty();
        if (isBehind || (isElement && depth >= room)) throw Error(E_INVALIDARG);
        if (isElement) holdText.push_back(false);
        if (piece.kind == PieceKind::StartTag) open[static_cast<std::size_t>(depth++)] = holdText.size() - 1;
        if (piece.kind == PieceKind::EndTag) --depth;
        if (piece.kind == PieceKind::Text) holdText[open[static_cast<std::size_t>(depth - 1)]] = true;
    }
    return holdText;
}

/// Writes an element line by line.
class Layout {
public:
    Layout(const std::vector<bool>& holdText, int level, bool layout, XmlBuffer& buffer)
        : m_buffer(buffer), m_holdText(holdText), m_level(level)
    {
        m_lines[0] = layout;
    }

    void Run(std::string_view markup)
    {
        Pieces pieces(markup);
        Begin(pieces.Next());
        while (!pieces.AtEnd()) {
            const Piece piece = pieces.Next();
            const bool isEnd = piece.kind == PieceKind::EndTag;
            if (isEnd) --m_depth;
            const bool isLine = isEnd ? m_lines[At(m_depth + 1)] && !m_isEmpty : m_lines[At(m_depth)];
            if (isLine) m_buffer.PutLine(m_level + m_depth);
            m_isEmpty = false;
            Begin(piece);
            m_buffer.Relieve();
        }
    }

private:
    static std::size_t At(int depth) { return static_cast<std::size_t>(depth); }

    void Begin(const Piece& piece)
    {
        m_buffer.Put(piece.text);
        const bool isElement = piece.kind == PieceKind::StartTag || piece.kind == PieceKind::EmptyTag;
        const bool holdsText = isElement && m_holdText[m_next++];
        if (piece.kind != PieceKind::StartTag) return;
        m_lines[At(m_depth + 1)] = m_lines[At(m_depth)] && !holdsText;
        m_isEmpty = true;
        ++m_depth;
    }

    XmlBuffer& m_buffer;
    const std::vector<bool>& m_holdText;
    std::size_t m_next = 0;
    const int m_level;
    int m_depth = 0;
    /// Whether what stands so deep in the element stands on lines of its own.
    std::array<bool, kMaxXmlDepth + 1> m_lines;
    /// Nothing has stood in the element yet.
    bool m_isEmpty = false;
};

} // namespace

void XmlStandIns::Put(const XmlElement& element, std::string markup)
{
    if (!IsElementNamed(markup, element.Name())) throw Error(E_INVALIDARG);
    try {
        CheckXml(markup);
    } catch (const XmlError&) {
        throw Error(E_INVALIDARG);
    }
    const int above = DepthOf(ObjectOf(element.Get())->Place().node) - 1;
    std::vector<bool> holdText = FindTexts(markup, kMaxXmlDepth - above);
    m_standIns[KeyOf(element)] = {std::move(markup), std::move(holdText)};
}

void XmlStandIns::Drop(const XmlElement& element)
{
    m_standIns.erase(KeyOf(element));
}

bool XmlStandIns::HasContent(const XmlElement& element) const
{
    const auto found = m_standIns.find(KeyOf(element));
    return found != m_standIns.end() && Pieces(found->second.markup).Next().kind == PieceKind::StartTag;
}

bool XmlStandIns::Write(const void* node, int level, bool layout, XmlBuffer& buffer) const
{
    const auto found = m_standIns.find(node);
    if (found == m_standIns.end()) return false;
    Layout(found->second.holdText, level, layout, buffer).Run(found->second.markup);
    return true;
}

} // namespace kv
