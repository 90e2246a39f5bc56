#pragma once
// The locking object that a project, a title or a menu aggregates.

#include "KVProjectData/IKVLocking.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

namespace kv {

class CKVLocking : public Object<Dual<IKVLocking>> {
public:
    /// `target` outlives this object, or is null.
    CKVLocking(IUnknown* outer, CProjectNode* target) : Object(outer), m_target(target) {}

    HRESULT LockObject(VARIANT_BOOL bRecursive) override;
    HRESULT UnlockObject(VARIANT_BOOL bRecursive) override;

private:
    CProjectNode* m_target;
};

} // namespace kv
