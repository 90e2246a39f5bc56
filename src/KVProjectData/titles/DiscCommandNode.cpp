#include "KVProjectData/titles/DiscCommandNode.h"

#include "KVProjectData/persistence/ElementTable.h"

namespace kv {
namespace {

/// A copy of a node with everything below it; empty for null.
HRESULT Clone(IXMLDOMNode* node, ComPtr<IXMLDOMNode>& copy)
{
    return node ? node->cloneNode(VARIANT_TRUE, copy.Put()) : S_OK;
}

} // namespace

HRESULT CDiscCommandNode::Assign(const DiscCommandParams& params)
{
    ComPtr<IXMLDOMNode> xmlData;
    const HRESULT result = Clone(params.pXMLData, xmlData);
    if (FAILED(result)) return result;
    m_cmd = params.cmd;
    m_param1 = params.lParam1;
    m_param2 = params.lParam2;
    m_xmlData = std::move(xmlData);
    return S_OK;
}

HRESULT CDiscCommandNode::CopyTo(DiscCommandParams& params) const
{
    params.cmd = static_cast<DiscCommand>(m_cmd);
    params.lParam1 = m_param1;
    params.lParam2 = m_param2;
    ComPtr<IXMLDOMNode> xmlData;
    const HRESULT result = Clone(m_xmlData.Get(), xmlData);
    params.pXMLData = xmlData.Detach();
    return result;
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
    element->get_firstChild(first.Put());
    std::string_view name;
    if (const auto child = Query<IXMLElementAttributes>(first)) child->ElementName(&name);
    return name == "file" || name == "effect" ? Clone(first.Get(), m_xmlData) : S_OK;
}

HRESULT CDiscCommandNode::SaveElement(IXMLDOMNode* element, ULONG flags)
{
    const HRESULT result = CProjectNode::SaveElement(element, flags);
    if (FAILED(result) || !m_xmlData) return result;

    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMNode> copy;
    ThrowIfFailed(element->get_ownerDocument(document.Put()));
    ThrowIfFailed(document->importNode(m_xmlData.Get(), VARIANT_TRUE, copy.Put()));
    return element->appendChild(copy.Get(), nullptr);
}

} // namespace kv
