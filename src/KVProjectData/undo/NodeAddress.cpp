#include "KVProjectData/undo/NodeAddress.h"

#include "KVProjectData/persistence/ElementTable.h"

#include <algorithm>
#include <iterator>

namespace kv {

NodeAddress::NodeAddress(CProjectNode& node) : m_node(node.Link())
{
    CProjectNode* project = node.Project();
    auto level = m_path.begin();
    if (!project || project == &node) {
        *level = {node.Type(), node.ID()};
    } else {
        for (CProjectNode* above = &node; above != project && level != m_path.end(); above = above->Parent())
            *level++ = {above->Type(), above->ID()};
        std::reverse(m_path.begin(), level);
    }
    if (project && project != &node) m_project = project->Link();
}

const NodeAddress::Level& NodeAddress::Last() const
{
    const auto end = std::ranges::find(m_path, typeNone, &Level::type);
    return *std::prev(end);
}

Bstr NodeAddress::Description() const
{
    std::string text(NodeTypeName(Last().type));
    text += '[' + std::to_string(Last().id) + ']';
    return Bstr(ToUtf16(text));
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
