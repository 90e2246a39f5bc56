#include "engine/storyboard/SceneBuilder.h"

#include "KVProjectData/Engine/Effects.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

/// Empty for what is no file.
std::u16string FileOf(const SourcePtr& source)
{
    return source && !IsMoniker(source->Name().View()) ? std::u16string(source->Name().View()) : std::u16string();
}

Picture PictureOf(const ItemState& state)
{
    const Clip& clip = state.clip;
    return {FileOf(clip.source), clip.inPoint, clip.outPoint,          clip.repeat,
            clip.rotation,       false,        clip.panZoom.ShownAs(), FileOf(state.mask.source)};
}

class Builder {
public:
    Builder(const BoardImage& image, double seconds) : m_image(image)
    {
        for (const auto& [panel, state] : image.panels) {
            const double start = m_length;
            m_length += panel->Plays(state);
            m_spans.push_back({start, m_length});
            const double rate = state.clip.source->Facts().frameRate;
            if (m_rate == 0.0 && rate > 0.0) m_rate = rate;
        }
        if (m_rate == 0.0) m_rate = kDefaultFrameRate;
        if (m_spans.empty()) m_length = image.settings.blankDuration;
        // Far more than anybody plays, and still whole frames.
        constexpr double kMostFrames = 1e12;
        const double last =
            m_length > 0.0 ? std::clamp(std::ceil(m_length * m_rate) - 1.0, 0.0, kMostFrames) : kMostFrames;
        m_frame = std::min(std::floor(seconds * m_rate), last);
    }

    Scene Build() const
    {
        Scene scene{m_image.settings.aspectRatio, (m_frame + 0.5) / m_rate, !m_image.panels.empty(), {}};
        AddPanel(scene);
        for (std::size_t i = 0; i < m_image.effects.size(); ++i) {
            if (IsTop(i)) AddEffect(scene, m_image.effects[i].item->Type(), m_image.effects[i].state);
        }
        return scene;
    }

private:
    void AddPanel(Scene& scene) const
    {
        if (m_spans.empty()) return;
        auto span = std::ranges::upper_bound(m_spans, scene.time, {}, &Span::end);
        if (span == m_spans.end()) --span;
        const ItemState& state = m_image.panels[static_cast<std::size_t>(span - m_spans.begin())].state;
        Layer layer{span->start, span->end, nullptr, PictureOf(state)};
        layer.picture->stretched = !m_image.settings.useSourceAspectRatio;
        scene.layers.push_back(std::move(layer));
    }

    void AddEffect(Scene& scene, LONG type, const ItemState& state) const
    {
        if (type != ZXE_EFFECT_TEXT && type != ZXE_EFFECT_OVERLAY) return;
        Layer layer{state.start, state.end, state.parameters.ShownAs(), {}};
        if (state.end == 0.0) layer.end = m_length > 0.0 ? m_length : Layer().end;
        if (type == ZXE_EFFECT_OVERLAY) layer.picture = PictureOf(state);
        scene.layers.push_back(std::move(layer));
    }

    /// Whether an effect is the one that its layer shows: nothing that comes after it is shown there.
    bool IsTop(std::size_t place) const
    {
        const auto& effects = m_image.effects;
        if (!IsShown(effects[place].state)) return false;
        const LONG layer = effects[place].state.layer;
        for (std::size_t next = place + 1; next < effects.size() && effects[next].state.layer == layer; ++next) {
            if (IsShown(effects[next].state)) return false;
        }
        return true;
    }

    /// As Storyboard::EffectAt finds it.
    bool IsShown(const ItemState& state) const
    {
        return state.start < (m_frame + 1.0) / m_rate && (state.end == 0.0 || state.end >= m_frame / m_rate);
    }

    const BoardImage& m_image;
    /// Of the panels.
    std::vector<Span> m_spans;
    double m_length = 0.0;
    double m_rate = 0.0;
    double m_frame = 0.0;
};

} // namespace

Scene SceneOf(const BoardImage& image, double seconds)
{
    return Builder(image, seconds).Build();
}

} // namespace kv
