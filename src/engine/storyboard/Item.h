#pragma once
// What panels, effects and background audio have in common: a state that is a value, and how it is edited.

#include "engine/storyboard/Leftovers.h"
#include "engine/storyboard/ProductionSinks.h"
#include "engine/storyboard/Source.h"
#include "engine/storyboard/StoredDocument.h"
#include "platform/com/Object.h"

#include <functional>
#include <memory>

namespace kv {

struct BoardContents;
class Storyboard;

/// A part of a source, and how it is shown.
struct Clip {
    /// Null for none.
    SourcePtr source;
    /// Seconds of the source.
    double inPoint = 0.0;
    /// 0 for the end of the source.
    double outPoint = 0.0;
    bool repeat = false;
    /// Degrees, clockwise.
    LONG rotation = 0;
    StoredDocument panZoom;

    bool operator==(const Clip&) const = default;
};

/// Seconds of the source where a clip ends; 0 when that is not known. Looks into the source.
double EndOf(const Clip& clip);

/// How the sound of a clip is played.
struct Sound {
    static constexpr double kShortFade = 0.1;

    bool mute = false;
    double level = 1.0;
    double fadeIn = kShortFade;
    double fadeOut = kShortFade;
    double fadeInGain = 1.0;
    double fadeOutGain = 1.0;

    bool operator==(const Sound&) const = default;
};

/// All that is edited of an item. An edit puts another state in its place, and the undo history keeps the old one.
struct ItemState {
    Clip clip;
    /// Of panels and effects: that of their clip.
    Sound sound;
    bool useNativeAudio = true;
    /// Seconds of the production, of effects and background audio. An end of 0 is that of the production.
    double start = 0.0;
    double end = 0.0;
    /// Of effects.
    LONG layer = 0;
    LONG group = 0;
    Clip mask;
    StoredDocument parameters;

    bool operator==(const ItemState&) const = default;
};

/// Seconds of the production.
struct Span {
    double start;
    double end;
};

/// Who makes an edit: a caller, or the undo history.
enum class Origin { Call, History };

/// An object of a storyboard. It may outlive its production and its place there; then it can still be read.
class Item : public IUnknown {
public:
    static constexpr GUID IID = "9f955ba8-9ffa-4250-99a0-e79b0d5a1121"_guid;
    using Base = IUnknown;

    /// Gets the state and changes it, or refuses by a result. Runs in the storyboard's section.
    using Change = std::function<HRESULT(ItemState&)>;

    /// ZXE_E_NOT_OPEN when it is not in a storyboard that is in use. A state that did not change is no edit.
    HRESULT Edit(const Change& change);

    ItemState State() const;
    Storyboard& Board() const { return *m_board; }
    /// Unique in the storyboard.
    LONG ID() const { return m_id; }
    /// What was read with it.
    const Leftovers& Rest() const { return m_rest; }

    /// Take their place in the contents, or leave it; the index is that of panels, -1 for the last. Both give
    /// what events call the item by. Run in the storyboard's section.
    virtual LONG Enter(BoardContents& contents, LONG index) = 0;
    virtual LONG Where(const BoardContents& contents) const = 0;
    virtual void Leave(BoardContents& contents) = 0;
    /// Takes a state while the item is in the contents.
    virtual void Put(BoardContents& contents, ItemState state);

    /// Seconds that the production is longer with the item in that state. Looks into the source.
    virtual double Plays(const ItemState&) const { return 0.0; }
    /// When it is shown or heard. Looks into sources.
    virtual Span Time() const;

    virtual void TellPlaced(ProductionSinks& sinks, LONG where, bool added) const = 0;
    virtual void TellChanged(ProductionSinks& sinks, LONG where, Origin origin) const = 0;

protected:
    void Start(std::shared_ptr<Storyboard> board, LONG id, ItemState state, Leftovers rest);
    const ItemState& Inside() const { return m_state; }

private:
    friend class Storyboard;

    std::shared_ptr<Storyboard> m_board;
    LONG m_id = 0;
    Leftovers m_rest;
    /// What follows is guarded by the storyboard's section.
    ItemState m_state;
    bool m_placed = false;
    /// The undo block that knows the item's state from before it.
    ULONG m_block = 0;
};

/// Whether a time or a factor can be one: finite and not negative.
bool IsAmount(double value);

template <class T>
HRESULT Give(T value, T* out)
{
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
}

inline VARIANT_BOOL ToVariantBool(bool value)
{
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

} // namespace kv
