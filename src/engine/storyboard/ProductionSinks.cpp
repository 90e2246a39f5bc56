#include "engine/storyboard/ProductionSinks.h"

#include <iterator>
#include <variant>

namespace kv {
namespace {

using Events = IZXEProductionDataEvents;
using Method = std::variant<HRESULT (Events::*)(), HRESULT (Events::*)(LONG), HRESULT (Events::*)(LONG, LONG)>;

const Method kMethods[] = {
    &Events::OnPanelAdded,       &Events::OnPanelRemoved,
    &Events::OnPanelChanged,     &Events::OnAudioAdded,
    &Events::OnAudioRemoved,     &Events::OnAudioChanged,
    &Events::OnEffectChanged,    &Events::OnEffectsInvalidated,
    &Events::OnPanelsReset,      &Events::OnSettingsChanged,
    &Events::OnDurationChanged,  &Events::OnModifiedChanged,
    &Events::OnEffectAdded,      &Events::OnEffectRemoved,
    &Events::OnEffectMoved,      &Events::OnPanelMoved,
    &Events::OnTransitionAdded,  &Events::OnTransitionRemoved,
    &Events::OnUndoStateChanged, &Events::OnChapterAdded,
    &Events::OnChapterRemoved,   &Events::OnRenderProgress,
    &Events::OnClosed,
};
static_assert(std::size(kMethods) == ZXE_EVENT_COUNT);

} // namespace

HRESULT ProductionSinks::TellByPosition(ULONG position, LONG first, LONG second)
{
    if (position >= std::size(kMethods)) return E_INVALIDARG;
    const auto tell = [&](auto method) {
        if constexpr (std::is_invocable_v<decltype(method), Events&>) {
            Tell(method);
        } else if constexpr (std::is_invocable_v<decltype(method), Events&, LONG>) {
            Tell(method, first);
        } else {
            Tell(method, first, second);
        }
    };
    std::visit(tell, kMethods[position]);
    return S_OK;
}

} // namespace kv
