#include "KVProjectData/tree/UndoContext.h"

namespace kv {

UndoContext& SharedUndoContext()
{
    static UndoContext context;
    return context;
}

} // namespace kv
