#include "platform/xml/XmlChecker.h"

#include "platform/system/Case.h"
#include "platform/xml/XmlChars.h"
#include "platform/xml/XmlDecoder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace kv {
namespace {

/// 1.0, and what later editions add within the same rules.
bool IsVersion(std::string_view version)
{
    return version.starts_with("1.") && version.size() > 2 &&
           version.find_first_not_of("0123456789", 2) == version.npos;
}

using ByteSet = std::array<bool, 256>;

/// ASCII characters that need no further look wherever they stand, without some.
constexpr ByteSet PlainBut(std::string_view characters)
{
    ByteSet plain{};
    for (std::size_t c = 0x20; c < 0x80; ++c)
        plain[c] = true;
    plain['\t'] = plain['\n'] = plain['\r'] = true;
    for (const char c : characters)
        plain[static_cast<unsigned char>(c)] = false;
    return plain;
}

/// Walks over a document once.
class Checker {
public:
    /// The zero at the end of a string ends every run of characters.
    explicit Checker(const std::string& text) : m_text(text) {}

    void Run()
    {
        if (m_text.size() > kMaxXmlSize) Fail("the document is too large");
        if (StartsWithDeclaration(m_text)) Declaration();
        while (!AtEnd()) {
            if (Current() == '<') {
                Markup();
            } else {
                Text();
            }
        }
        if (m_depth > 0) Fail("the document ends within an element");
        if (!m_rootSeen) Fail("the document has no element");
    }

    /// For a text that is to be nothing but a declaration.
    void RunDeclaration()
    {
        Declaration();
        if (!AtEnd()) Fail("something follows the declaration");
    }

private:
    [[noreturn]] void Fail(const char* reason) const { throw XmlError{reason, m_at}; }

    /// Fails at a part of the text.
    [[noreturn]] void FailAt(std::string_view part, const char* reason) const
    {
        throw XmlError{reason, static_cast<std::size_t>(part.data() - m_text.data())};
    }

    bool AtEnd() const { return m_at >= m_text.size(); }
    /// A zero at the end.
    char Current() const { return m_text.data()[m_at]; }
    std::string_view Rest() const { return m_text.substr(m_at); }

    void SkipBlanks()
    {
        while (IsBlank(Current()))
            ++m_at;
    }

    /// The bytes of a set that stand next.
    void SkipAll(const ByteSet& bytes)
    {
        const char* const text = m_text.data();
        const char* at = text + m_at;
        while (bytes[static_cast<unsigned char>(*at)])
            ++at;
        m_at = static_cast<std::size_t>(at - text);
    }

    /// A line's end and the blanks behind it, most of what a document is that is laid out.
    void SkipIndent()
    {
        constexpr std::string_view kBlanks = "        ";
        if (Current() == '\n') ++m_at;
        while (Rest().starts_with(kBlanks))
            m_at += kBlanks.size();
    }

    /// One character that XML can hold.
    void TakeChar()
    {
        if (kPlain[static_cast<unsigned char>(m_text[m_at])]) {
            ++m_at;
            return;
        }
        std::size_t length = 1;
        const char32_t c = DecodeUtf8(Rest(), length);
        if (c == kMalformed) Fail("the text is not UTF-8");
        if (!IsXmlChar(c)) Fail("the document holds a character that XML does not allow");
        m_at += length;
    }

    /// To behind an ending, with every character checked.
    void Skip(std::string_view ending, const char* reason)
    {
        const std::size_t found = m_text.find(ending, m_at);
        if (found == m_text.npos) Fail(reason);
        while (m_at < found)
            TakeChar();
        m_at = found + ending.size();
    }

    /// What the declaration tells, in the order that XML fixes.
    void Declaration()
    {
        m_at = 5;
        const auto version = DeclaredValue("version");
        if (!version) Fail("the declaration does not tell the version of XML");
        if (!IsVersion(*version)) FailAt(*version, "the version of XML is not supported");
        const auto encoding = DeclaredValue("encoding");
        if (encoding && !IsEncodingName(*encoding)) FailAt(*encoding, "the encoding is not supported");
        const auto standalone = DeclaredValue("standalone");
        if (standalone && *standalone != "yes" && *standalone != "no")
            FailAt(*standalone, "'standalone' is neither \"yes\" nor \"no\"");
        SkipBlanks();
        if (!Rest().starts_with("?>"))
            Fail("the declaration holds more than version, encoding and standalone, in this order");
        m_at += 2;
    }

