#include "engine/storyboard/EffectLayers.h"

namespace kv {

void EffectLayers::Add(ComPtr<CEffect> effect, double start)
{
    const LONG id = effect->ID();
    m_byID.emplace(id, effect.Get());
    try {
        const LONG layer = effect->Layer();
        m_effects.emplace(Key{layer, start, id}, std::move(effect));
    } catch (...) {
        m_byID.erase(id);
        throw;
    }
}

void EffectLayers::Remove(const CEffect& effect, double start)
{
    m_byID.erase(effect.ID());
    m_effects.erase({effect.Layer(), start, effect.ID()});
}

void EffectLayers::Move(const CEffect& effect, double from, double to)
{
    if (from == to) return;
    auto place = m_effects.extract({effect.Layer(), from, effect.ID()});
    place.key().start = to;
    m_effects.insert(std::move(place));
}

CEffect* EffectLayers::Find(LONG layer, LONG id) const
{
    const auto found = m_byID.find(id);
    return found != m_byID.end() && found->second->Layer() == layer ? found->second : nullptr;
}

} // namespace kv
