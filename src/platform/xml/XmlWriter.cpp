#include "platform/xml/XmlWriter.h"

#include "platform/xml/DataTypes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>

namespace kv {
namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024;

using CharacterSet = std::array<bool, 256>;

/// The characters, and the zero at the end of every text.
constexpr CharacterSet SetOf(std::string_view characters)
{
    CharacterSet set{};
    set[0] = true;
    for (char c : characters)
        set[static_cast<unsigned char>(c)] = true;
    return set;
}

constexpr CharacterSet kSpecialInText = SetOf("&<>\r");
constexpr CharacterSet kSpecialInAttribute = SetOf("&<>\"\t\n\r");

class Writer {
public:
    Writer(bool declarePrefix, const XmlOutput& output) : m_declares(declarePrefix), m_output(output) {}

    bool LacksPrefix() const { return m_lacksPrefix; }

    /// A document, or one node without the layout around it; a compact one without any.
    void Run(pugi::xml_node node, bool compact)
    {
        if (node.type() == pugi::node_document) {
            for (pugi::xml_node child : node.children()) {
                Node(child, 0, true);
                Put('\n');
            }
        } else {
            Node(node, 0, !compact);
        }
        Flush();
    }

    void Run(pugi::xml_attribute attribute)
    {
        Attribute(attribute);
        Flush();
    }

private:
    void Flush()
    {
        if (Size()) m_output({m_buffer.data(), Size()});
        m_out = m_buffer.data();
    }

    std::size_t Size() const { return static_cast<std::size_t>(m_out - m_buffer.data()); }

    /// Where the next so many bytes go.
    char* Room(std::size_t count)
    {
        if (static_cast<std::size_t>(m_end - m_out) < count) Grow(count);
        return m_out;
    }

    void Grow(std::size_t count)
    {
        const std::size_t size = Size();
        m_buffer.resize(2 * m_buffer.size() + count);
        m_out = m_buffer.data() + size;
        m_end = m_buffer.data() + m_buffer.size();
    }

    void Put(char c)
    {
        *Room(1) = c;
        ++m_out;
    }

    void Put(std::string_view text)
    {
        std::memcpy(Room(text.size()), text.data(), text.size());
        m_out += text.size();
    }

    void Node(pugi::xml_node node, int level, bool layout)
    {
        switch (node.type()) {
        case pugi::node_element:
            Element(node, level, layout);
            break;
        case pugi::node_pcdata:
            Text(node.value());
            break;
        case pugi::node_cdata:
            CData(node.value());
            break;
        case pugi::node_comment:
            Put("<!--");
            Put(node.value());
            Put("-->");
            break;
        case pugi::node_pi:
            Put("<?");
            Put(node.name());
            if (*node.value()) Put(' ');
            Put(node.value());
            Put("?>");
            break;
        default:
            break;
        }
        if (Size() >= kPiece) Flush();
    }

    void Element(pugi::xml_node element, int level, bool layout)
    {
        const std::string_view name = element.name();
        Put('<');
        Put(name);
        const bool declaredAbove = m_prefixDeclared;
        const bool typed = Attributes(element);
        if (level == 0 && m_declares && !m_prefixDeclared) DeclarePrefix();
        m_lacksPrefix = m_lacksPrefix || (typed && !m_prefixDeclared);
        if (const pugi::xml_node first = element.first_child()) {
            Put('>');
            Content(first, level, layout && !HoldsText(first));
            Put("</");
            Put(name);
            Put('>');
        } else {
            Put("/>");
        }
        m_prefixDeclared = declaredAbove;
    }

    void Content(pugi::xml_node child, int level, bool lines)
    {
        for (; child; child = child.next_sibling()) {
            if (lines) NewLine(level + 1);
            Node(child, level + 1, lines);
        }
        if (lines) NewLine(level);
    }

    /// Tells whether there is a data type among them.
    bool Attributes(pugi::xml_node node)
    {
        bool typed = false;
        for (auto attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute()) {
            Put(' ');
            const std::string_view name = Attribute(attribute);
            typed = typed || name == kDataTypeAttribute;
            m_prefixDeclared = m_prefixDeclared || name == kDataTypePrefix;
        }
        return typed;
    }

    /// Gives the name.
    std::string_view Attribute(pugi::xml_attribute attribute)
    {
        const std::string_view name = attribute.name();
        Put(name);
        Put("=\"");
        Escape(attribute.value(), kSpecialInAttribute);
        Put('"');
        return name;
    }

    void DeclarePrefix()
    {
        Put(' ');
        Put(kDataTypePrefix);
        Put("=\"");
        Put(kDataTypeNamespace);
        Put('"');
        m_prefixDeclared = true;
    }

    /// Whether there is a text among a node and those behind it.
    static bool HoldsText(pugi::xml_node child)
    {
        for (; child; child = child.next_sibling()) {
            const pugi::xml_node_type type = child.type();
            if (type == pugi::node_pcdata || type == pugi::node_cdata) return true;
        }
        return false;
    }

    void NewLine(int level)
    {
        const std::size_t indent = static_cast<std::size_t>(level) * 2;
        char* const out = Room(1 + indent);
        *out = '\n';
        std::memset(out + 1, ' ', indent);
        m_out += 1 + indent;
    }

    void Escape(const char* text, const CharacterSet& special)
    {
        while (true) {
            const char* end = text;
            while (!special[static_cast<unsigned char>(*end)])
                ++end;
            Put({text, static_cast<std::size_t>(end - text)});
            if (!*end) return;
            Reference(*end);
            text = end + 1;
        }
    }

    void Text(const char* text)
    {
        // White space alone would be taken for layout when it is read.
        const bool isLayout = *text && !text[std::strspn(text, " \t\n\r")];
        if (isLayout) Reference(*text++);
        Escape(text, kSpecialInText);
    }

    void Reference(char c)
    {
        switch (c) {
        case '&':
            Put("&amp;");
            break;
        case '<':
            Put("&lt;");
            break;
        case '>':
            Put("&gt;");
            break;
        case '"':
            Put("&quot;");
            break;
        default:
            Put("&#");
            Put(std::to_string(static_cast<unsigned char>(c)));
            Put(';');
        }
    }

    /// The end mark within the text is split over two sections; a carriage return stands as a reference between two.
    void CData(std::string_view text)
    {
        Put("<![CDATA[");
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\r') {
                Put("]]>&#13;<![CDATA[");
                continue;
            }
            if (text[i] == '>' && text.substr(0, i).ends_with("]]")) Put("]]><![CDATA[");
            Put(text[i]);
        }
        Put("]]>");
    }

    const bool m_declares;
    const XmlOutput& m_output;
    bool m_prefixDeclared = false;
    bool m_lacksPrefix = false;
    /// Grows where the text between two nodes is longer.
    std::string m_buffer = std::string(kPiece / 16, '\0');
    char* m_out = m_buffer.data();
    char* m_end = m_out + m_buffer.size();
};

} // namespace

bool WriteXml(pugi::xml_node node, bool declarePrefix, const XmlOutput& output)
{
    Writer writer(declarePrefix, output);
    writer.Run(node, false);
    return !writer.LacksPrefix();
}

void WriteCompactXml(pugi::xml_node node, const XmlOutput& output)
{
    Writer(false, output).Run(node, true);
}

void WriteXml(pugi::xml_attribute attribute, const XmlOutput& output)
{
    Writer(false, output).Run(attribute);
}

} // namespace kv
