#include "platform/undo/UndoManager.h"

#include <algorithm>
#include <iterator>

namespace kv {
namespace {

/// The place of a unit in a stack; its end for a unit that is not there.
UnitStack::iterator FindUnit(UnitStack& stack, IOleUndoUnit* unit)
{
    return std::ranges::find_if(stack, [unit](const auto& kept) { return IsSameObject(kept.Get(), unit); });
}

/// The same, or the place of the parent that holds the unit at some depth.
UnitStack::iterator FindRoot(UnitStack& stack, IOleUndoUnit* unit)
{
    return std::ranges::find_if(stack, [unit](const auto& kept) {
        if (IsSameObject(kept.Get(), unit)) return true;
        const auto parent = Query<IOleParentUndoUnit>(kept);
        return parent && parent->FindUnit(unit) == S_OK;
    });
}

HRESULT Enumerate(const UnitStack& stack, IEnumOleUndoUnits** units)
{
    if (!units) return E_POINTER;
    *units = nullptr;
    return Guarded([&] {
        const auto copy = std::make_shared<const UnitStack>(stack);
        return ComPtr<IEnumOleUndoUnits>(Make<UnitEnumerator>(copy)).CopyTo(units);
    });
}

/// One more unit can be added without fail.
void MakeRoom(UnitStack& stack)
{
    constexpr std::size_t kLeast = 8;
    if (stack.size() == stack.capacity()) stack.reserve(std::max(kLeast, 2 * stack.size()));
}

HRESULT DescribeNewest(const UnitStack& stack, BSTR* description)
{
    if (!description) return E_POINTER;
    *description = nullptr;
    return stack.empty() ? E_FAIL : stack.back()->GetDescription(description);
}

} // namespace

HRESULT UndoManager::Open(IOleParentUndoUnit* parent)
{
    if (!parent) return E_POINTER;
    if (!m_enabled) return S_OK;
    if (m_open) return m_open->Open(parent);
    m_open = parent;
    return S_OK;
}

HRESULT UndoManager::Close(IOleParentUndoUnit* parent, BOOL commit)
{
    if (!m_enabled) return S_OK;
    if (!m_open) return S_FALSE;
    const bool isOutermost = IsSameObject(m_open.Get(), parent);
    const HRESULT closed = m_open->Close(parent, commit);
    if (FAILED(closed)) return closed;
    if (closed == S_FALSE && parent && !isOutermost) return E_INVALIDARG;
    // A parent that rolled itself back says that it is done; one that closed a unit within itself stays open.
    if (closed == S_OK && !isOutermost) return S_OK;
    ComPtr<IOleUndoUnit> finished = std::move(m_open);
    return commit ? Guarded([&] { return Push(std::move(finished)); }) : S_OK;
}

HRESULT UndoManager::Add(IOleUndoUnit* unit)
{
    if (!unit) return E_POINTER;
    if (!m_enabled) return S_OK;
    if (m_open) return m_open->Add(unit);
    return Guarded([&] { return Push(ComPtr<IOleUndoUnit>(unit)); });
}

HRESULT UndoManager::Push(ComPtr<IOleUndoUnit> unit)
{
    UnitStack& stack = StackFor(m_state);
    if (!stack.empty()) stack.back()->OnNextAdd();
    stack.push_back(std::move(unit));
    if (m_state == State::Recording && !m_redo.empty()) UnitStack().swap(m_redo);
    return S_OK;
}

HRESULT UndoManager::GetOpenParentState(DWORD* state)
{
    if (!state) return E_POINTER;
    *state = UAS_NORMAL;
    return m_open ? m_open->GetParentState(state) : S_FALSE;
}

HRESULT UndoManager::DiscardFrom(IOleUndoUnit* unit)
{
    if (!m_enabled || m_state != State::Recording) return E_UNEXPECTED;
    // Units die after the stacks are whole again, since what they hold may come back here.
    UnitStack discarded;
    if (!unit) {
        UnitStack others;
        discarded.swap(m_undo);
        others.swap(m_redo);
        return S_OK;
    }
    return Guarded([&] {
        for (UnitStack* stack : {&m_undo, &m_redo}) {
            const auto from = FindRoot(*stack, unit);
            if (from == stack->end()) continue;
            discarded.assign(stack->begin(), from + 1);
            stack->erase(stack->begin(), from + 1);
            return S_OK;
        }
        return E_INVALIDARG;
    });
}

HRESULT UndoManager::RemoveUnit(IOleUndoUnit* unit)
{
    if (!unit) return E_POINTER;
    if (m_state != State::Recording) return E_UNEXPECTED;
    for (UnitStack* stack : {&m_undo, &m_redo}) {
        const auto found = FindUnit(*stack, unit);
        if (found == stack->end()) continue;
        const ComPtr<IOleUndoUnit> removed = std::move(*found);
        stack->erase(found);
        return S_OK;
    }
    return E_INVALIDARG;
}

HRESULT UndoManager::RemoveUnitsOf(const void* owner)
{
    if (m_state != State::Recording) {
        return Guarded([&] {
            m_ended.push_back(owner);
            return S_OK;
        });
    }
    const auto stays = [owner](const ComPtr<IOleUndoUnit>& unit) {
        const auto owned = Query<IOwnedUndoUnit>(unit);
        return !owned || owned->BelongsTo(owner) != S_OK;
    };
    return Guarded([&] {
        UnitStack removed;
        for (UnitStack* stack : {&m_undo, &m_redo}) {
            const auto end = std::stable_partition(stack->begin(), stack->end(), stays);
            std::move(end, stack->end(), std::back_inserter(removed));
            stack->erase(end, stack->end());
        }
        return S_OK;
    });
}

HRESULT UndoManager::UndoTo(IOleUndoUnit* unit)
{
    return Guarded([&] { return RunTo(unit, State::Undoing); });
}

HRESULT UndoManager::RedoTo(IOleUndoUnit* unit)
{
    return Guarded([&] { return RunTo(unit, State::Redoing); });
}

HRESULT UndoManager::RunTo(IOleUndoUnit* unit, State state)
{
    if (!m_enabled || m_open || m_state != State::Recording) return E_UNEXPECTED;
    const bool undoing = state == State::Undoing;
    UnitStack& from = undoing ? m_undo : m_redo;
    UnitStack& to = undoing ? m_redo : m_undo;
    if (from.empty() && !unit) return E_FAIL;
    std::size_t count = 1;
    if (unit) {
        const auto target = FindUnit(from, unit);
        if (target == from.end()) return E_INVALIDARG;
        count = static_cast<std::size_t>(from.end() - target);
    }
    const std::size_t before = to.size();
    HRESULT result = Run(from, count, state);
    if (FAILED(result) && FAILED(Run(to, to.size() - before, undoing ? State::Redoing : State::Undoing))) {
        // Neither way leads to a state that was whole.
        result = E_ABORT;
        UnitStack().swap(m_undo);
        UnitStack().swap(m_redo);
    }
    for (const void* owner : std::exchange(m_ended, {}))
        RemoveUnitsOf(owner);
    return result;
}

HRESULT UndoManager::Run(UnitStack& stack, std::size_t count, State state)
{
    m_state = state;
    UnitStack& target = StackFor(state);
    HRESULT result = S_OK;
    while (count-- > 0 && SUCCEEDED(result)) {
        // A unit that has run must not get lost on its way to the other stack.
        result = Guarded([&] {
            MakeRoom(target);
            return S_OK;
        });
        if (FAILED(result)) break;
        const ComPtr<IOleUndoUnit> running = std::move(stack.back());
        stack.pop_back();
        const std::size_t before = target.size();
        result = running->Do(this);
        if (SUCCEEDED(result)) continue;
        // E_ABORT is what the manager itself says when it is lost.
        if (result == E_ABORT) result = E_FAIL;
        // A unit that failed has changed nothing, so that its ways back are void.
        m_open.Reset();
        while (target.size() > before)
            target.pop_back();
        // There is room for it where it was.
        stack.push_back(running);
    }
    m_state = State::Recording;
    return result;
}

HRESULT UndoManager::EnumUndoable(IEnumOleUndoUnits** units)
{
    return Enumerate(m_undo, units);
}

HRESULT UndoManager::EnumRedoable(IEnumOleUndoUnits** units)
{
    return Enumerate(m_redo, units);
}

HRESULT UndoManager::GetLastUndoDescription(BSTR* description)
{
    return DescribeNewest(m_undo, description);
}

HRESULT UndoManager::GetLastRedoDescription(BSTR* description)
{
    return DescribeNewest(m_redo, description);
}

HRESULT UndoManager::Enable(BOOL enable)
{
    if (m_open || m_state != State::Recording) return E_UNEXPECTED;
    m_enabled = enable;
    if (enable) return S_OK;
    UnitStack undo;
    UnitStack redo;
    undo.swap(m_undo);
    redo.swap(m_redo);
    return S_OK;
}

} // namespace kv
