#include "engine/storyboard/Audio.h"

#include "engine/storyboard/Storyboard.h"

#include <algorithm>

namespace kv {

CAudio::CAudio(std::shared_ptr<Storyboard> board, LONG id, ItemState state, Leftovers rest)
    : m_isFile(!IsMoniker(state.clip.source->Name().View()))
{
    Start(std::move(board), id, std::move(state), std::move(rest));
}

HRESULT CAudio::FindInterface(REFIID iid, void** out)
{
    if (iid == (m_isFile ? ISmartAudio::IID : ISourceFile::IID)) return E_NOINTERFACE;
    return Object::FindInterface(iid, out);
}

Span CAudio::Time() const
{
    const ItemState state = State();
    const double length = std::max(EndOf(state.clip) - state.clip.inPoint, 0.0);
    if (state.end > 0.0 || state.clip.repeat || length == 0.0) return Item::Time();
    return {state.start, state.start + length};
}

LONG CAudio::Enter(BoardContents& contents, LONG)
{
    const auto idOf = [](const ComPtr<CAudio>& audio) { return audio->ID(); };
    contents.audio.insert(std::ranges::upper_bound(contents.audio, ID(), {}, idOf), ComPtr(this));
    return ID();
}

LONG CAudio::Where(const BoardContents&) const
{
    return ID();
}

void CAudio::Leave(BoardContents& contents)
{
    std::erase(contents.audio, ComPtr(this));
}

void CAudio::TellPlaced(ProductionSinks& sinks, LONG where, bool added) const
{
    sinks.Tell(added ? &IZXEProductionDataEvents::OnAudioAdded : &IZXEProductionDataEvents::OnAudioRemoved, where);
}

void CAudio::TellChanged(ProductionSinks& sinks, LONG where, Origin) const
{
    sinks.Tell(&IZXEProductionDataEvents::OnAudioChanged, where);
}

} // namespace kv
