#include "KVProjectData/tree/NodeList.h"

#include "KVProjectData/tree/SubtreeLock.h"

#include <optional>

namespace kv {

LONG CNodeList::Adopt(CProjectNode& child, LONG index, bool assignID)
{
    const SectionLock lock(Section());
    const LONG at = index < 0 ? ChildCount() : index;
    ComPtr<IUnknown> reference(child.Identity());
    if (!InsertChild(&child, at, assignID)) return -1;
    // From here on the list's place in the sequence stands for the reference.
    static_cast<void>(reference.Detach());
    return at;
}

ComPtr<IUnknown> CNodeList::TakeOut(LONG index)
{
    const SectionLock lock(Section());
    CProjectNode* child = RemoveChildAt(index);
    return child ? ComPtr<IUnknown>::Attach(child->Identity()) : nullptr;
}

void CNodeList::DropAll()
{
    const SectionLock lock(Section());
    while (ChildCount() > 0)
        TakeOut(ChildCount() - 1);
}

bool CNodeList::RecordChange(ListChange change, CProjectNode& child, LONG index, bool major)
{
    // The record takes in what an element is outside of the list; nobody enters a section while recording.
    std::optional<SubtreeLock> lock;
    if (change == ListChange::Add && Type() == typeElementList) lock.emplace(child);
    return KeepInStep(major, [&](StateRecorder& step) { return step.KeepListChange(*this, change, child, index); });
}

} // namespace kv
