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

    /// A document, or one node without the layout around it.
    void Run(pugi::xml_node node)
    {
        if (node.type() == pugi::node_document) {
            for (pugi::xml_node child : node.children()) {
                Node(child, 0, true);
                Put('\n');
            }
        } else {
            Node(node, 0, true);
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
        if (m_size) m_output({m_buffer.data(), m_size});
        m_size = 0;
    }

    /// Where the next so many bytes go.
    char* Room(std::size_t count)
    {
        if (m_buffer.size() - m_size < count) m_buffer.resize(2 * m_buffer.size() + count);
        return m_buffer.data() + m_size;
    }

    void Put(char c)
    {
        *Room(1) = c;
        ++m_size;
    }

    void Put(std::string_view text)
    {
        std::memcpy(Room(text.size()), text.data(), text.size());
        m_size += text.size();
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
        if (m_size >= kPiece) Flush();
    }

    void Element(pugi::xml_node element, int level, bool layout)
    {
        Put('<');
        Put(element.name());
        const bool declaredAbove = m_prefixDeclared;
        const bool typed = Attributes(element);
        if (level == 0 && m_declares && !m_prefixDeclared) DeclarePrefix();
        m_lacksPrefix = m_lacksPrefix || (typed && !m_prefixDeclared);
        Content(element, level, layout);
        m_prefixDeclared = declaredAbove;
    }

    void Content(pugi::xml_node element, int level, bool layout)
    {
        if (!element.first_child()) {
            Put("/>");
            return;
        }
        Put('>');
        const bool lines = layout && !HoldsText(element);
        for (pugi::xml_node child : element.children()) {
            if (lines) NewLine(level + 1);
            Node(child, level + 1, lines);
        }
        if (lines) NewLine(level);
        Put("</");
        Put(element.name());
        Put('>');
    }

    /// Tells whether there is a data type among them.
    bool Attributes(pugi::xml_node node)
    {
        bool typed = false;
        for (pugi::xml_attribute attribute : node.attributes()) {
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

    static bool HoldsText(pugi::xml_node element)
    {
        for (pugi::xml_node child : element.children()) {
            if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) return true;
        }
        return false;
    }

    void NewLine(int level)
    {
        const std::size_t indent = static_cast<std::size_t>(level) * 2;
        Put('\n');
        std::memset(Room(indent), ' ', indent);
        m_size += indent;
    }

    void Escape(const char* text, const CharacterSet& special)
    {
        constexpr std::size_t kPortion = 128;
        while (true) {
            char* out = Room(kPortion);
            const char* const end = out + kPortion;
            while (out != end && !special[static_cast<unsigned char>(*text)])
                *out++ = *text++;
            m_size = static_cast<std::size_t>(out - m_buffer.data());
            if (out == end) continue;
            if (!*text) return;
            Reference(*text++);
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
    std::size_t m_size = 0;
};

} // namespace

bool WriteXml(pugi::xml_node node, bool declarePrefix, const XmlOutput& output)
{
    Writer writer(declarePrefix, output);
    writer.Run(node);
    return !writer.LacksPrefix();
}

void WriteXml(pugi::xml_attribute attribute, const XmlOutput& output)
{
    Writer(false, output).Run(attribute);
}

} // namespace kv
