#include "KVProjectData/titles/DiscCommandNode.h"

#include "KVProjectData/persistence/ElementTable.h"
#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/LoadedElement.h"

namespace kv {

void CDiscCommandNode::Assign(const DiscCommandParams& params)
{
    m_xml = XmlFragment(params.pXMLData);
    m_cmd = params.cmd;
    m_param1 = params.lParam1;
    m_param2 = params.lParam2;
}

void CDiscCommandNode::CopyTo(DiscCommandParams& params) const
{
    params.cmd = static_cast<DiscCommand>(m_cmd);
    params.lParam1 = m_param1;
    params.lParam2 = m_param2;
    if (!m_xml.Empty()) params.pXMLData = m_xml.Copy().Element().Detach();
}

void CDiscCommandNode::Attributes(AttributeArchive& archive)
{
    archive("code", m_cmd);
    archive("param1", m_param1);
    archive("param2", m_param2);
}

std::string_view CDiscCommandNode::GetName(ULONG) const
{
    return CommandElementName(m_cmd);
}

HRESULT CDiscCommandNode::LoadElement(const LoadedElement& element)
{
    const HRESULT result = CProjectNode::LoadElement(element);
    if (FAILED(result)) return result;
    const XmlView first = element.View().FirstChild();
    if (first && OwnsContent(first)) m_xml = XmlFragment(element.At(first).Get());
    return S_OK;
}

bool CDiscCommandNode::OwnsContent(const XmlView& child) const
{
    const bool isFirst = child.Parent().FirstChild() == child;
    return isFirst && child.IsElement() && (child.Name() == "file" || child.Name() == "effect");
}

XmlElement CDiscCommandNode::OwnContent() const
{
    return m_xml.Empty() ? XmlElement() : m_xml.Copy();
}

} // namespace kv
