#pragma once
// Hands out the units of a stack or of a parent unit.

#include "platform/com/Object.h"
#include "platform/undo/OleUndo.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace kv {

/// The newest unit is the last.
using UnitStack = std::vector<ComPtr<IOleUndoUnit>>;

/// Goes through a stack from the newest unit on; units that come onto it meanwhile are passed over. E_FAIL without one.
class UnitEnumerator : public Object<IEnumOleUndoUnits> {
public:
    explicit UnitEnumerator(std::shared_ptr<const UnitStack> units) : m_units(std::move(units)) { Rewind(); }

    /// `fetched` may be null when one unit is asked for. S_FALSE when there were fewer than asked for.
    HRESULT Next(ULONG count, IOleUndoUnit** units, ULONG* fetched) override
    {
        if (fetched) *fetched = 0;
        if (!units || (!fetched && count != 1)) return E_POINTER;
        if (!m_units) return E_FAIL;
        ULONG given = 0;
        for (std::size_t left = Left(); given < count && left > 0; ++given)
            units[given] = ComPtr<IOleUndoUnit>((*m_units)[m_left = --left]).Detach();
        if (fetched) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }

    HRESULT Skip(ULONG count) override
    {
        if (!m_units) return E_FAIL;
        const std::size_t left = Left();
        m_left = left - std::min<std::size_t>(left, count);
        return left >= count ? S_OK : S_FALSE;
    }

    HRESULT Reset() override
    {
        Rewind();
        return m_units ? S_OK : E_FAIL;
    }

    HRESULT Clone(IEnumOleUndoUnits** copy) override
    {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        return Guarded([&] {
            const auto made = Make<UnitEnumerator>(m_units);
            made->m_left = m_left;
            return ComPtr<IEnumOleUndoUnits>(made).CopyTo(copy);
        });
    }

private:
    void Rewind() { m_left = m_units ? m_units->size() : 0; }
    /// How many units are still to come; units may have been taken off the stack meanwhile.
    std::size_t Left() const { return std::min(m_left, m_units->size()); }

    const std::shared_ptr<const UnitStack> m_units;
    std::size_t m_left = 0;
};

} // namespace kv
