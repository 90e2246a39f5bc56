#pragma once
// The ordered disc commands of a project, a title, a menu or a button.

#include "KVProjectData/IKVCommandList.h"
#include "KVProjectData/titles/DiscCommandNode.h"
#include "KVProjectData/tree/NodeList.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

#include <vector>

namespace kv {

class CKVCommandList final : public CNodeList, public Object<Dual<IKVCommandList>> {
public:
    explicit CKVCommandList(IUnknown* outer) : CNodeList(typeCmdList), Object(outer) {}

    HRESULT GetCommandList(LONG* plCount, DiscCommandParams** ppCmdList) override;
    HRESULT SetCommandList(LONG lCount, DiscCommandParams* pCmdList) override;

    /// Replaces the commands without undo record and event. A record whose XML cannot be copied ends the
    /// replacement with the commands before it.
    HRESULT ReplaceCommands(LONG count, const DiscCommandParams* commands);

    using Commands = std::vector<ComPtr<CDiscCommandNode>>;

    /// The commands themselves, for `ExchangeCommands`; they stay in the list.
    Commands KeepCommands();
    /// Puts commands that were kept in the place of those in the list, and gives those; without undo record and event.
    /// KV_E_LOCKED changes nothing.
    HRESULT ExchangeCommands(Commands& commands);

    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive&) override {}
    CProjectNode* CreateItem(NodeType type) override;
};

} // namespace kv