    /// The value of a part of the declaration, when it is this part that stands next.
    std::optional<std::string_view> DeclaredValue(std::string_view name)
    {
        const std::size_t start = m_at;
        SkipBlanks();
        if (m_at == start || !Rest().starts_with(name)) {
            m_at = start;
            return std::nullopt;
        }
        m_at += name.size();
        const std::size_t open = TakeQuote("the declaration is malformed") + 1;
        const std::size_t close = m_text.find(m_text[open - 1], open);
        if (close == m_text.npos) Fail("the declaration does not end");
        m_at = close + 1;
        return m_text.substr(open, close - open);
    }

    /// "=" and the opening quote, whose offset is the result.
    std::size_t TakeQuote(const char* noValue)
    {
        SkipBlanks();
        if (Current() != '=') Fail(noValue);
        ++m_at;
        SkipBlanks();
        if (Current() != '"' && Current() != '\'') Fail("a value is not quoted");
        return m_at++;
    }

    void Markup()
    {
        switch (m_text.data()[m_at + 1]) {
        case '/':
            return EndTag();
        case '!':
            return CommentOrCData();
        case '?':
            return Instruction();
        default:
            return StartTag();
        }
    }

    void CommentOrCData()
    {
        const std::string_view rest = Rest();
        if (rest.starts_with("<!--")) {
            m_at += 4;
            Comment();
        } else if (rest.starts_with("<![CDATA[")) {
            if (m_depth == 0) Fail("text stands outside of the root element");
            m_at += 9;
            Skip("]]>", "the CDATA section does not end");
        } else {
            Fail("document types are not supported");
        }
    }

    void Comment()
    {
        Skip("--", "the comment does not end");
        if (Current() == '>') {
            ++m_at;
            return;
        }
        m_at -= 2;
        Fail("a comment holds '--'");
    }

    void Instruction()
    {
        m_at += 2;
        const std::string_view target = TakeName();
        if (SameText(target, "xml")) Fail("the declaration does not stand at the start");
        if (!IsBlank(Current()) && !Rest().starts_with("?>")) Fail("the name of the instruction is malformed");
        Skip("?>", "the instruction does not end");
    }

    void Text()
    {
        if (m_depth > 0) SkipIndent();
        while (true) {
            if (m_depth > 0) SkipAll(kPlainText);
            const char c = Current();
            if (c == '<' || AtEnd()) return;
            if (m_depth == 0 && !IsBlank(c)) Fail("text stands outside of the root element");
            if (c == '&') {
                Reference();
            } else if (c == '>') {
                if (m_text.substr(0, m_at).ends_with("]]")) Fail("text holds ']]>'");
                ++m_at;
            } else {
                TakeChar();
            }
        }
    }

    std::string_view TakeName()
    {
        const std::size_t start = m_at;
        const bool isPlain = kNameStart[static_cast<unsigned char>(Current())];
        while (true) {
            SkipAll(kNameByte);
            if (static_cast<unsigned char>(Current()) < 0x80) break;
            std::size_t length = 1;
            if (!IsNameChar(DecodeUtf8(Rest(), length))) break;
            m_at += length;
        }
        const std::string_view name = m_text.substr(start, m_at - start);
        std::size_t length = 0;
        if (!isPlain && (name.empty() || !IsNameStart(DecodeUtf8(name, length)))) {
            m_at = start;
            Fail("a name is malformed");
        }
        return name;
    }

    void StartTag()
    {
        ++m_at;
        if (m_depth == 0 && m_rootSeen) Fail("the document has more than one root element");
        m_rootSeen = true;
        const std::string_view name = TakeName();
        m_attributes.clear();
        while (true) {
            const bool blank = IsBlank(Current());
            SkipBlanks();
            if (Current() == '>') {
                ++m_at;
                if (++m_depth > kMaxXmlDepth) Fail("the elements are nested too deep");
                m_open[static_cast<std::size_t>(m_depth - 1)] = name;
                break;
            }
            if (Rest().starts_with("/>")) {
                if (m_depth + 1 > kMaxXmlDepth) Fail("the elements are nested too deep");
                m_at += 2;
                break;
            }
            if (!blank) Fail("the tag is malformed");
            Attribute();
        }
        CheckAttributes();
    }

    void Attribute()
    {
        m_attributes.push_back(TakeName());
        const char quote = m_text[TakeQuote("an attribute has no value")];
        while (true) {
            SkipAll(kPlainValue);
            const char c = Current();
            if (c == quote) break;
            if (AtEnd()) Fail("the value of an attribute does not end");
            if (c == '<') Fail("the value of an attribute holds '<'");
            if (c == '&') {
                Reference();
            } else {
                TakeChar();
            }
        }
        ++m_at;
    }

