#pragma once
// What a document tells of how an effect or a source is shown.

#include "engine/render/KeyFrames.h"
#include "engine/text/TextLayout.h"

#include <memory>

namespace kv {

/// Where something stands. Its own square, which runs from -1 to 1 as the frame does, y upwards, is scaled, turned and
/// moved, in this order. It is turned as one sees it, whatever the shape of the frame's pixels.
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

    bool Moves() const { return !translation.IsEmpty() || !rotation.IsEmpty() || !scaling.IsEmpty(); }
};

struct Look {
    Placement placement;
    /// The part of a source that is shown, in parts of its width and height from the top left: left, top, right,
    /// bottom. What is shown has an aspect ratio of its own. The whole source without keys, and for a part without a
    /// width or height.
    KeyFrames<4> crop;
    /// The size of a mask in parts of the picture's, about its middle; what lies outside of the mask is not seen. As
    /// wide or high as the picture unless above 0.
    double maskWidth = 0.0;
    double maskHeight = 0.0;
    /// Laid out for a frame 480 high; null without a text.
    std::shared_ptr<const TextLayout> text;
};

/// The height of the frame that texts are laid out for.
inline constexpr int kTextFrameHeight = 480;

/// Reads an element "plugin_data", one that holds it, or one that holds the same itself, such as "ZXFPanZoom". What it
/// does not tell is as in a Look of its own, and so is all of an empty element.
Look ReadLook(const XmlElement& document);

} // namespace kv
