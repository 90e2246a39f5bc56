#include "engine/storyboard/Item.h"

#include "engine/storyboard/Storyboard.h"

#include <cmath>

namespace kv {

double EndOf(const Clip& clip)
{
    if (clip.outPoint > 0.0) return clip.outPoint;
    return clip.source ? clip.source->Facts().length : 0.0;
}

HRESULT Item::Edit(const Change& change)
{
    return m_board->Edit(*this, change);
}

ItemState Item::State() const
{
    const SectionLock lock(m_board->Section());
    return m_state;
}

void Item::Put(BoardContents&, ItemState state)
{
    std::swap(m_state, state);
}

Span Item::Time() const
{
    const ItemState state = State();
    return {state.start, state.end > 0.0 ? state.end : m_board->Duration()};
}

void Item::Start(std::shared_ptr<Storyboard> board, LONG id, ItemState state, Leftovers rest)
{
    m_board = std::move(board);
    m_id = id;
    m_state = std::move(state);
    m_rest = std::move(rest);
}

bool IsAmount(double value)
{
    return std::isfinite(value) && value >= 0.0;
}

} // namespace kv
