#include "KVProjectData/undo/NodeAddress.h"

#include "KVProjectData/persistence/ElementTable.h"

#include <algorithm>

namespace kv {

NodeAddress::NodeAddress(CProjectNode& node) : m_node(node.Link())
{
    CProjectNode* project = node.Project();
    if (!project) return;
    m_project = project->Link();
    auto level = m_path.begin();
    for (CProjectNode* above = &node; above != project && level != m_path.end(); above = above->Parent())
        *level++ = {above->Type(), above->ID()};
    std::reverse(m_path.begin(), level);
}

CProjectNode* NodeAddress::Find() const
{
    CProjectNode* node = *m_node;
    if (node && node->Project()) return node;
    CProjectNode* found = FindInProject();
    return found ? found : node;
}

CProjectNode* NodeAddress::FindInProject() const
{
    CProjectNode* node = m_project ? *m_project : nullptr;
    for (auto level = m_path.begin(); node && level != m_path.end() && level->type != typeNone; ++level) {
        const ElementRow* row = FindElement(level->type);
        node = row && row->Item() ? node->FindChildByID(level->id) : node->FindChildByTypeAndName(level->type, {});
    }
    return node;
}

} // namespace kv