    void CheckAttributes()
    {
        if (m_attributes.size() < 2) return;
        constexpr std::size_t kFew = 16;
        const auto begin = m_attributes.begin();
        // Those that stand in the order of their names, as in most documents, are all different.
        if (std::ranges::adjacent_find(m_attributes, std::ranges::greater_equal()) == m_attributes.end()) return;
        if (m_attributes.size() <= kFew) {
            for (auto at = begin; at != m_attributes.end(); ++at) {
                if (std::find(begin, at, *at) != at) FailAt(*at, "an attribute is told twice");
            }
            return;
        }
        std::sort(begin, m_attributes.end());
        const auto twin = std::adjacent_find(begin, m_attributes.end());
        if (twin == m_attributes.end()) return;
        FailAt(std::max(twin[0], twin[1], [](auto a, auto b) { return a.data() < b.data(); }),
               "an attribute is told twice");
    }

    void EndTag()
    {
        m_at += 2;
        const std::string_view open = m_depth > 0 ? m_open[static_cast<std::size_t>(m_depth - 1)] : std::string_view();
        if (m_depth > 0 && Rest().starts_with(open) && m_text.data()[m_at + open.size()] == '>') {
            m_at += open.size();
        } else {
            const std::string_view name = TakeName();
            SkipBlanks();
            if (m_depth == 0 || Current() != '>' || open != name) Fail("the end tag does not match the start tag");
        }
        ++m_at;
        --m_depth;
    }

    /// A reference to one of the five entities, or to a character that XML can hold.
    void Reference()
    {
        constexpr std::size_t kLongest = 12;
        const std::size_t end = Rest().substr(0, kLongest).find(';');
        if (end == std::string_view::npos) Fail("'&' starts no reference");
        const std::string_view name = m_text.substr(m_at + 1, end - 1);
        static constexpr std::array<std::string_view, 5> kEntities{"amp", "lt", "gt", "quot", "apos"};
        if (!name.starts_with('#')) {
            if (std::ranges::find(kEntities, name) == kEntities.end()) Fail("the document refers to an unknown entity");
        } else if (!IsXmlChar(CharacterNumber(name.substr(1)))) {
            Fail("the document refers to a character that XML does not allow");
        }
        m_at += end + 1;
    }

    static char32_t CharacterNumber(std::string_view digits)
    {
        const bool hexadecimal = digits.starts_with('x');
        if (hexadecimal) digits.remove_prefix(1);
        char32_t number = 0;
        for (char c : digits) {
            char32_t digit = 99;
            if (c >= '0' && c <= '9')
                digit = static_cast<char32_t>(c - '0');
            else if (c >= 'a' && c <= 'f')
                digit = static_cast<char32_t>(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                digit = static_cast<char32_t>(c - 'A' + 10);
            if (digit >= (hexadecimal ? 16u : 10u) || number > 0x10ffff) return kMalformed;
            number = number * (hexadecimal ? 16 : 10) + digit;
        }
        return digits.empty() ? kMalformed : number;
    }

    static constexpr ByteSet kPlain = PlainBut("");
    static constexpr ByteSet kPlainText = PlainBut("<>&");
    static constexpr ByteSet kPlainValue = PlainBut("<&\"'");

    /// The ASCII characters that names begin with, and those that they hold.
    static constexpr ByteSet kNameStart = [] {
        ByteSet start{};
        for (char32_t c = 0; c < 0x80; ++c)
            start[c] = IsNameStart(c);
        return start;
    }();
    static constexpr ByteSet kNameByte = [] {
        ByteSet name{};
        for (char32_t c = 0; c < 0x80; ++c)
            name[c] = IsNameChar(c);
        return name;
    }();

    std::string_view m_text;
    std::size_t m_at = 0;
    int m_depth = 0;
    bool m_rootSeen = false;
    std::array<std::string_view, kMaxXmlDepth> m_open;
    std::vector<std::string_view> m_attributes;
};

} // namespace

bool IsXmlInstruction(std::string_view target, std::string_view data)
{
    if (!SameText(target, "xml")) return data.find("?>") == data.npos;
    if (target != "xml") return false;
    const std::string declaration = std::string("<?xml ").append(data).append("?>");
    try {
        Checker(declaration).RunDeclaration();
        return true;
    } catch (const XmlError&) {
        return false;
    }
}

void CheckXml(const std::string& text)
{
    Checker(text).Run();
}

} // namespace kv
