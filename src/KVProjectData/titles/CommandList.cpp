#include "KVProjectData/titles/CommandList.h"

#include "KVProjectData/ProjectDataEvents.h"
#include "platform/com/TaskMemory.h"

#include <cstring>

namespace kv {

HRESULT CKVCommandList::GetCommandList(LONG* plCount, DiscCommandParams** ppCmdList)
{
    return Read([&] {
        if (!plCount || !ppCmdList) return E_POINTER;
        *plCount = 0;
        *ppCmdList = nullptr;
        const LONG count = ChildCount();
        if (count == 0) return S_OK;

        const std::size_t size = static_cast<std::size_t>(count) * sizeof(DiscCommandParams);
        auto* commands = static_cast<DiscCommandParams*>(CoTaskMemAlloc(size));
        if (!commands) return E_OUTOFMEMORY;
        std::memset(commands, 0, size);
        *plCount = count;
        *ppCmdList = commands;
        for (LONG i = 0; i < count; ++i)
            static_cast<CDiscCommandNode*>(GetChild(i))->CopyTo(commands[i]);
        return S_OK;
    });
}

HRESULT CKVCommandList::SetCommandList(LONG lCount, DiscCommandParams* pCmdList)
{
    return Edit([&](EditScope&) {
        if (lCount > 0 && !pCmdList) return E_POINTER;
        RecordCommandListState(*this);
        const HRESULT result = ReplaceCommands(lCount, pCmdList);
        if (FAILED(result)) return result;
        if (const CProjectNode* owner = Parent()) FireEvent(EVENT_CommandListChanged, owner->ID(), 0, 0);
        return S_OK;
    });
}

HRESULT CKVCommandList::ReplaceCommands(LONG count, const DiscCommandParams* commands)
{
    return Edit([&](EditScope&) {
        if (count > 0 && !commands) return E_POINTER;
        DropAll();
        for (LONG i = 0; i < count; ++i) {
            const auto command = Make<CDiscCommandNode>();
            command->Assign(commands[i]);
            Adopt(*command, -1, true);
        }
        return S_OK;
    });
}

CKVCommandList::Commands CKVCommandList::KeepCommands()
{
    const SectionLock lock(Section());
    Commands commands;
    commands.reserve(static_cast<std::size_t>(ChildCount()));
    for (LONG i = 0; i < ChildCount(); ++i)
        commands.emplace_back(static_cast<CDiscCommandNode*>(GetChild(i)));
    return commands;
}

HRESULT CKVCommandList::ExchangeCommands(Commands& commands)
{
    return Edit([&](EditScope&) {
        Commands before = KeepCommands();
        ReserveChildren(commands.size());
        DropAll();
        for (const auto& command : commands)
            Adopt(*command, -1, false);
        commands = std::move(before);
        return S_OK;
    });
}

CProjectNode* CKVCommandList::CreateItem(NodeType type)
{
    if (type != typeCommand) return nullptr;
    const SectionLock lock(Section());
    const auto command = Make<CDiscCommandNode>();
    Adopt(*command, -1, false);
    return command.Get();
}

} // namespace kv
