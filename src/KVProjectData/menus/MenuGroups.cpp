// The groups that a menu's elements are joined in.

#include "KVProjectData/menus/Menu.h"

namespace kv {

template <class Matches>
CGroupInfoNode* CKVMenu::FindGroup(Matches&& matches)
{
    for (LONG i = 0; i < m_groups.ChildCount(); ++i) {
        auto& group = static_cast<CGroupInfoNode&>(*m_groups.GetChild(i));
        if (matches(group)) return &group;
    }
    return nullptr;
}

CGroupInfoNode* CKVMenu::FindGroupByID(LONG id)
{
    return id < 0 ? nullptr : FindGroup([=](const CGroupInfoNode& group) { return group.ID() == id; });
}

HRESULT CKVMenu::AddtoGroup(LONG nEleId, LONG nGroupID)
{
    return Read([&] {
        if (CGroupInfoNode* found = FindGroupByID(nGroupID)) {
            const HRESULT added = found->AddElementID(nEleId);
            return FAILED(added) ? added : S_OK;
        }
        const auto group = Make<CGroupInfoNode>();
        ThrowIfFailed(group->AddElementID(nEleId));
        m_groups.ReserveRoom(1);
        m_groups.RecordChange(ListChange::Add, *group, m_groups.ChildCount());
        m_groups.Adopt(*group, -1, true);
        return S_OK;
    });
}

HRESULT CKVMenu::GetGroupByGroupID(LONG nGroupID, IUnknown** ppGroup)
{
    return Read([&] {
        if (!ppGroup) return E_POINTER;
        *ppGroup = nullptr;
        if (nGroupID < 0) return S_FALSE;
        CGroupInfoNode* group = FindGroupByID(nGroupID);
        return group ? ComPtr(group->Identity()).CopyTo(ppGroup) : S_OK;
    });
}

HRESULT CKVMenu::GetGroupIDByElementID(LONG nEleId, IUnknown** ppGroup)
{
    return Read([&] {
        if (!ppGroup) return E_POINTER;
        *ppGroup = nullptr;
        CGroupInfoNode* group = FindGroup([=](CGroupInfoNode& each) { return each.Holds(nEleId); });
        return group ? ComPtr(group->Identity()).CopyTo(ppGroup) : S_OK;
    });
}

HRESULT CKVMenu::RemoveGroup(LONG nGroupID)
{
    return Read([&] {
        LONG index = -1;
        CProjectNode* group = m_groups.FindChildByID(nGroupID, &index);
        if (!group) return S_OK;
        m_groups.RecordChange(ListChange::Remove, *group, index);
        m_groups.TakeOut(index);
        return S_OK;
    });
}

HRESULT CKVMenu::ClearGroupInfoList()
{
    return Read([&] {
        m_groups.DropAll();
        return S_OK;
    });
}

HRESULT CKVMenu::CopyGroupInfoList(IKVMenu* pMenu)
{
    if (!pMenu) return E_POINTER;
    return Guarded([&] {
        // Another menu's section is entered while none is held.
        std::vector<ComPtr<CGroupInfoNode>> groups;
        {
            const SectionLock lock(Section());
            for (LONG i = 0; i < m_groups.ChildCount(); ++i)
                groups.emplace_back(static_cast<CGroupInfoNode*>(m_groups.GetChild(i)));
        }
        for (const auto& group : groups) {
            for (const LONG element : group->ElementIDs())
                pMenu->AddtoGroup(element, group->ID());
            ComPtr<IUnknown> object;
            pMenu->GetGroupByGroupID(group->ID(), object.Put());
            const auto copy = Query<IGroupInfoNode>(object);
            if (!copy) continue;
            tagPOINTF centre{};
            tagPOINTF size{};
            double rotation = 0.0;
            group->GetGroupRect(&centre, &size);
            group->GetGroupRotation(&rotation);
            copy->SetGroupRect(centre, size);
            copy->SetGroupRotation(rotation);
        }
        return S_OK;
    });
}

} // namespace kv
