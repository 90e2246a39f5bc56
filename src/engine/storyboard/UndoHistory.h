#pragma once
// The undo blocks of one production.

#include "platform/com/ComPtr.h"
#include "platform/system/CriticalSection.h"
#include "platform/undo/OleUndo.h"

#include <functional>
#include <list>
#include <vector>

namespace kv {

/// A block is a row of steps that each know how to go back and, run once more, forth again. Steps run
/// without a lock of the history; what they record meanwhile is ignored, as it is the way back already.
class UndoHistory {
public:
    /// Its own inverse; a failed step has changed nothing.
    using Step = std::function<HRESULT()>;

    /// ZXE_E_UNDO_BLOCK_OPEN when one is open, or a block is running.
    HRESULT Open();

    /// Keeps the open block, unless it is empty, or runs it back and drops it; then the result is that of the
    /// first step that failed. ZXE_E_NO_UNDO_BLOCK when none is open.
    HRESULT Close(bool commit);

    /// Numbers the blocks from 1; 0 when none is open.
    ULONG OpenBlock() const;

    /// Adds a step that takes back an edit just made. Without an open block it is forgotten.
    void Record(Step step);

    /// ZXE_E_NO_UNDO_BLOCK when none is open.
    HRESULT Add(const ComPtr<IOleUndoUnit>& unit);

    bool CanUndo() const { return Can(m_undo); }
    bool CanRedo() const { return Can(m_redo); }

    /// That of the last unit of the block next in turn; null without a unit.
    Bstr UndoDescription() const { return Description(m_undo); }
    Bstr RedoDescription() const { return Description(m_redo); }

    /// When a step fails, those that ran are run back, the block stays in its place and the step's result is
    /// returned. ZXE_E_NOTHING_TO_UNDO without a block, ZXE_E_UNDO_BLOCK_OPEN as for `Open`.
    HRESULT Undo() { return Move(m_undo, m_redo, Order::NewestFirst); }
    HRESULT Redo() { return Move(m_redo, m_undo, Order::OldestFirst); }

    /// Drops the open block and all others, and runs nothing.
    void Clear();

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

    mutable CriticalSection m_section;
    Phase m_phase = Phase::Idle;
    ULONG m_blocks = 0;
    /// The open block or none.
    Stack m_open;
    Stack m_undo;
    Stack m_redo;
};

} // namespace kv
