#pragma once
// Objects of the engine, clips for it to read, and a sink that keeps what it hears.

#include "KVProjectData/Engine.h"
#include "platform/com/Object.h"
#include "platform/undo/OleUndo.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace kv::test {

/// Makes an object through the class object of the engine's server library.
ComPtr<IUnknown> CreateEngineObject(REFCLSID clsid);

template <class T>
ComPtr<T> CreateEngine(REFCLSID clsid)
{
    return Query<T>(CreateEngineObject(clsid));
}

/// Files that ffmpeg makes.
class ClipFolder : public TemporaryFolder {
public:
    /// Has ffmpeg write a file; the arguments come before its name.
    void Make(const std::string& name, const std::string& arguments) const;
};

/// The clips that the tests share; made when first asked for.
const ClipFolder& Clips();

/// The position of an event and its arguments.
using Heard = std::tuple<ULONG, std::vector<LONG>>;

class RecordingProductionSink final : public Object<IZXEProductionDataEvents> {
public:
    std::vector<Heard> heard;
    /// What every method returns.
    HRESULT answer = S_OK;
    /// Runs within every call.
    std::function<void()> hook;

    HRESULT OnPanelAdded(LONG a) override { return Hear(0, {a}); }
    HRESULT OnPanelRemoved(LONG a) override { return Hear(1, {a}); }
    HRESULT OnPanelChanged(LONG a) override { return Hear(2, {a}); }
    HRESULT OnAudioAdded(LONG a) override { return Hear(3, {a}); }
    HRESULT OnAudioRemoved(LONG a) override { return Hear(4, {a}); }
    HRESULT OnAudioChanged(LONG a) override { return Hear(5, {a}); }
    HRESULT OnEffectChanged(LONG a, LONG b) override { return Hear(6, {a, b}); }
    HRESULT OnEffectsInvalidated() override { return Hear(7, {}); }
    HRESULT OnPanelsReset() override { return Hear(8, {}); }
    HRESULT OnSettingsChanged() override { return Hear(9, {}); }
    HRESULT OnDurationChanged() override { return Hear(10, {}); }
    HRESULT OnModifiedChanged(LONG a) override { return Hear(11, {a}); }
    HRESULT OnEffectAdded(LONG a, LONG b) override { return Hear(12, {a, b}); }
    HRESULT OnEffectRemoved(LONG a, LONG b) override { return Hear(13, {a, b}); }
    HRESULT OnEffectMoved(LONG a, LONG b) override { return Hear(14, {a, b}); }
    HRESULT OnPanelMoved(LONG a, LONG b) override { return Hear(15, {a, b}); }
    HRESULT OnTransitionAdded(LONG a, LONG b) override { return Hear(16, {a, b}); }
    HRESULT OnTransitionRemoved(LONG a, LONG b) override { return Hear(17, {a, b}); }
    HRESULT OnUndoStateChanged(LONG a) override { return Hear(18, {a}); }
    HRESULT OnChapterAdded(LONG a, LONG b) override { return Hear(19, {a, b}); }
    HRESULT OnChapterRemoved(LONG a, LONG b) override { return Hear(20, {a, b}); }
    HRESULT OnRenderProgress(LONG a, LONG b) override { return Hear(21, {a, b}); }
    HRESULT OnClosed() override { return Hear(22, {}); }

private:
    HRESULT Hear(ULONG position, std::vector<LONG> arguments)
    {
        heard.emplace_back(position, std::move(arguments));
        if (hook) hook();
        return answer;
    }
};

/// The connection point of a production for its events.
ComPtr<IConnectionPoint> EventsOf(IUnknown* production);

/// The production's sources in order.
std::vector<std::u16string> SourcesOf(IZXEProductionData* production);

/// Appends a panel that shows the whole of a source.
HRESULT AddSource(IUnknown* production, const Bstr& source);

} // namespace kv::test
