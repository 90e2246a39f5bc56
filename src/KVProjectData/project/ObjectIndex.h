#pragma once
// The objects of a project by their IDs.

#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/ComPtr.h"

#include <array>
#include <vector>

namespace kv {

/// Where an ID is used more than once the first object counts: a title, a menu, a data file, then from the last menu to
/// the first its elements, those of its buttons, its groups. The first search in a tree goes through it, the next one
/// sorts what there is, and those after that look there until the tree changes.
class ObjectIndex {
public:
    /// The lists of the objects that stand in the project itself; `menus` is one of them.
    ObjectIndex(const std::array<CProjectNode*, 3>& lists, CProjectNode& menus) : m_lists(lists), m_menus(menus) {}

    /// Empty where there is none. Called inside the project's section.
    ComPtr<IUnknown> Find(LONG id);

private:
    struct Item {
        LONG id;
        CProjectNode* node;
        /// The menu that it stands in; null for an object of the project itself.
        CProjectNode* menu;
    };

    /// Calls `visit` with each object and its menu, inside the menu's section, until it returns true.
    template <class Visit>
    void ForEach(Visit&& visit);
    ComPtr<IUnknown> Search(LONG id);
    void Sort();

    const std::array<CProjectNode*, 3> m_lists;
    CProjectNode& m_menus;
    /// What `TreeState` was when the tree was searched last, and sorted.
    ULONGLONG m_searchedAt = 0;
    ULONGLONG m_sortedAt = 0;
    std::vector<Item> m_items;
};

} // namespace kv
