#include "engine/storyboard/Storyboard.h"

#include "engine/storyboard/Production.h"

#include <cmath>

namespace kv {
namespace {

using Events = IZXEProductionDataEvents;

} // namespace

// Life

HRESULT Storyboard::Open()
{
    const SectionLock lock(m_section);
    if (std::exchange(m_open, true)) return S_FALSE;
    m_history.Use();
    return S_OK;
}

HRESULT Storyboard::Close()
{
    const ComPtr<IUnknown> production = Production();
    {
        const SectionLock lock(m_section);
        if (!std::exchange(m_open, false)) return S_FALSE;
    }
    m_history.Drop();
    if (production) m_sinks.Tell(&Events::OnClosed);
    return S_OK;
}

void Storyboard::End()
{
    BoardContents contents;
    {
        const SectionLock lock(m_section);
        m_production = nullptr;
        m_open = false;
        std::swap(contents, m_contents);
    }
    m_history.Leave();
    m_history.Drop();
}

bool Storyboard::IsOpen()
{
    const SectionLock lock(m_section);
    return m_open;
}

bool Storyboard::IsModified()
{
    const SectionLock lock(m_section);
    return m_modified;
}

void Storyboard::ClearModified()
{
    const ComPtr<IUnknown> production = Production();
    {
        const SectionLock lock(m_section);
        if (!std::exchange(m_modified, false)) return;
    }
    m_sinks.Tell(&Events::OnModifiedChanged, 0);
}

ComPtr<IUnknown> Storyboard::Production()
{
    const SectionLock lock(m_section);
    if (!m_production || !m_production->AddRefIfAlive()) return nullptr;
    return ComPtr<IUnknown>::Attach(m_production->Inner());
}

// Contents

std::vector<ComPtr<CPanel>> Storyboard::Panels()
{
    const SectionLock lock(m_section);
    return m_contents.panels;
}

std::vector<ComPtr<CAudio>> Storyboard::Audio()
{
    const SectionLock lock(m_section);
    return m_contents.audio;
}

double Storyboard::Duration()
{
    const std::vector<ComPtr<CPanel>> panels = Panels();
    if (panels.empty()) return GetSettings().blankDuration;
    double seconds = 0.0;
    for (const ComPtr<CPanel>& panel : panels)
        seconds += panel->Plays(panel->State());
    return seconds;
}

double Storyboard::FrameRate()
{
    for (const ComPtr<CPanel>& panel : Panels()) {
        const double rate = panel->State().clip.source->Facts().frameRate;
        if (rate > 0.0) return rate;
    }
    return 0.0;
}

ComPtr<CEffect> Storyboard::Effect(LONG index)
{
    const SectionLock lock(m_section);
    const EffectLayers& effects = m_contents.effects;
    if (index < 0 || static_cast<std::size_t>(index) >= effects.Count()) return nullptr;
    return std::next(effects.begin(), index)->second;
}

ComPtr<CEffect> Storyboard::EffectAt(LONG layer, double time)
{
    const double given = FrameRate();
    const double rate = given > 0.0 ? given : kDefaultFrameRate;
    const double frame = std::floor(time * rate);
    const double next = (frame + 1.0) / rate;
    const SectionLock lock(m_section);
    auto shown = m_contents.effects.LastBefore(layer, next, [&](const Item& effect) {
        return effect.m_state.end == 0.0 || effect.m_state.end >= frame / rate;
    });
    return shown ? shown : m_contents.effects.FirstFrom(layer, next);
}

BoardImage Storyboard::Image()
{
    const auto add = [](auto& list, const auto& item) { list.push_back({item, item->m_state}); };
    BoardImage image;
    const SectionLock lock(m_section);
    image.settings = m_settings;
    image.rest = m_rest;
    image.panels.reserve(m_contents.panels.size());
    for (const ComPtr<CPanel>& panel : m_contents.panels)
        add(image.panels, panel);
    image.effects.reserve(m_contents.effects.Count());
    for (const auto& [key, effect] : m_contents.effects)
        add(image.effects, effect);
    image.audio.reserve(m_contents.audio.size());
    for (const ComPtr<CAudio>& audio : m_contents.audio)
        add(image.audio, audio);
    return image;
}

// Loading

HRESULT Storyboard::ReadyToLoad()
{
    return IsOpen() ? m_history.IsIdle() : ZXE_E_NOT_OPEN;
}

void Storyboard::SetPlaced(BoardContents& contents, bool placed)
{
    for (const ComPtr<CPanel>& panel : contents.panels)
        panel->m_placed = placed;
    for (const auto& [key, effect] : contents.effects)
        effect->m_placed = placed;
    for (const ComPtr<CAudio>& audio : contents.audio)
        audio->m_placed = placed;
}

HRESULT Storyboard::Load(NewBoard board)
{
    // What is replaced ends behind the section.
    UndoHistory::Stack blocks;
    const ComPtr<IUnknown> production = Production();
    bool wasModified = false;
    {
        const SectionLock lock(m_section);
        if (!production || !m_open) return ZXE_E_NOT_OPEN;
        const HRESULT taken = m_history.TakeAll(blocks);
        if (FAILED(taken)) return taken;
        SetPlaced(m_contents, false);
        SetPlaced(board.contents, true);
        std::swap(m_contents, board.contents);
        std::swap(m_rest, board.rest);
        m_settings = board.settings;
        wasModified = std::exchange(m_modified, false);
    }
    m_sinks.Tell(&Events::OnPanelsReset);
    m_sinks.Tell(&Events::OnSettingsChanged);
    m_sinks.Tell(&Events::OnDurationChanged);
    if (wasModified) m_sinks.Tell(&Events::OnModifiedChanged, 0);
    if (!blocks.empty()) m_sinks.Tell(&Events::OnUndoStateChanged, 0);
    m_sinks.Tell(&Events::OnEffectsInvalidated);
    return S_OK;
}

LONG Storyboard::NewID()
{
    const SectionLock lock(m_section);
    return ++m_lastID;
}

// Edits

LONG Storyboard::Place(Item& item, LONG where, bool adds)
{
    const LONG place = adds ? item.Enter(m_contents, where) : item.Where(m_contents);
    if (!adds) item.Leave(m_contents);
    item.m_placed = adds;
    return place;
}

HRESULT Storyboard::Add(const ComPtr<Item>& item, LONG index)
{
    const ComPtr<IUnknown> production = Production();
    LONG where = 0;
    bool nowModified = false;
    {
        const SectionLock lock(m_section);
        if (!production || !m_open) return ZXE_E_NOT_OPEN;
        if (index < -1 || index > static_cast<LONG>(m_contents.panels.size())) return E_INVALIDARG;
        where = Place(*item, index, true);
        try {
            m_history.Record([this, back = Placement{item, where, false}]() mutable { return Exchange(back); });
        } catch (...) {
            Place(*item, where, false);
            throw;
        }
        nowModified = SetModified();
    }
    TellPlaced(*item, where, true, nowModified);
    return S_OK;
}

HRESULT Storyboard::Remove(const Find& find)
{
    const ComPtr<IUnknown> production = Production();
    ComPtr<Item> item;
    LONG where = 0;
    bool nowModified = false;
    {
        const SectionLock lock(m_section);
        if (!production || !m_open) return ZXE_E_NOT_OPEN;
        item = find(m_contents);
        if (!item) return E_INVALIDARG;
        where = item->Where(m_contents);
        m_history.Record([this, back = Placement{item, where, true}]() mutable { return Exchange(back); });
        Place(*item, where, false);
        nowModified = SetModified();
    }
    TellPlaced(*item, where, false, nowModified);
    return S_OK;
}

HRESULT Storyboard::Edit(Item& item, const Item::Change& change)
{
    const ComPtr<Item> self(&item);
    const ComPtr<IUnknown> production = Production();
    return Guarded([&]() -> HRESULT {
        ItemState before;
        ItemState after;
        LONG where = 0;
        bool nowModified = false;
        {
            const SectionLock lock(m_section);
            if (!production || !m_open || !item.m_placed) return ZXE_E_NOT_OPEN;
            before = item.m_state;
            after = before;
            const HRESULT result = change(after);
            if (FAILED(result) || after == before) return result;
            const ULONG block = m_history.OpenBlock();
            // One record of an item in a block takes it back to what it was before.
            if (block != 0 && block != item.m_block) {
                m_history.Record([this, self, state = before]() mutable { return Exchange(*self, state); });
                item.m_block = block;
            }
            item.Put(m_contents, after);
            where = item.Where(m_contents);
            nowModified = SetModified();
        }
        TellChanged(item, before, after, where, nowModified, Origin::Call);
        return S_OK;
    });
}

HRESULT Storyboard::Exchange(Placement& placement)
{
    bool nowModified = false;
    {
        const SectionLock lock(m_section);
        if (placement.wasPassedOver || placement.item->m_placed == placement.adds) {
            placement.wasPassedOver = !placement.wasPassedOver;
            return S_OK;
        }
        placement.where = Place(*placement.item, placement.where, placement.adds);
        placement.adds = !placement.adds;
        m_effectsPlaced = m_effectsPlaced || Query<IEffectInfo>(placement.item);
        nowModified = SetModified();
    }
    TellPlaced(*placement.item, placement.where, !placement.adds, nowModified);
    return S_OK;
}

HRESULT Storyboard::Exchange(Item& item, ItemState& state)
{
    const ItemState after = state;
    LONG where = 0;
    bool nowModified = false;
    {
        const SectionLock lock(m_section);
        state = item.m_state;
        // An item that was removed outside of the blocks only keeps its state.
        if (!item.m_placed) {
            item.m_state = after;
            return S_OK;
        }
        item.Put(m_contents, after);
        where = item.Where(m_contents);
        nowModified = SetModified();
    }
    TellChanged(item, state, after, where, nowModified, Origin::History);
    return S_OK;
}

Settings Storyboard::GetSettings()
{
    const SectionLock lock(m_section);
    return m_settings;
}

// Events

void Storyboard::TellPlaced(const Item& item, LONG where, bool added, bool nowModified)
{
    item.TellPlaced(m_sinks, where, added);
    if (item.Plays(item.State()) > 0.0) m_sinks.Tell(&Events::OnDurationChanged);
    if (nowModified) m_sinks.Tell(&Events::OnModifiedChanged, 1);
}

void Storyboard::TellChanged(const Item& item, const ItemState& before, const ItemState& after, LONG where,
                             bool nowModified, Origin origin)
{
    item.TellChanged(m_sinks, where, origin);
    if (item.Plays(before) != item.Plays(after)) m_sinks.Tell(&Events::OnDurationChanged);
    if (nowModified) m_sinks.Tell(&Events::OnModifiedChanged, 1);
}

HRESULT Storyboard::TellUndone(HRESULT result)
{
    constexpr LONG kCanUndo = 1;
    constexpr LONG kCanRedo = 2;
    bool effectsPlaced = false;
    {
        const SectionLock lock(m_section);
        effectsPlaced = std::exchange(m_effectsPlaced, false);
    }
    const LONG state = (m_history.CanUndo() ? kCanUndo : 0) | (m_history.CanRedo() ? kCanRedo : 0);
    m_sinks.Tell(&Events::OnUndoStateChanged, state);
    if (effectsPlaced) m_sinks.Tell(&Events::OnEffectsInvalidated);
    return result;
}

HRESULT Storyboard::RunBack(HRESULT result)
{
    const SectionLock lock(m_section);
    m_effectsPlaced = false;
    return result;
}

// Undo

HRESULT Storyboard::OpenUndoBlock()
{
    return IsOpen() ? m_history.Open() : ZXE_E_NOT_OPEN;
}

HRESULT Storyboard::CloseUndoBlock(bool commit)
{
    const ComPtr<IUnknown> production = Production();
    if (!production || !IsOpen()) return ZXE_E_NOT_OPEN;
    const HRESULT result = m_history.Close(commit);
    return result == ZXE_E_NO_UNDO_BLOCK ? result : TellUndone(result);
}

HRESULT Storyboard::Undo()
{
    const ComPtr<IUnknown> production = Production();
    if (!production || !IsOpen()) return ZXE_E_NOT_OPEN;
    const HRESULT result = m_history.Undo();
    return SUCCEEDED(result) ? TellUndone(result) : RunBack(result);
}

HRESULT Storyboard::Redo()
{
    const ComPtr<IUnknown> production = Production();
    if (!production || !IsOpen()) return ZXE_E_NOT_OPEN;
    const HRESULT result = m_history.Redo();
    return SUCCEEDED(result) ? TellUndone(result) : RunBack(result);
}

} // namespace kv
