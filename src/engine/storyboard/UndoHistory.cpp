#include "engine/storyboard/UndoHistory.h"

#include "KVProjectData/Engine/Production.h"
#include "platform/com/Error.h"

#include <iterator>

namespace kv {

HRESULT UndoHistory::Open()
{
    const SectionLock lock(m_section);
    if (m_phase != Phase::Idle) return ZXE_E_UNDO_BLOCK_OPEN;
    m_open.emplace_back();
    m_phase = Phase::Open;
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
        if (m_phase != Phase::Open) return ZXE_E_NO_UNDO_BLOCK;
        closed.swap(m_open);
        m_phase = Phase::Idle;
        if (closed.back().steps.empty()) return S_OK;
        if (commit) {
            m_undo.splice(m_undo.end(), closed);
            dropped.swap(m_redo);
            return S_OK;
        }
        m_phase = Phase::Running;
    }
    HRESULT result = S_OK;
    for (auto step = closed.back().steps.rbegin(); step != closed.back().steps.rend(); ++step) {
        const HRESULT undone = Guarded(*step);
        if (SUCCEEDED(result)) result = undone;
    }
    const SectionLock lock(m_section);
    if (m_phase == Phase::Running) m_phase = Phase::Idle;
    return result;
}

ULONG UndoHistory::OpenBlock() const
{
    const SectionLock lock(m_section);
    return m_phase == Phase::Open ? m_blocks : 0;
}

void UndoHistory::Record(Step step)
{
    const SectionLock lock(m_section);
    if (m_phase == Phase::Open) m_open.back().steps.push_back(std::move(step));
}

HRESULT UndoHistory::Add(const ComPtr<IOleUndoUnit>& unit)
{
    const SectionLock lock(m_section);
    if (m_phase != Phase::Open) return ZXE_E_NO_UNDO_BLOCK;
    m_open.back().steps.push_back([unit] { return unit->Do(nullptr); });
    m_open.back().lastUnit = unit;
    return S_OK;
}

bool UndoHistory::Can(const Stack& stack) const
{
    const SectionLock lock(m_section);
    return m_phase == Phase::Idle && !stack.empty();
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
    Stack running;
    {
        const SectionLock lock(m_section);
        if (m_phase != Phase::Idle) return ZXE_E_UNDO_BLOCK_OPEN;
        if (from.empty()) return ZXE_E_NOTHING_TO_UNDO;
        running.splice(running.end(), from, std::prev(from.end()));
        m_phase = Phase::Running;
    }
    const HRESULT result = Run(running.back(), order);
    const SectionLock lock(m_section);
    // A step may have cleared the history; then the block goes with it.
    if (m_phase == Phase::Running) {
        m_phase = Phase::Idle;
        Stack& target = SUCCEEDED(result) ? to : from;
        target.splice(target.end(), running);
    }
    return result;
}

void UndoHistory::Clear()
{
    Stack open;
    Stack undo;
    Stack redo;
    const SectionLock lock(m_section);
    m_phase = Phase::Idle;
    open.swap(m_open);
    undo.swap(m_undo);
    redo.swap(m_redo);
}

HRESULT UndoHistory::IsIdle() const
{
    const SectionLock lock(m_section);
    return m_phase == Phase::Idle ? S_OK : ZXE_E_UNDO_BLOCK_OPEN;
}

HRESULT UndoHistory::TakeAll(Stack& blocks)
{
    const SectionLock lock(m_section);
    if (m_phase != Phase::Idle) return ZXE_E_UNDO_BLOCK_OPEN;
    blocks.splice(blocks.end(), m_undo);
    blocks.splice(blocks.end(), m_redo);
    return S_OK;
}

} // namespace kv
