#pragma once
// Receives what a production tells its owner and passes on what concerns the project.

#include "KVProjectData/Engine.h"

namespace kv {

/// An event's code is the position of its method. Some carry their argument, some none; the others concern only
/// the inner parts of the engine.
class ProductionSink : public IZXEProductionDataEvents {
public:
    HRESULT OnPanelAdded(LONG lIndex) final { return PassOn(0, lIndex); }
    HRESULT OnPanelRemoved(LONG lIndex) final { return PassOn(1, lIndex); }
    HRESULT OnPanelChanged(LONG lIndex) final { return PassOn(2, lIndex); }
    HRESULT OnAudioAdded(LONG lAudioID) final { return PassOn(3, lAudioID); }
    HRESULT OnAudioRemoved(LONG lAudioID) final { return PassOn(4, lAudioID); }
    HRESULT OnAudioChanged(LONG lAudioID) final { return PassOn(5, lAudioID); }
    HRESULT OnEffectChanged(LONG, LONG) override { return S_OK; }
    HRESULT OnEffectsInvalidated() override { return S_OK; }
    HRESULT OnPanelsReset() final { return PassOn(8, 0); }
    HRESULT OnSettingsChanged() final { return PassOn(9, 0); }
    HRESULT OnDurationChanged() final { return PassOn(10, 0); }
    HRESULT OnModifiedChanged(LONG lModified) final { return PassOn(11, lModified); }
    HRESULT OnEffectAdded(LONG, LONG) final { return S_OK; }
    HRESULT OnEffectRemoved(LONG, LONG) final { return S_OK; }
    HRESULT OnEffectMoved(LONG, LONG) final { return S_OK; }
    HRESULT OnPanelMoved(LONG, LONG) final { return S_OK; }
    HRESULT OnTransitionAdded(LONG, LONG) final { return S_OK; }
    HRESULT OnTransitionRemoved(LONG, LONG) final { return S_OK; }
    HRESULT OnUndoStateChanged(LONG lState) final { return PassOn(18, lState); }
    HRESULT OnChapterAdded(LONG, LONG) final { return S_OK; }
    HRESULT OnChapterRemoved(LONG, LONG) final { return S_OK; }
    HRESULT OnRenderProgress(LONG, LONG) final { return S_OK; }
    HRESULT OnClosed() final { return S_OK; }

protected:
    ~ProductionSink() = default;

    /// Makes an event of the project of a callback; may be called on any thread.
    virtual void ProductionChanged(LONG event, LONG param) = 0;

private:
    HRESULT PassOn(LONG event, LONG param)
    {
        ProductionChanged(event, param);
        return S_OK;
    }
};

} // namespace kv
