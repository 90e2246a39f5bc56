#include "engine/storyboard/Panel.h"

#include "engine/storyboard/Storyboard.h"

#include <algorithm>

namespace kv {

CPanel::CPanel(std::shared_ptr<Storyboard> board, LONG id, ItemState state, Leftovers rest)
{
    Start(std::move(board), id, std::move(state), std::move(rest));
}

HRESULT CPanel::get_Duration(double* pdSeconds)
{
    return Give(Plays(State()), pdSeconds);
}

HRESULT CPanel::put_Duration(double dSeconds)
{
    if (!IsAmount(dSeconds) || dSeconds == 0.0) return E_INVALIDARG;
    if (State().clip.source->Facts().length > 0.0) return E_NOTIMPL;
    return Edit([=](ItemState& state) {
        const double outPoint = state.clip.inPoint + dSeconds;
        if (!IsAmount(outPoint)) return E_INVALIDARG;
        state.clip.outPoint = outPoint;
        return S_OK;
    });
}

double CPanel::Plays(const ItemState& state) const
{
    return std::max(EndOf(state.clip) - state.clip.inPoint, 0.0);
}

Span CPanel::Time() const
{
    double start = 0.0;
    for (const ComPtr<CPanel>& panel : Board().Panels()) {
        if (panel.Get() == this) break;
        start += panel->Plays(panel->State());
    }
    return {start, start + Plays(State())};
}

LONG CPanel::Enter(BoardContents& contents, LONG index)
{
    return EnterRow(contents.panels, ComPtr(this), index);
}

LONG CPanel::Where(const BoardContents& contents) const
{
    return IndexIn(contents.panels, this);
}

void CPanel::Leave(BoardContents& contents)
{
    std::erase(contents.panels, ComPtr(this));
}

void CPanel::TellPlaced(ProductionSinks& sinks, LONG where, bool added) const
{
    sinks.Tell(added ? &IZXEProductionDataEvents::OnPanelAdded : &IZXEProductionDataEvents::OnPanelRemoved, where);
}

void CPanel::TellChanged(ProductionSinks& sinks, LONG where, Origin) const
{
    sinks.Tell(&IZXEProductionDataEvents::OnPanelChanged, where);
}

} // namespace kv
