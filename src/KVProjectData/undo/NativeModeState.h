#pragma once
// Undo of a change of a menu's mode.

#include "KVProjectData/tree/UndoContext.h"
#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// The menu itself exchanges what belongs to its modes.
class CKVNativeModeState final : public StateRecord<CKVNativeModeState, 109> {
public:
    CKVNativeModeState(CProjectNode& menu, std::shared_ptr<KeptMode> mode) : StateRecord(menu), m_mode(std::move(mode))
    {
    }

protected:
    Bstr Description() const override { return NodeDescription(); }

private:
    HRESULT Exchange(CProjectNode&, DrivingUndo&) override { return m_mode->Exchange(); }

    const std::shared_ptr<KeptMode> m_mode;
};

} // namespace kv
