#include "platform/xml/XmlWriter.h"

#include <array>

namespace kv {
namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024;

using CharacterSet = std::array<bool, 256>;

constexpr CharacterSet SetOf(std::string_view characters)
{
    CharacterSet set{};
    for (char c : characters)
        set[static_cast<unsigned char>(c)] = true;
    return set;
}

constexpr CharacterSet kSpecialInText = SetOf("&<>\r");
constexpr CharacterSet kSpecialInAttribute = SetOf("&<>\"\t\n\r");

class Writer {
public:
    Writer(pugi::xml_node hidden, const XmlOutput& output) : m_hidden(hidden), m_output(output)
    {
        m_text.reserve(2 * kPiece);
    }

    /// A document, or one node without the layout around it.
    void Run(pugi::xml_node node)
    {
        if (node.type() == pugi::node_document) {
            for (pugi::xml_node child : node.children()) {
                if (child == m_hidden) continue;
                Node(child, 0, true);
                m_text += '\n';
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
        if (!m_text.empty()) m_output(m_text);
        m_text.clear();
    }

    void Node(pugi::xml_node node, int level, bool layout)
    {
        switch (node.type()) {
        case pugi::node_element:
            Element(node, level, layout);
            break;
        case pugi::node_pcdata:
            Escape(node.value(), false);
            break;
        case pugi::node_cdata:
            CData(node.value());
            break;
        case pugi::node_comment:
            m_text.append("<!--").append(node.value()).append("-->");
            break;
        case pugi::node_pi:
            m_text.append("<?").append(node.name());
            if (*node.value()) m_text.append(1, ' ').append(node.value());
            m_text += "?>";
            break;
        default:
            break;
        }
        if (m_text.size() >= kPiece) Flush();
    }

    void Element(pugi::xml_node element, int level, bool layout)
    {
        m_text.append(1, '<').append(element.name());
        Attributes(element);
        if (!element.first_child()) {
            m_text += "/>";
            return;
        }
        m_text += '>';
        const bool lines = layout && !HoldsText(element);
        for (pugi::xml_node child : element.children()) {
            if (lines) NewLine(level + 1);
            Node(child, level + 1, lines);
        }
        if (lines) NewLine(level);
        m_text.append("</").append(element.name()).append(1, '>');
    }

    void Attributes(pugi::xml_node node)
    {
        for (pugi::xml_attribute attribute : node.attributes()) {
            m_text += ' ';
            Attribute(attribute);
        }
    }

    void Attribute(pugi::xml_attribute attribute)
    {
        m_text.append(attribute.name()).append("=\"");
        Escape(attribute.value(), true);
        m_text += '"';
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
        m_text += '\n';
        m_text.append(static_cast<std::size_t>(level) * 2, ' ');
    }

    void Escape(std::string_view text, bool attribute)
    {
        const auto& special = attribute ? kSpecialInAttribute : kSpecialInText;
        // White space alone would be taken for layout when it is read.
        const bool keepFirst = !attribute && text.find_first_not_of(" \t\n\r") == text.npos && !text.empty();
        if (keepFirst) {
            Reference(text.front());
            text.remove_prefix(1);
        }
        while (true) {
            std::size_t at = 0;
            while (at < text.size() && !special[static_cast<unsigned char>(text[at])])
                ++at;
            m_text += text.substr(0, at);
            if (at == text.size()) return;
            Reference(text[at]);
            text.remove_prefix(at + 1);
        }
    }

    void Reference(char c)
    {
        switch (c) {
        case '&':
            m_text += "&amp;";
            break;
        case '<':
            m_text += "&lt;";
            break;
        case '>':
            m_text += "&gt;";
            break;
        case '"':
            m_text += "&quot;";
            break;
        default:
            m_text.append("&#").append(std::to_string(static_cast<unsigned char>(c))).append(1, ';');
        }
    }

    /// The end mark within the text is split over two sections; a carriage return stands as a reference between two.
    void CData(std::string_view text)
    {
        m_text += "<![CDATA[";
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\r') {
                m_text += "]]>&#13;<![CDATA[";
                continue;
            }
            if (text[i] == '>' && text.substr(0, i).ends_with("]]")) m_text += "]]><![CDATA[";
            m_text += text[i];
        }
        m_text += "]]>";
    }

    pugi::xml_node m_hidden;
    const XmlOutput& m_output;
    std::string m_text;
};

} // namespace

void WriteXml(pugi::xml_node node, pugi::xml_node hidden, const XmlOutput& output)
{
    Writer(hidden, output).Run(node);
}

void WriteXml(pugi::xml_attribute attribute, const XmlOutput& output)
{
    Writer({}, output).Run(attribute);
}

} // namespace kv
