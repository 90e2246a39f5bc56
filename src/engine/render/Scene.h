#pragma once
// What a production shows, as a plain value that frames are drawn from.
//
// Times are seconds. The frame runs from -1 to 1 on both axes, y upwards.

#include "engine/render/KeyFrames.h"
#include "engine/text/RichText.h"

#include <limits>
#include <string>
#include <variant>
#include <vector>

namespace kv {

inline constexpr double kForEver = std::numeric_limits<double>::infinity();

/// Where something stands. Its own square, which runs from -1 to 1, too, is scaled, turned and moved, in this order. It
/// is turned as one sees it, whatever the shape of the frame's pixels.
struct Placement {
    /// x and y.
    KeyFrames<3> translation;
    /// z is the angle in degrees, clockwise.
    KeyFrames<3> rotation;
    /// Half the width and half the height; 1 and 1 without keys.
    KeyFrames<3> scaling;
    /// 0 to 255; 255 without keys.
    KeyFrames<1> opacity;
    /// Of a text, which place of its box stands in the middle of the square: x from 1, its left edge, to -1, its right
    /// one; y from 1, its bottom, to -1, its top. The middle without keys.
    KeyFrames<3> handles;
};

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
    LONG rotation = 0;
    /// Fills its square in width and height.
    bool stretched = false;
    /// The part of the turned source that is shown, in parts of its width and height from the top left: left, top,
    /// right, bottom. What is shown has an aspect ratio of its own. The whole source without keys.
    KeyFrames<4> crop;
    /// Path of a still picture whose alpha, or brightness where it has none, is multiplied with the picture's alpha;
    /// empty for none.
    std::u16string mask;
    /// In parts of the picture's, about its middle; what lies outside of the mask is not seen. The whole picture unless
    /// above 0.
    double maskWidth = 0.0;
    double maskHeight = 0.0;
};

/// A text, laid out for a frame of the production's height, about the middle of its square.
using Text = std::vector<Paragraph>;

/// A panel or an effect.
struct Layer {
    /// From when until when it is seen.
    double start = 0.0;
    double end = kForEver;
    Placement placement;
    std::variant<Picture, Text> content;
};

struct Scene {
    /// Width to height of the whole picture.
    double aspectRatio = 4.0 / 3.0;
    /// Frames per second. A frame shows what is there in its middle.
    double frameRate = 29.97;
    /// Black surrounds them. Without one, the ground is transparent.
    std::vector<Layer> panels;
    /// From the back to the front.
    std::vector<Layer> effects;
};

/// The element "plugin_data" of an effect's parameter document, which may stand for itself; empty without one.
XmlElement PlugInDataOf(const XmlElement& document);

/// Whether an effect is a text: its "plugin_data" holds "html". All others are pictures.
bool IsText(const XmlElement& plugInData);

Placement ReadPlacement(const XmlElement& plugInData);

/// The crop rectangle of a "plugin_data" or a "ZXFPanZoom" element; without keys when it has none, and when its crop
/// mode is off.
KeyFrames<4> ReadCrop(const XmlElement& element);

/// Takes over "Mask Width" and "Mask Height" from the parameter set.
void ReadMaskSize(Picture& picture, const XmlElement& plugInData);

} // namespace kv
