#include "KVProjectData/tree/Visitor.h"

namespace kv {

HRESULT CVisitor::Visit(CProjectNode& node, ULONG flags)
{
    const SectionLock lock(node.Section());
    ++m_depth;
    VisitNode(node, flags);
    for (LONG i = 0; i < node.ChildCount(); ++i)
        Visit(*node.GetChild(i), flags);
    --m_depth;
    return S_OK;
}

} // namespace kv
