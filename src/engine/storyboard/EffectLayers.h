#pragma once
// The effects of a production in the order in which they are drawn: by layer, start and age.

#include "engine/storyboard/Effect.h"

#include <map>
#include <tuple>
#include <unordered_map>

namespace kv {

/// Finding, adding and removing one costs the logarithm of their number. Layers and starts are handed in, since an
/// effect's state may be in exchange.
class EffectLayers {
public:
    void Add(ComPtr<CEffect> effect, LONG layer, double start);
    void Remove(const CEffect& effect);
    /// Cannot fail.
    void Move(const CEffect& effect, LONG layer, double start);

    /// Null when the layer has none of that ID.
    CEffect* Find(LONG layer, LONG id) const;

    /// Of the effects of a layer that start before a time and for which `reaches`, the one that starts last.
    template <class Reaches>
    ComPtr<CEffect> LastBefore(LONG layer, double time, Reaches&& reaches) const
    {
        auto place = m_effects.lower_bound({layer, time, 0});
        while (place != m_effects.begin() && (--place)->first.layer == layer) {
            if (reaches(*place->second)) return place->second;
        }
        return nullptr;
    }

    /// The first effect of a layer that starts at a time or later; null without one.
    ComPtr<CEffect> FirstFrom(LONG layer, double time) const
    {
        const auto place = m_effects.lower_bound({layer, time, 0});
        return place != m_effects.end() && place->first.layer == layer ? place->second : nullptr;
    }

    std::size_t Count() const { return m_effects.size(); }
    auto begin() const { return m_effects.begin(); }
    auto end() const { return m_effects.end(); }

private:
    struct Key {
        LONG layer;
        double start;
        LONG id;

        bool operator<(const Key& other) const
        {
            return std::tie(layer, start, id) < std::tie(other.layer, other.start, other.id);
        }
    };

    using Effects = std::map<Key, ComPtr<CEffect>>;

    Effects m_effects;
    std::unordered_map<LONG, Effects::iterator> m_byID;
};

} // namespace kv
