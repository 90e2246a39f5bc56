#pragma once
// What a production shows behind a menu: its clips, and how they stand in the frame.

#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/Engine/Sources.h"
#include "KVProjectData/Geometry.h"
#include "platform/automation/Bstr.h"
#include "platform/com/ComPtr.h"
#include "platform/com/TaskMemory.h"

#include <optional>
#include <utility>

namespace kv {

/// How a background plays.
struct Playback {
    /// Of a still picture.
    double seconds = 0.0;
    /// Of a clip.
    bool loops = true;
};

/// The background of one production, for one operation. Clips are the panels that show a source; what they show of it
/// is told by their pan-zoom, which they get with the first edit. Failures of the engine are reported to the host and
/// thrown as Error.
class MenuBackground {
public:
    /// E_POINTER, reported, for what is no production.
    explicit MenuBackground(IUnknown* production);

    /// Puts one panel in the place of all that are there: a part of a source, up to its end for an out point of 0.
    /// S_FALSE for an empty source, which changes nothing.
    HRESULT SetSource(BSTR source, double inPoint, double outPoint, const Playback& playback);

    /// Takes all panels away.
    void Clear();

    LONG PanelCount() const;

    // Edits of all clips, and what is asked of the first one: nothing without any. A pan-zoom that cannot be read is
    // left as it is, and tells nothing.

    /// The part of the source that is shown, from 0 to 1, downwards. It is shown from now on if nothing was said of
    /// that before.
    void SetCrop(const FloatRect& rect);
    std::optional<FloatRect> Crop() const;
    /// Whether a part is shown, the whole picture where none was told yet.
    void SetCropMode(bool crops);
    /// Shows all of each clip in the frame, or enlarges it until it is as wide as the frame.
    void Resize(bool fits);
    std::optional<bool> Fills() const;

    /// Width to height of the source's picture.
    std::optional<double> SourceAspectRatio() const;
    /// Of the frame.
    double AspectRatio() const;
    /// Null for a clip without a name.
    std::optional<Bstr> Source() const;

    /// The picture at the start in that size, four bytes a pixel, the top row first. E_INVALIDARG for what is no size.
    UniqueTaskMem<BYTE> Thumbnail(LONG width, LONG height) const;

private:
    /// Calls `visit` with each clip until that returns false.
    template <class Visit>
    void ForEachClip(Visit&& visit) const;
    ComPtr<ISourceFile> FirstClip() const;
    ComPtr<IProductionInfo> Info() const;

    ComPtr<IZXEProductionData> m_data;
};

} // namespace kv
