#include "KVProjectData/tree/Locking.h"

#include "KVProjectData/ResultCodes.h"

namespace kv {

HRESULT CKVLocking::LockObject(VARIANT_BOOL bRecursive)
{
    if (!m_target) return KV_E_NO_LOCK_TARGET;
    m_target->Lock(bRecursive == VARIANT_TRUE);
    return S_OK;
}

HRESULT CKVLocking::UnlockObject(VARIANT_BOOL bRecursive)
{
    if (!m_target) return KV_E_NO_LOCK_TARGET;
    m_target->Unlock(bRecursive == VARIANT_TRUE);
    return S_OK;
}

} // namespace kv
