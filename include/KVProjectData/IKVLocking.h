#pragma once
// Locking of a project, a title or a menu against edits.

#include "platform/automation/Members.h"

struct IKVLocking : IDispatch {
    static constexpr GUID IID = "e0a3a91f-2346-4c13-bc27-ed12b10877a9"_guid;
    using Base = IDispatch;

    /// Freezes the object against edits. With VARIANT_TRUE (no other value) everything below it, too.
    /// Locks count. KV_E_NO_LOCK_TARGET when the locking object has no target.
    virtual HRESULT LockObject(VARIANT_BOOL bRecursive) = 0;

    /// Takes one lock back; without a lock nothing happens.
    virtual HRESULT UnlockObject(VARIANT_BOOL bRecursive) = 0;
};

template <>
struct kv::InterfaceTable<IKVLocking> {
    static constexpr auto members = Members(Method<&IKVLocking::LockObject>("LockObject", 0x1, "bRecursive"),
                                            Method<&IKVLocking::UnlockObject>("UnlockObject", 0x2, "bRecursive"));
};
