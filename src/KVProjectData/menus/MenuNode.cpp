#include "KVProjectData/menus/MenuNode.h"

namespace kv {

CMenuNode* MenuOf(const CProjectNode& node)
{
    for (CProjectNode* above = node.Parent(); above; above = above->Parent())
        if (above->Type() == typeMenu) return static_cast<CMenuNode*>(above);
    return nullptr;
}

CProjectNode* ButtonOf(const CProjectNode& element)
{
    const CProjectNode* list = element.Parent();
    if (!list || list->Type() != typeElementList) return nullptr;
    CProjectNode* owner = list->Parent();
    return owner && owner->Type() == typeButton ? owner : nullptr;
}

} // namespace kv
