#include "KVProjectData/tree/UndoContext.h"

namespace kv {

UndoContext& SharedUndoContext()
{
    static UndoContext context;
    return context;
}

void AttachNowOrLater(CProjectNode& node)
{
    if (SUCCEEDED(node.AttachEffect())) return;
    Guarded([&] {
        SharedUndoContext().attachNodes.Add(node);
        return S_OK;
    });
}

} // namespace kv
