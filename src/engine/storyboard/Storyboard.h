#pragma once
// What a production holds, and how it is edited and undone.

#include "KVProjectData/Engine/Media.h"
#include "engine/storyboard/Audio.h"
#include "engine/storyboard/EffectLayers.h"
#include "engine/storyboard/Panel.h"
#include "engine/storyboard/UndoHistory.h"

#include <algorithm>

namespace kv {

class CProduction;

/// Frames per second where no panel shows video.
inline constexpr double kDefaultFrameRate = 29.97;

/// What a production is made for.
struct Settings {
    double aspectRatio = 4.0 / 3.0;
    bool useSourceAspectRatio = false;
    bool stereoscopic = false;
    /// Seconds that it lasts while it has no panels.
    double blankDuration = 0.0;
};

struct BoardContents {
    std::vector<ComPtr<CPanel>> panels;
    EffectLayers effects;
    /// In the order in which they were added.
    std::vector<ComPtr<CAudio>> audio;
};

/// What a storyboard holds at a time, with the states of its items: a value that later edits leave alone.
struct BoardImage {
    template <class T>
    struct Placed {
        ComPtr<T> item;
        ItemState state;
    };

    Settings settings;
    Leftovers rest;
    std::vector<Placed<CPanel>> panels;
    /// From the back to the front.
    std::vector<Placed<CEffect>> effects;
    std::vector<Placed<CAudio>> audio;
};

/// What a storyboard is to hold.
struct NewBoard {
    Settings settings;
    Leftovers rest;
    BoardContents contents;
};

/// Puts an item into a row, -1 for the last place, and gives its index.
template <class T>
LONG EnterRow(std::vector<ComPtr<T>>& row, ComPtr<T> item, LONG index)
{
    const auto end = static_cast<LONG>(row.size());
    const LONG place = index < 0 ? end : std::min(index, end);
    row.insert(row.begin() + place, std::move(item));
    return place;
}

/// -1 when it is not there.
template <class T>
LONG IndexIn(const std::vector<ComPtr<T>>& row, const T* item)
{
    const auto found = std::ranges::find(row, item, &ComPtr<T>::Get);
    return found == row.end() ? -1 : static_cast<LONG>(found - row.begin());
}

/// Shared by a production and the items that it handed out. Sinks are told, undo units run and sources are looked into
/// while its section is free.
class Storyboard : public std::enable_shared_from_this<Storyboard> {
public:
    Storyboard(CProduction& production, ProductionSinks& sinks) : m_production(&production), m_sinks(sinks) {}

    CriticalSection& Section() { return m_section; }

    /// S_FALSE when it is in use, or is not in use, already.
    HRESULT Open();
    HRESULT Close();
    /// The production is going: items find nothing to belong to any more.
    void End();

    bool IsOpen();
    bool IsModified();
    void ClearModified();
    /// The production, alive for as long as the reference; empty when it is gone.
    ComPtr<IUnknown> Production();

    std::vector<ComPtr<CPanel>> Panels();
    std::vector<ComPtr<CAudio>> Audio();
    /// Seconds that all panels play, or that it lasts without any.
    double Duration();
    /// Frames per second of the first panel that shows video; 0 when none does.
    double FrameRate();
    /// From the back to the front, from 0; null when there is none.
    ComPtr<CEffect> Effect(LONG index);
    /// The effect that a layer shows in the frame at a time; null for none.
    ComPtr<CEffect> EffectAt(LONG layer, double time);

    BoardImage Image();
    /// S_OK when it can be loaded; else ZXE_E_NOT_OPEN or ZXE_E_UNDO_BLOCK_OPEN.
    HRESULT ReadyToLoad();
    /// Puts other contents in the place of all that it holds, with results as above. Sinks are told, and nothing is
    /// left to undo.
    HRESULT Load(NewBoard board);

    LONG NewID();

    // Edits. ZXE_E_NOT_OPEN while the storyboard is not in use.

