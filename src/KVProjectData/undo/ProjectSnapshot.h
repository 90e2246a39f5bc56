#pragma once
// Undo of everything at once.

#include "KVProjectData/undo/NodeImage.h"
#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// When it is restored, message 2 tells hosts to read everything anew.
class CKVProjectSnapshot final : public StateRecord<CKVProjectSnapshot, 101> {
public:
    /// Throws Error(KV_E_NO_PROJECT) for a node that is none.
    explicit CKVProjectSnapshot(CProjectNode& project);

    /// What restoring gave the last time.
    HRESULT Restored() const { return m_restored; }

protected:
    Bstr Description() const override { return Bstr(u"Project Snapshot"); }

private:
    HRESULT Exchange(CProjectNode& project, DrivingUndo& driving) override;
    /// KV_E_LOCKED for a locked project. A failure leaves project and image as they were.
    HRESULT Restore(CProjectNode& project);

    NodeImage m_image;
    HRESULT m_restored = S_OK;
};

} // namespace kv
