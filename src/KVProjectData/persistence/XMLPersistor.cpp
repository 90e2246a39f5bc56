#include "KVProjectData/persistence/XMLPersistor.h"

#include "KVProjectData/persistence/ElementTable.h"

namespace kv {
namespace {

Bstr ElementName(const CProjectNode& node)
{
    std::string_view name = node.GetName(0);
    if (name.empty()) {
        if (const ElementRow* row = FindElement(node.Type())) name = row->name;
    }
    return Bstr(std::u16string(name.begin(), name.end()));
}

} // namespace

CXMLPersistor::CXMLPersistor(IXMLDOMNode* target) : m_parent(target)
{
    if (m_parent) m_parent->get_ownerDocument(m_document.Put());
}

HRESULT CXMLPersistor::Visit(CProjectNode& node, ULONG flags)
{
    if (!m_document) return E_INVALIDARG;
    // Held until what is below is written, so that all of it is of one time.
    const SectionLock lock(node.Section());
    const Bstr name = ElementName(node);
    HRESULT result = m_document->createElement(name.Get(), m_element.Put());
    if (FAILED(result)) return result;

    const ComPtr<IXMLDOMNode> parent = m_parent;
    ++m_depth;
    result = VisitNode(node, flags);
    for (LONG i = 0; SUCCEEDED(result) && i < node.ChildCount(); ++i)
        result = Visit(*node.GetChild(i), flags);
    m_parent = parent;
    --m_depth;
    return result;
}

HRESULT CXMLPersistor::VisitNode(CProjectNode& node, ULONG flags)
{
    const ComPtr<IXMLDOMElement> element = std::move(m_element);
    const HRESULT result = node.SaveXML(element.Get(), flags);
    if (FAILED(result)) return result;
    ComPtr<IXMLDOMNode> appended;
    const HRESULT inserted = m_parent->appendChild(element.Get(), appended.Put());
    if (SUCCEEDED(inserted)) m_parent = std::move(appended);
    return inserted;
}

} // namespace kv
