#pragma once
// The open step of a project: what its edits are recorded in.

#include "KVProjectData/tree/UndoContext.h"
#include "KVProjectData/undo/ParentUndoUnit.h"

namespace kv {

/// The compound unit of one project's step.
class ProjectStep final : public CStdOleParentUndoUnit {
public:
    explicit ProjectStep(const CProjectNode& project) : CStdOleParentUndoUnit(&project) {}

    /// While the step is open, E_INVALIDARG for a unit that is not open here: a step that was taken back would go on
    /// recording in the direction of the way back.
    HRESULT Close(IOleParentUndoUnit* parent, BOOL commit) override
    {
        if (!HasOpenChild()) {
            const bool isThis = parent == this || IsSameObject(parent, Controlling());
            if (m_isOpen && !isThis) return E_INVALIDARG;
            m_isOpen = false;
        }
        return CStdOleParentUndoUnit::Close(parent, commit);
    }

private:
    bool m_isOpen = true;
};

class UndoStep final : private StateRecorder {
public:
    /// For a unit that is open on the manager, which outlives the step.
    UndoStep(IOleUndoManager& manager, ComPtr<ProjectStep> unit) : m_manager(manager), m_unit(std::move(unit)) {}

    StateRecorder* Recorder() { return this; }
    const ComPtr<ProjectStep>& Unit() const { return m_unit; }

    /// Adds a unit that is complete.
    HRESULT Add(const ComPtr<IOleUndoUnit>& unit)
    {
        const SectionLock lock(SharedUndoContext().recording);
        return m_manager.Add(unit.Get());
    }

    /// Closes the unit on the manager. Without `commit` all that it recorded is taken back.
    HRESULT Close(bool commit);
    /// Forgets what was recorded and takes nothing back.
    void Abandon();

private:
    /// An edit goes on where the step takes no records; for lack of memory it must not: throws Error.
    template <class Record, class... Arguments>
    bool Keep(Arguments&&... arguments);
    bool KeepState(CProjectNode& node) override;
    bool KeepCommands(CKVCommandList& commandList) override;
    bool KeepListChange(CNodeList& list, ListChange change, CProjectNode& child, LONG index) override;
    bool KeepMode(CProjectNode& node, std::shared_ptr<KeptMode> mode) override;
    bool KeepButtonStyle(CProjectNode& button) override;
    bool KeepTextEffect(CProjectNode& text, const XmlElement& document) override;
    void Forget(const CProjectNode& project) override;

    IOleUndoManager& m_manager;
    const ComPtr<ProjectStep> m_unit;
};

} // namespace kv
