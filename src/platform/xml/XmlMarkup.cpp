#include "platform/xml/XmlMarkup.h"

#include "platform/automation/Variant.h"
#include "platform/xml/DomDocumentObject.h"
#include "platform/xml/DomEdit.h"
#include "platform/xml/XmlText.h"
#include "platform/xml/XmlWriter.h"

namespace kv {

void XmlMarkup::BeginLine(int height)
{
    if (Level() + height > kMaxXmlDepth) throw Error(E_INVALIDARG);
    if (m_inTag) m_buffer.Put('>');
    m_inTag = false;
    m_buffer.PutLine(Level());
}

void XmlMarkup::Begin(std::string_view name)
{
    if (!IsXmlName(name)) throw Error(E_INVALIDARG);
    BeginLine(1);
    m_buffer.Put('<');
    m_buffer.Put(name);
    m_open.push_back(name);
    m_inTag = true;
}

HRESULT XmlMarkup::WriteAttributes(XMLAttributeSource* source)
{
    XMLAttribute next;
    std::string_view text;
    while (source->Next(next)) {
        if (!IsXmlName(next.name) || !CheckedText(next, m_utf8, text)) return E_INVALIDARG;
        m_buffer.Put(' ');
        m_buffer.PutAttribute(next.name, text);
    }
    return S_OK;
}

void XmlMarkup::Add(const XmlElement& element)
{
    const pugi::xml_node node = ObjectOf(element.Get())->Place().node;
    BeginLine(HeightOf(node));
    WriteXml(node, Level(), m_buffer);
}

void XmlMarkup::End()
{
    const std::string_view name = m_open.back();
    m_open.pop_back();
    if (m_inTag) {
        m_buffer.Put("/>");
    } else {
        m_buffer.PutLine(Level());
        m_buffer.Put("</");
        m_buffer.Put(name);
        m_buffer.Put('>');
    }
    m_inTag = false;
    m_open.empty() ? m_buffer.Flush() : m_buffer.Relieve();
}

void XmlMarkup::PassTo(XmlBuffer& buffer) const
{
    for (const std::string& piece : m_pieces)
        buffer.Pass(piece);
}

HRESULT SaveXml(IXMLDOMDocument* document, std::u16string_view path, const XmlMarkup& markup,
                const XmlStandIns& standIns)
{
    return Guarded([&] {
        const DomObject* object = ObjectOf(document);
        if (!object || object->Document() != document) return E_INVALIDARG;
        return static_cast<const DomDocument*>(object)->Save(Variant(path), {&markup, &standIns});
    });
}

} // namespace kv
