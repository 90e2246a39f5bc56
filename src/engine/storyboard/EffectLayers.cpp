#include "engine/storyboard/EffectLayers.h"

namespace kv {

void EffectLayers::Add(ComPtr<CEffect> effect, LONG layer, double start)
{
    const LONG id = effect->ID();
    const auto place = m_effects.emplace(Key{layer, start, id}, std::move(effect)).first;
    try {
        m_byID.emplace(id, place);
    } catch (...) {
        m_effects.erase(place);
        throw;
    }
}

void EffectLayers::Remove(const CEffect& effect)
{
    const auto found = m_byID.find(effect.ID());
    m_effects.erase(found->second);
    m_byID.erase(found);
}

void EffectLayers::Move(const CEffect& effect, LONG layer, double start)
{
    Effects::iterator& place = m_byID.find(effect.ID())->second;
    if (place->first.layer == layer && place->first.start == start) return;
    auto moved = m_effects.extract(place);
    moved.key() = {layer, start, effect.ID()};
    place = m_effects.insert(std::move(moved)).position;
}

CEffect* EffectLayers::Find(LONG layer, LONG id) const
{
    const auto found = m_byID.find(id);
    if (found == m_byID.end() || found->second->first.layer != layer) return nullptr;
    return found->second->second.Get();
}

} // namespace kv
