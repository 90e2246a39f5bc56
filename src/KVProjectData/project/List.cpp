#include "KVProjectData/project/List.h"

namespace kv {

HRESULT CKVList::Count(LONG* out) const
{
    if (!out) return E_POINTER;
    *out = ChildCount();
    return S_OK;
}

HRESULT CKVList::MoveItem(LONG from, LONG to)
{
    CProjectNode* item = At(from);
    if (!item || !At(to)) return KV_E_BAD_POSITION;
    RecordChange(ListChange::Move, *item, from - 1);
    MoveChild(from - 1, to - 1);
    FireEvent(m_events.moved, item->ID(), from, to);
    return S_OK;
}

} // namespace kv
