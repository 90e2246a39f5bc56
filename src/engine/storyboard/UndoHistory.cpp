#include "engine/storyboard/UndoHistory.h"

#include "KVProjectData/Engine/Production.h"
#include "platform/com/Error.h"

#include <iterator>

namespace kv {

bool UndoHistory::IsAwaited() const
{
    const ULONG block = m_group ? m_group->OpenBlock() : 0;
    return block != 0 && block != m_joined;
}

void UndoHistory::JoinBlock()
{
    if (m_phase != Phase::Idle || !IsAwaited()) return;
    Stack block(1);
    const ULONG joined = m_group->Touch(m_member);
    if (joined == 0) return;
    m_joined = joined;
    m_open.swap(block);
    ++m_blocks;
    Set(Phase::Open);
}

void UndoHistory::Set(Phase phase, bool inUse)
{
    const bool wasBusy = IsBusy();
    m_phase = phase;
    m_inUse = inUse;
    if (m_group && IsBusy() != wasBusy) m_group->CountBusy(wasBusy ? -1 : 1);
}

void UndoHistory::TakeStale(Stack& dropped)
{
    if (!RedoIsStale()) return;
    m_kept = m_group->Kept();
    dropped.splice(dropped.end(), m_redo);
}

void UndoHistory::Use()
{
    const SectionLock lock(m_section);
    Set(m_phase, true);
}

HRESULT UndoHistory::Join(std::shared_ptr<UndoBlocks> group, std::weak_ptr<Storyboard> member)
{
    Stack dropped;
    const SectionLock lock(m_section);
    if (m_group && !m_group->IsEnded()) return E_INVALIDARG;
    TakeStale(dropped);
    LeaveGroup();
    m_group = std::move(group);
    m_member = std::move(member);
    m_joined = 0;
    m_kept = m_group->Kept();
    if (IsBusy()) m_group->CountBusy(1);
    return S_OK;
}

void UndoHistory::LeaveGroup()
{
    if (m_group && IsBusy()) m_group->CountBusy(-1);
    m_group.reset();
}

void UndoHistory::Leave()
{
    const SectionLock lock(m_section);
    LeaveGroup();
}

HRESULT UndoHistory::Open()
{
    const SectionLock lock(m_section);
    if (GetPhase() != Phase::Idle) return ZXE_E_UNDO_BLOCK_OPEN;
    m_open.emplace_back();
    Set(Phase::Open);
    ++m_blocks;
    return S_OK;
}

HRESULT UndoHistory::Close(bool commit)
{
    // Blocks that are dropped die outside of the lock: their units are not ours.
    Stack closed;
    Stack dropped;
    {
        const SectionLock lock(m_section);
        JoinBlock();
        if (m_phase != Phase::Open) return ZXE_E_NO_UNDO_BLOCK;
        TakeStale(dropped);
        closed.swap(m_open);
        const bool isEmpty = closed.back().steps.empty();
        Set(isEmpty || commit ? Phase::Idle : Phase::Running);
        if (isEmpty) return S_OK;
        if (commit) {
            m_undo.splice(m_undo.end(), closed);
            dropped.splice(dropped.end(), m_redo);
            return S_OK;
        }
    }
    HRESULT result = S_OK;
    for (auto step = closed.back().steps.rbegin(); step != closed.back().steps.rend(); ++step) {
        const HRESULT undone = Guarded(*step);
        if (SUCCEEDED(result)) result = undone;
    }
    const SectionLock lock(m_section);
    if (m_phase == Phase::Running) Set(Phase::Idle);
    return result;
}

ULONG UndoHistory::OpenBlock()
{
    const SectionLock lock(m_section);
    JoinBlock();
    return m_phase == Phase::Open ? m_blocks : 0;
}

void UndoHistory::Record(Step step)
{
    const SectionLock lock(m_section);
    JoinBlock();
    if (m_phase == Phase::Open) m_open.back().steps.push_back(std::move(step));
}

HRESULT UndoHistory::Add(const ComPtr<IOleUndoUnit>& unit)
{
    const SectionLock lock(m_section);
    JoinBlock();
    if (m_phase != Phase::Open) return ZXE_E_NO_UNDO_BLOCK;
    m_open.back().steps.push_back([unit] { return unit->Do(nullptr); });
    m_open.back().lastUnit = unit;
    return S_OK;
}

bool UndoHistory::Can(const Stack& stack) const
{
    const SectionLock lock(m_section);
    return GetPhase() == Phase::Idle && !stack.empty();
}

Bstr UndoHistory::Description(const Stack& stack) const
{
    ComPtr<IOleUndoUnit> unit;
    {
        const SectionLock lock(m_section);
        if (!stack.empty()) unit = stack.back().lastUnit;
    }
    Bstr description;
    if (unit && FAILED(unit->GetDescription(description.Put()))) return nullptr;
    return description;
}

HRESULT UndoHistory::Run(const Block& block, Order order)
{
    const std::size_t count = block.steps.size();
    const auto step = [&](std::size_t turn) {
        return Guarded(block.steps[order == Order::NewestFirst ? count - 1 - turn : turn]);
    };
    for (std::size_t turn = 0; turn < count; ++turn) {
        const HRESULT result = step(turn);
        if (SUCCEEDED(result)) continue;
        while (turn > 0)
            step(--turn);
        return result;
    }
    return S_OK;
}

HRESULT UndoHistory::Move(Stack& from, Stack& to, Order order)
{
    Stack dropped;
    Stack running;
    {
        const SectionLock lock(m_section);
        if (GetPhase() != Phase::Idle) return ZXE_E_UNDO_BLOCK_OPEN;
        TakeStale(dropped);
        if (from.empty()) return ZXE_E_NOTHING_TO_UNDO;
        running.splice(running.end(), from, std::prev(from.end()));
        Set(Phase::Running);
    }
    const HRESULT result = Run(running.back(), order);
    const SectionLock lock(m_section);
    // A step may have cleared the history; then the block goes with it.
    if (m_phase == Phase::Running) {
        Set(Phase::Idle);
        Stack& target = SUCCEEDED(result) ? to : from;
        target.splice(target.end(), running);
    }
    return result;
}

void UndoHistory::Drop()
{
    Stack open;
    Stack undo;
    Stack redo;
    const SectionLock lock(m_section);
    // Whoever opened the group's block hears of it; without memory for that nothing else is lost.
    Guarded([this] {
        JoinBlock();
        return S_OK;
    });
    Set(Phase::Idle, false);
    open.swap(m_open);
    undo.swap(m_undo);
    redo.swap(m_redo);
}

HRESULT UndoHistory::IsIdle() const
{
    const SectionLock lock(m_section);
    return GetPhase() == Phase::Idle ? S_OK : ZXE_E_UNDO_BLOCK_OPEN;
}

HRESULT UndoHistory::TakeAll(Stack& blocks)
{
    const SectionLock lock(m_section);
    if (GetPhase() != Phase::Idle) return ZXE_E_UNDO_BLOCK_OPEN;
    blocks.splice(blocks.end(), m_undo);
    blocks.splice(blocks.end(), m_redo);
    return S_OK;
}

} // namespace kv
