#include "platform/xml/XmlWriter.h"

#include "platform/xml/DataTypes.h"
#include "platform/xml/DomEdit.h"
#include "platform/xml/NodeHandle.h"
#include "platform/xml/XmlChars.h"
#include "platform/xml/XmlMarkup.h"

namespace kv {
namespace {

class Writer {
public:
    Writer(XmlBuffer& out, bool declarePrefix = false, const XmlInsertions& insertions = {})
        : m_out(out), m_declares(declarePrefix), m_front(insertions.front), m_standIns(insertions.standIns)
    {
    }

    bool LacksPrefix() const { return m_lacksPrefix; }

    /// A document, each node of it on a line of its own.
    void Document(pugi::xml_node document)
    {
        for (pugi::xml_node child : document.children()) {
            Node(child, 0, true);
            m_out.Put('\n');
        }
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
            m_out.Put("<!--");
            m_out.Put(node.value());
            m_out.Put("-->");
            break;
        case pugi::node_pi:
            m_out.Put("<?");
            m_out.Put(node.name());
            if (*node.value()) m_out.Put(' ');
            m_out.Put(node.value());
            m_out.Put("?>");
            break;
        default:
            break;
        }
        m_out.Relieve();
    }

private:
    void Element(pugi::xml_node element, int level, bool layout)
    {
        if (m_standIns && m_standIns->Write(element.internal_object(), level, layout, m_out)) return;
        const std::string_view name = element.name();
        m_out.Put('<');
        m_out.Put(name);
        const bool declaredAbove = m_prefixDeclared;
        const bool typed = Attributes(element);
        if (level == 0 && m_declares && !m_prefixDeclared) DeclarePrefix();
        m_lacksPrefix = m_lacksPrefix || (typed && !m_prefixDeclared);
        const pugi::xml_node first = element.first_child();
        const bool takesMarkup = level == 0 && m_front && !m_front->Empty();
        if (PointerOf(first) || takesMarkup) {
            m_out.Put('>');
            if (takesMarkup) m_front->PassTo(m_out);
            Content(first, level, layout && !HoldsText(first));
            m_out.Put("</");
            m_out.Put(name);
            m_out.Put('>');
        } else {
            m_out.Put("/>");
        }
        m_prefixDeclared = declaredAbove;
    }

    void Content(pugi::xml_node child, int level, bool lines)
    {
        for (; PointerOf(child); child = child.next_sibling()) {
            if (lines) m_out.PutLine(level + 1);
            Node(child, level + 1, lines);
        }
        if (lines) m_out.PutLine(level);
    }

    /// Tells whether there is a data type among them.
    bool Attributes(pugi::xml_node node)
    {
        bool typed = false;
        pugi::xml_attribute attribute = node.first_attribute();
        for (const char* name = attribute.name(); *name; name = attribute.name()) {
            m_out.Put(' ');
            m_out.PutAttribute(name, attribute.value());
            typed = typed || IsText(name, kDataTypeAttribute);
            m_prefixDeclared = m_prefixDeclared || IsText(name, kDataTypePrefix);
            attribute = attribute.next_attribute();
        }
        return typed;
    }

    void DeclarePrefix()
    {
        m_out.Put(' ');
        m_out.PutAttribute(kDataTypePrefix, kDataTypeNamespace);
        m_prefixDeclared = true;
    }

    /// Whether there is a text among a node and those behind it.
    static bool HoldsText(pugi::xml_node child)
    {
        for (; PointerOf(child); child = child.next_sibling()) {
            const pugi::xml_node_type type = child.type();
            if (type == pugi::node_pcdata || type == pugi::node_cdata) return true;
        }
        return false;
    }

    void Text(const char* text)
    {
        // White space alone would be taken for layout when it is read.
        const bool isLayout = IsBlank(*text) && !text[std::strspn(text, " \t\n\r")];
        if (isLayout) m_out.PutReference(*text++);
        m_out.PutEscaped(text, kSpecialInText);
    }

    /// The end mark within the text is split over two sections; a carriage return stands as a reference between two.
    void CData(std::string_view text)
    {
        m_out.Put("<![CDATA[");
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\r') {
                m_out.Put("]]>&#13;<![CDATA[");
                continue;
            }
            if (text[i] == '>' && text.substr(0, i).ends_with("]]")) m_out.Put("]]><![CDATA[");
            m_out.Put(text[i]);
        }
        m_out.Put("]]>");
    }

    XmlBuffer& m_out;
    const bool m_declares;
    const XmlMarkup* const m_front;
    const XmlStandIns* const m_standIns;
    bool m_prefixDeclared = false;
    bool m_lacksPrefix = false;
};

} // namespace

bool WriteXml(pugi::xml_node node, bool declarePrefix, const XmlOutput& output, const XmlInsertions& insertions)
{
    XmlBuffer buffer(output);
    Writer writer(buffer, declarePrefix, insertions);
    if (node.type() == pugi::node_document) {
        writer.Document(node);
    } else {
        writer.Node(node, 0, true);
    }
    buffer.Flush();
    return !writer.LacksPrefix();
}

void WriteXml(pugi::xml_node node, int level, XmlBuffer& buffer)
{
    Writer(buffer).Node(node, level, true);
}

void WriteCompactXml(pugi::xml_node node, const XmlOutput& output)
{
    XmlBuffer buffer(output);
    Writer(buffer).Node(node, 0, false);
    buffer.Flush();
}

void WriteXml(pugi::xml_attribute attribute, const XmlOutput& output)
{
    XmlBuffer buffer(output);
    buffer.PutAttribute(attribute.name(), attribute.value());
    buffer.Flush();
}

} // namespace kv
