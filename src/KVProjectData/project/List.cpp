#include "KVProjectData/project/List.h"

namespace kv {

HRESULT CKVList::Count(LONG* out) const
{
    if (!out) return E_POINTER;
    *out = ChildCount();
    return S_OK;
}

HRESULT CKVList::InsertItem(LONG position, CProjectNode& item, DISPID event)
{
    // What stands nowhere is put into one list only, whoever else is about to insert it.
    const SectionLock lock(Section());
    const SectionLock itemLock(item.Section());
    if (item.Parent()) return E_INVALIDARG;
    const LONG index = Adopt(item, position < 1 ? -1 : position - 1, true);
    if (index < 0) return KV_E_BAD_POSITION;
    const HRESULT recorded = Guarded([&] {
        RecordChange(ListChange::Add, item, index);
        return S_OK;
    });
    if (FAILED(recorded)) {
        TakeOut(index);
        return recorded;
    }
    FireEvent(event, item.ID(), position, 0);
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
