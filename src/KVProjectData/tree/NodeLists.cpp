#include "KVProjectData/tree/NodeLists.h"

namespace kv {

void CLockNodeList::Restart()
{
    constexpr std::size_t kUsualStep = 20;
    m_nodes.clear();
    m_nodes.reserve(kUsualStep);
}

void CLockNodeList::Run()
{
    for (CProjectNode* node : m_nodes)
        node->ClearRecorded();
}

void CAttachList::Run()
{
    for (CProjectNode* node : std::exchange(m_nodes, {}))
        node->AttachEffect();
}

} // namespace kv
