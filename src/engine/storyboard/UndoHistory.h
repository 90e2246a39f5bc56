#pragma once
// The undo blocks of one production.

#include "engine/storyboard/UndoGroup.h"
#include "platform/com/ComPtr.h"
#include "platform/system/CriticalSection.h"
#include "platform/undo/OleUndo.h"

#include <functional>
#include <list>
#include <memory>
#include <vector>

namespace kv {

/// A block is a row of steps that each know how to go back and, run once more, forth again. Steps run
/// without a lock of the history; what they record meanwhile is ignored, as it is the way back already.
class UndoHistory {
public:
    /// Its own inverse; a failed step has changed nothing.
    using Step = std::function<HRESULT()>;

    /// From here on blocks can be opened, until `Drop`.
    void Use();

    /// The block that this group opens is open here, too. E_INVALIDARG when the history is in a group already.
    HRESULT Join(std::shared_ptr<UndoBlocks> group, std::weak_ptr<Storyboard> member);
    void Leave();

    /// ZXE_E_UNDO_BLOCK_OPEN when one is open, or a block is running.
    HRESULT Open();

    /// Keeps the open block, unless it is empty, or runs it back and drops it; then the result is that of the
    /// first step that failed. ZXE_E_NO_UNDO_BLOCK when none is open.
    HRESULT Close(bool commit);

    /// For who is about to record an edit. Numbers the blocks from 1; 0 when none is open.
    ULONG OpenBlock();

    /// Adds a step that takes back an edit just made. Without an open block it is forgotten.
    void Record(Step step);

    /// ZXE_E_NO_UNDO_BLOCK when none is open.
    HRESULT Add(const ComPtr<IOleUndoUnit>& unit);

    bool CanUndo() const { return Can(m_undo); }
    bool CanRedo() const { return Can(m_redo) && !RedoIsStale(); }

    /// That of the last unit of the block next in turn; null without a unit.
    Bstr UndoDescription() const { return Description(m_undo); }
    Bstr RedoDescription() const { return Description(m_redo); }

    /// When a step fails, those that ran are run back, the block stays in its place and the step's result is
    /// returned. ZXE_E_NOTHING_TO_UNDO without a block, ZXE_E_UNDO_BLOCK_OPEN as for `Open`.
    HRESULT Undo() { return Move(m_undo, m_redo, Order::NewestFirst); }
    HRESULT Redo() { return Move(m_redo, m_undo, Order::OldestFirst); }

    /// Drops the open block and all others, and runs nothing. From here on none can be opened.
    void Drop();

    struct Block {
        std::vector<Step> steps;
        ComPtr<IOleUndoUnit> lastUnit;
    };
    /// The newest block is the last. A list, so that a block goes from one stack to another without fail.
    using Stack = std::list<Block>;

    /// S_OK, or ZXE_E_UNDO_BLOCK_OPEN as for `Open`.
    HRESULT IsIdle() const;
    /// As `Clear`, but for the end of the blocks, whose units are not ours: they go where they are put. Results as
    /// those of `IsIdle`; then nothing is taken.
    HRESULT TakeAll(Stack& blocks);

private:
    enum class Phase { Idle, Open, Running };
    enum class Order { NewestFirst, OldestFirst };

    static HRESULT Run(const Block& block, Order order);

    bool Can(const Stack& stack) const;
    Bstr Description(const Stack& stack) const;
    HRESULT Move(Stack& from, Stack& to, Order order);

    // What follows runs in the section.

    /// The group's block is open, and this history has not joined it yet.
    bool IsAwaited() const;
    Phase GetPhase() const { return m_phase == Phase::Idle && IsAwaited() ? Phase::Open : m_phase; }
    /// Opens a block of its own as part of the group's, if that is open. Throws for lack of memory.
    void JoinBlock();
    bool IsBusy() const { return m_phase != Phase::Idle || !m_inUse; }
    void Set(Phase phase, bool inUse);
    void Set(Phase phase) { Set(phase, m_inUse); }
    void LeaveGroup();
    bool RedoIsStale() const { return m_group && m_group->Kept() != m_kept; }
    /// What cannot be redone any more goes to `dropped`, whose units are not ours.
    void TakeStale(Stack& dropped);

    mutable CriticalSection m_section;
    Phase m_phase = Phase::Idle;
    bool m_inUse = false;
    /// Null for none.
    std::shared_ptr<UndoBlocks> m_group;
    std::weak_ptr<Storyboard> m_member;
    /// The last block of the group that this history was part of, and what the group had kept when it looked last.
    ULONG m_joined = 0;
    ULONG m_kept = 0;
    ULONG m_blocks = 0;
    /// The open block or none.
    Stack m_open;
    Stack m_undo;
    Stack m_redo;
};

} // namespace kv
