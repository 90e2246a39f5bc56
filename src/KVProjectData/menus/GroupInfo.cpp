#include "KVProjectData/menus/GroupInfo.h"

#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/AttributeTexts.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

bool IsFinite(const tagPOINTF& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

/// "12;15;"
Bstr TextOf(const std::vector<LONG>& ids)
{
    std::string text;
    for (const LONG id : ids) {
        AppendNumber(id, text);
        text += ';';
    }
    return Bstr(ToUtf16(text));
}

/// What stands behind the last semicolon counts for nothing; a piece without a number is 0.
std::vector<LONG> ParseIDs(std::string_view text)
{
    std::vector<LONG> ids;
    for (std::size_t end = text.find(';'); end != std::string_view::npos; end = text.find(';')) {
        ids.push_back(static_cast<LONG>(ParseLeading(text.substr(0, end)).value_or(0)));
        text.remove_prefix(end + 1);
    }
    return ids;
}

} // namespace

HRESULT CGroupInfoNode::GetGroupSize(LONG* nSize)
{
    return Read([&] {
        if (!nSize) return E_POINTER;
        *nSize = static_cast<LONG>(m_elementIDs.size());
        return S_OK;
    });
}

HRESULT CGroupInfoNode::GetElementIDInGroup(LONG nIndex, LONG* nEleId)
{
    return Read([&] {
        if (!nEleId) return E_POINTER;
        if (nIndex < 0 || static_cast<std::size_t>(nIndex) >= m_elementIDs.size()) return S_FALSE;
        *nEleId = m_elementIDs[static_cast<std::size_t>(nIndex)];
        return S_OK;
    });
}

HRESULT CGroupInfoNode::GetGroupRect(tagPOINTF* ptCenter, tagPOINTF* ptSize)
{
    return Read([&] {
        if (!ptCenter || !ptSize) return E_POINTER;
        *ptCenter = m_center;
        *ptSize = m_size;
        return S_OK;
    });
}

HRESULT CGroupInfoNode::SetGroupRect(tagPOINTF ptCenter, tagPOINTF ptSize)
{
    return Read([&] {
        if (!IsFinite(ptCenter) || !IsFinite(ptSize)) return E_INVALIDARG;
        RecordState(false);
        m_center = ptCenter;
        m_size = ptSize;
        return S_OK;
    });
}

HRESULT CGroupInfoNode::SetGroupRotation(double dRotation)
{
    return Read([&] {
        if (!std::isfinite(dRotation)) return E_INVALIDARG;
        RecordState(false);
        m_rotation = dRotation;
        return S_OK;
    });
}

HRESULT CGroupInfoNode::SetGroupOriginAspect(double dAspect)
{
    return Read([&] {
        if (!std::isfinite(dAspect)) return E_INVALIDARG;
        m_originAspect = dAspect;
        return S_OK;
    });
}

HRESULT CGroupInfoNode::AddElementID(LONG id)
{
    return Read([&] {
        RecordState(false);
        if (std::ranges::find(m_elementIDs, id) != m_elementIDs.end()) return S_FALSE;
        m_elementIDs.push_back(id);
        return S_OK;
    });
}

bool CGroupInfoNode::Holds(LONG elementID)
{
    const SectionLock lock(Section());
    return std::ranges::find(m_elementIDs, elementID) != m_elementIDs.end();
}

std::vector<LONG> CGroupInfoNode::ElementIDs()
{
    const SectionLock lock(Section());
    return m_elementIDs;
}

void CGroupInfoNode::Attributes(AttributeArchive& archive)
{
    archive("Center_X", m_center.x);
    archive("Center_Y", m_center.y);
    archive.Value<Bstr>(
        "ElementIDs", [this] { return TextOf(m_elementIDs); },
        [this](const Bstr& text) { m_elementIDs = ParseIDs(ToUtf8(text.View())); });
    archive.ID(*this);
    archive("OriginAspect", m_originAspect);
    archive("Rotation", m_rotation);
    archive("Size_X", m_size.x);
    archive("Size_Y", m_size.y);
}

CProjectNode* CGroupInfoListNode::CreateItem(NodeType type)
{
    if (type != typeGroupInfo) return nullptr;
    const SectionLock lock(Section());
    const auto group = Make<CGroupInfoNode>();
    // A document tells the ID, or the loader finds one that no other object of the document has.
    group->SetID(0);
    Adopt(*group, -1, false);
    return group.Get();
}

} // namespace kv
