#include "KVProjectData/titles/DiscCommandNode.h"

#include "KVProjectData/persistence/ElementTable.h"
#include "platform/com/Activation.h"

namespace kv {

void CDiscCommandNode::Assign(const DiscCommandParams& params)
{
    m_xml = XmlFragment(params.pXMLData);
    m_cmd = params.cmd;
    m_param1 = params.lParam1;
    m_param2 = params.lParam2;
}

void CDiscCommandNode::CopyTo(DiscCommandParams& params, ComPtr<IXMLDOMDocument>& document) const
{
    params.cmd = static_cast<DiscCommand>(m_cmd);
    params.lParam1 = m_param1;
    params.lParam2 = m_param2;
    if (m_xml.Empty()) return;
    if (!document) ThrowIfFailed(CreateInstance(CLSID_DOMDocument, document));
    params.pXMLData = m_xml.CopyFor(*document.Get()).Detach();
}

std::string_view CDiscCommandNode::GetName(ULONG) const
{
    return CommandElementName(m_cmd);
}

HRESULT CDiscCommandNode::LoadElement(IXMLDOMNode* element)
{
    const HRESULT result = CProjectNode::LoadElement(element);
    if (FAILED(result)) return result;

    ComPtr<IXMLDOMNode> first;
    ThrowIfFailed(element->get_firstChild(first.Put()));
    std::string_view name;
    if (const auto child = Query<IXMLElementAttributes>(first)) child->ElementName(&name);
    if (name == "file" || name == "effect") m_xml = XmlFragment(first.Get());
    return S_OK;
}

HRESULT CDiscCommandNode::SaveElement(IXMLDOMNode* element, ULONG flags)
{
    const HRESULT result = CProjectNode::SaveElement(element, flags);
    if (FAILED(result) || m_xml.Empty()) return result;

    ComPtr<IXMLDOMDocument> document;
    ThrowIfFailed(element->get_ownerDocument(document.Put()));
    return element->appendChild(m_xml.CopyFor(*document.Get()).Get(), nullptr);
}

} // namespace kv
