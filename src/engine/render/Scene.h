#pragma once
// What a production shows at one moment, as a plain value that a frame is drawn from. Times are seconds.

#include "engine/render/Look.h"

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace kv {

/// A still picture or a clip. It fills its square in width or height, with its own aspect ratio in the frame's.
struct Picture {
    /// Path of a file; either separator is understood.
    std::u16string file;
    double inPoint = 0.0;
    /// 0 for the end of the source.
    double outPoint = 0.0;
    /// Starts again at its end, instead of standing on its last frame.
    bool repeat = false;
    /// Degrees, clockwise; the nearest turn by quarters counts.
    int rotation = 0;
    /// Fills its square in width and height.
    bool stretched = false;
    /// How the turned source is cropped, and moved behind its square, which cuts it off; null for not at all. A crop
    /// here goes before that of its layer.
    std::shared_ptr<const Look> panZoom;
    /// Path of a still picture whose alpha, or brightness where it is opaque throughout, is multiplied with the
    /// picture's alpha; empty for none.
    std::u16string mask;
};

/// A panel or an effect. Its span tells where its key frames stand; that it is shown is known.
struct Layer {
    double start = 0.0;
    double end = std::numeric_limits<double>::infinity();
    /// Null for the whole frame.
    std::shared_ptr<const Look> look;
    /// Without one, the text of the look.
    std::optional<Picture> picture;
};

struct Scene {
    /// Width to height of the whole picture.
    double aspectRatio = 4.0 / 3.0;
    double time = 0.0;
    /// The ground is black, else transparent.
    bool onBlack = false;
    /// From the back to the front.
    std::vector<Layer> layers;
};

} // namespace kv