    /// `index` is that of a panel, -1 for the last. E_INVALIDARG past the last.
    HRESULT Add(const ComPtr<Item>& item, LONG index = -1);

    /// Finds an item, or null: then the result is E_INVALIDARG. Runs in the section.
    using Find = std::function<Item*(const BoardContents&)>;
    HRESULT Remove(const Find& find);

    /// Also for an item that was removed: ZXE_E_NOT_OPEN.
    HRESULT Edit(Item& item, const Item::Change& change);

    Settings GetSettings();
    /// At any time that the production is there.
    template <class T>
    HRESULT PutSetting(T Settings::*setting, T value);

    // Undo, with the results of UndoHistory.

    HRESULT OpenUndoBlock();
    HRESULT CloseUndoBlock(bool commit);
    HRESULT Undo();
    HRESULT Redo();
    UndoHistory& History() { return m_history; }
    /// E_INVALIDARG when it is in a group already.
    HRESULT Join(const std::shared_ptr<UndoBlocks>& group) { return m_history.Join(group, weak_from_this()); }

private:
    /// An item that is to come to a place, or is to leave it.
    struct Placement {
        ComPtr<Item> item;
        LONG where;
        bool adds;
        /// What it found to do is done already, by an edit outside of the blocks; so the way back does nothing either.
        bool wasPassedOver = false;
    };

    /// Makes the edit of the history and turns it into the one that takes it back.
    HRESULT Exchange(Placement& placement);
    HRESULT Exchange(Item& item, ItemState& state);

    /// In the section: whether the items can be edited.
    static void SetPlaced(BoardContents& contents, bool placed);
    /// In the section: the item enters or leaves, and where.
    LONG Place(Item& item, LONG where, bool adds);
    /// In the section; tells whether this is the first edit since the modified state was cleared.
    bool SetModified() { return !std::exchange(m_modified, true); }

    void TellPlaced(const Item& item, LONG where, bool added, bool nowModified);
    void TellChanged(const Item& item, const ItemState& before, const ItemState& after, LONG where, bool nowModified,
                     Origin origin);
    /// After the history ran: what it did to the effects as a whole, and what can be undone from now on.
    HRESULT TellUndone(HRESULT result);
    /// After an undo or redo that failed, and so changed nothing; gives its result on.
    HRESULT RunBack(HRESULT result);

    CriticalSection m_section;
    CProduction* m_production;
    /// Of the production; only while it is held.
    ProductionSinks& m_sinks;
    bool m_open = false;
    bool m_modified = false;
    /// The history added or removed effects.
    bool m_effectsPlaced = false;
    LONG m_lastID = 0;
    Settings m_settings;
    /// What was read with the settings.
    Leftovers m_rest;
    BoardContents m_contents;
    UndoHistory m_history;
};

template <class T>
HRESULT Storyboard::PutSetting(T Settings::*setting, T value)
{
    const ComPtr<IUnknown> production = Production();
    return Guarded([&]() -> HRESULT {
        bool lasts = false;
        bool nowModified = false;
        {
            const SectionLock lock(m_section);
            if (!production) return ZXE_E_NOT_OPEN;
            T& current = m_settings.*setting;
            if (current == value) return S_OK;
            m_history.Record([this, setting, next = current, other = value]() mutable {
                const HRESULT result = PutSetting(setting, next);
                std::swap(next, other);
                return result;
            });
            const double lasted = m_settings.blankDuration;
            current = value;
            lasts = m_contents.panels.empty() && m_settings.blankDuration != lasted;
            nowModified = SetModified();
        }
        m_sinks.Tell(&IZXEProductionDataEvents::OnSettingsChanged);
        if (lasts) m_sinks.Tell(&IZXEProductionDataEvents::OnDurationChanged);
        if (nowModified) m_sinks.Tell(&IZXEProductionDataEvents::OnModifiedChanged, 1);
        return S_OK;
    });
}

} // namespace kv
