#include "KVProjectData/project/ObjectIndex.h"

#include <algorithm>

namespace kv {
namespace {

/// Calls `visit` with each child of a node's list of a type, if it has one, until it returns true.
template <class Visit>
bool ForEachChild(CProjectNode& owner, NodeType listType, Visit&& visit)
{
    const CProjectNode* list = owner.FindChildByTypeAndName(listType, {});
    for (LONG i = 0; list && i < list->ChildCount(); ++i)
        if (visit(*list->GetChild(i))) return true;
    return false;
}

} // namespace

template <class Visit>
void ObjectIndex::ForEach(Visit&& visit)
{
    for (const CProjectNode* list : m_lists) {
        for (LONG i = 0; i < list->ChildCount(); ++i)
            if (visit(*list->GetChild(i), nullptr)) return;
    }
    for (LONG i = m_menus.ChildCount(); i-- > 0;) {
        CProjectNode& menu = *m_menus.GetChild(i);
        const SectionLock lock(menu.Section());
        const auto ofMenu = [&](CProjectNode& node) { return visit(node, &menu); };
        if (ForEachChild(menu, typeElementList, ofMenu)) return;
        const auto ofButton = [&](CProjectNode& element) {
            return element.Type() == typeButton && ForEachChild(element, typeElementList, ofMenu);
        };
        if (ForEachChild(menu, typeElementList, ofButton)) return;
        if (ForEachChild(menu, typeGroupInfoList, ofMenu)) return;
    }
}

ComPtr<IUnknown> ObjectIndex::Search(LONG id)
{
    ComPtr<IUnknown> found;
    ForEach([&](CProjectNode& node, const CProjectNode*) {
        if (node.ID() == id) found = node.Identity();
        return static_cast<bool>(found);
    });
    return found;
}

void ObjectIndex::Sort()
{
    m_items.clear();
    ForEach([this](CProjectNode& node, CProjectNode* menu) {
        m_items.push_back({node.ID(), &node, menu});
        return false;
    });
    std::ranges::stable_sort(m_items, {}, &Item::id);
}

ComPtr<IUnknown> ObjectIndex::Find(LONG id)
{
    const ULONGLONG state = CProjectNode::TreeState();
    if (m_sortedAt != state) {
        if (m_searchedAt != state) {
            m_searchedAt = state;
            return Search(id);
        }
        m_sortedAt = 0;
        Sort();
        // Taken before: what changed meanwhile makes it a state of the past.
        m_sortedAt = state;
    }
    const auto item = std::ranges::lower_bound(m_items, id, {}, &Item::id);
    if (item == m_items.end() || item->id != id) return nullptr;
    if (!item->menu) return item->node->Identity();
    {
        // Others edit menus at any time, inside their sections.
        const SectionLock lock(item->menu->Section());
        if (CProjectNode::TreeState() == state) return item->node->Identity();
    }
    return Search(id);
}

} // namespace kv
