#include "KVProjectData/tree/ItemProject.h"

#include "KVProjectData/tree/NodeReference.h"

namespace kv {

HRESULT GiveProject(CProjectNode& item, IKVProjectData** ppProject)
{
    // Dropped outside of the section.
    ComPtr<IUnknown> held;
    return Guarded([&]() -> HRESULT {
        if (!ppProject) return E_POINTER;
        *ppProject = nullptr;
        const SectionLock lock(item.Section());
        // Inside the section the project stays in memory; it may be ending all the same.
        CProjectNode* list = item.Parent();
        CProjectNode* project = list ? list->Parent() : nullptr;
        if (project) held = NodeReference(*project).Hold();
        return held ? held->QueryInterface(IKVProjectData::IID, reinterpret_cast<void**>(ppProject)) : S_FALSE;
    });
}

} // namespace kv
