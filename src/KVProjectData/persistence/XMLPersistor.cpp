#include "KVProjectData/persistence/XMLPersistor.h"

#include "KVProjectData/persistence/ElementTable.h"

namespace kv {
namespace {

std::string_view ElementName(const CProjectNode& node)
{
    const std::string_view name = node.GetName(0);
    const ElementRow* row = name.empty() ? FindElement(node.Type()) : nullptr;
    return row ? row->name : name;
}

} // namespace

HRESULT CXMLPersistor::Visit(CProjectNode& node, ULONG flags)
{
    if (!m_parent) return E_INVALIDARG;
    // Held until what is below is written, so that all of it is of one time.
    const SectionLock lock(node.Section());
    const XmlElement parent = m_parent;
    ++m_depth;
    HRESULT result = VisitNode(node, flags);
    for (LONG i = 0; SUCCEEDED(result) && i < node.ChildCount(); ++i)
        result = Visit(*node.GetChild(i), flags);
    m_parent = parent;
    --m_depth;
    return result;
}

HRESULT CXMLPersistor::VisitNode(CProjectNode& node, ULONG flags)
{
    XmlElement element = m_parent.Add(ElementName(node));
    const HRESULT result = node.SaveXML(element.Get(), flags);
    if (FAILED(result)) {
        element.Remove();
    } else {
        m_parent = std::move(element);
    }
    return result;
}

HRESULT CMarkupPersistor::Visit(CProjectNode& node, ULONG flags)
{
    const SectionLock lock(node.Section());
    ++m_depth;
    HRESULT result = VisitNode(node, flags);
    for (LONG i = 0; SUCCEEDED(result) && i < node.ChildCount(); ++i)
        result = Visit(*node.GetChild(i), flags);
    if (SUCCEEDED(result)) m_target.End();
    --m_depth;
    return result;
}

HRESULT CMarkupPersistor::VisitNode(CProjectNode& node, ULONG)
{
    m_target.Begin(ElementName(node));
    m_attributes.Clear();
    node.Attributes(m_attributes);
    const HRESULT result = m_attributes.WriteTo(m_target);
    if (FAILED(result)) return result;
    if (const XmlElement content = node.OwnContent()) m_target.Add(content);
    return result;
}

} // namespace kv
