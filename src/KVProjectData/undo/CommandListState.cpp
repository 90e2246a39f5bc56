#include "KVProjectData/undo/CommandListState.h"

namespace kv {

SavedCommands::SavedCommands(CKVCommandList& list)
{
    DiscCommandParams* commands = nullptr;
    const HRESULT result = list.GetCommandList(&m_count, &commands);
    m_commands.reset(commands);
    ThrowIfFailed(result);
}

SavedCommands::~SavedCommands()
{
    for (LONG i = 0; i < m_count; ++i)
        ComPtr<IXMLDOMNode>::Attach(m_commands.get()[i].pXMLData);
}

HRESULT CKVCmdListState::Exchange()
{
    auto* list = static_cast<CKVCommandList*>(m_list.Find());
    if (!list) return S_FALSE;
    SavedCommands current(*list);
    const HRESULT applied = m_saved.ApplyTo(*list);
    if (SUCCEEDED(applied)) m_saved = std::move(current);
    return applied;
}

} // namespace kv
