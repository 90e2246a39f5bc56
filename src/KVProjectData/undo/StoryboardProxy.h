#pragma once
// The storyboards' part in a step: each undoes its own block.

#include "KVProjectData/Engine.h"
#include "KVProjectData/undo/UndoUnit.h"

#include <vector>

namespace kv {

/// Stands in a storyboard's block so that the block is not empty.
class CKVNullOperation final : public CStdOleUndoUnit<CKVNullOperation, 107, IOleUndoUnit> {
public:
    HRESULT Do(IOleUndoManager* manager) override { return AddTo(manager); }

protected:
    Bstr Description() const override { return Bstr(u"Dummy"); }
};

/// Has the storyboards of a step undo and redo their last blocks in turn.
class CKVSbdProxy final : public CStdOleUndoUnit<CKVSbdProxy, 105, IOleUndoUnit> {
public:
    void Append(ComPtr<IZXEProductionData> storyboard) { m_storyboards.push_back(std::move(storyboard)); }

    /// Sees to it that every storyboard's open block holds a unit.
    HRESULT Finish();

    /// The first storyboard that fails ends it, with its result: those before it are taken back to where they were, and
    /// the next turn, which would take this one back, does nothing. One that has nothing to undo is passed over.
    HRESULT Do(IOleUndoManager* manager) override;

private:
    HRESULT Run();

    std::vector<ComPtr<IZXEProductionData>> m_storyboards;
    bool m_undoes = true;
    bool m_passOver = false;
};

} // namespace kv
