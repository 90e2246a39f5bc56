#pragma once
// Hands out the units of a stack or of a parent unit.

#include "platform/com/Object.h"
#include "platform/undo/OleUndo.h"

#include <list>
#include <memory>

namespace kv {

using UnitList = std::list<ComPtr<IOleUndoUnit>>;

/// Goes through a list that stays as it is or grows at its front. E_FAIL without a list.
class UnitEnumerator : public Object<IEnumOleUndoUnits> {
public:
    explicit UnitEnumerator(std::shared_ptr<const UnitList> units) : m_units(std::move(units)) { Rewind(); }

    /// `fetched` may be null when one unit is asked for. S_FALSE when there were fewer than asked for.
    HRESULT Next(ULONG count, IOleUndoUnit** units, ULONG* fetched) override
    {
        if (fetched) *fetched = 0;
        if (!units || (!fetched && count != 1)) return E_POINTER;
        if (!m_units) return E_FAIL;
        ULONG given = 0;
        for (; given < count && m_next != m_units->end(); ++given, ++m_next)
            units[given] = ComPtr<IOleUndoUnit>(*m_next).Detach();
        if (fetched) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }

    HRESULT Skip(ULONG count) override
    {
        if (!m_units) return E_FAIL;
        for (; count > 0 && m_next != m_units->end(); --count)
            ++m_next;
        return count == 0 ? S_OK : S_FALSE;
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
            made->m_next = m_next;
            return ComPtr<IEnumOleUndoUnits>(made).CopyTo(copy);
        });
    }

private:
    void Rewind()
    {
        if (m_units) m_next = m_units->begin();
    }

    const std::shared_ptr<const UnitList> m_units;
    UnitList::const_iterator m_next;
};

} // namespace kv
