#include "KVProjectData/undo/CommandListState.h"

namespace kv {

SavedCommands::SavedCommands(CKVCommandList& list)
{
    DiscCommandParams* commands = nullptr;
    const HRESULT result = list.GetCommandList(&m_count, &commands);
    m_commands.reset(commands);
    if (FAILED(result)) {
        Free();
        throw Error(result);
    }
}

void SavedCommands::Free()
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
    if (FAILED(applied)) {
        current.ApplyTo(*list);
        return applied;
    }
    m_saved = std::move(current);
    return S_OK;
}

} // namespace kv
