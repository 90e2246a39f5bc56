#pragma once
// The text of a parameter document as paragraphs of runs.

#include "platform/xml/Element.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kv {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;
};

inline constexpr Colour kNoColour{0, 0, 0, 0};

/// Lengths are 480ths of the frame's height.
struct FontStyle {
    std::string face = "Arial";
    double height = 24.0;
    bool bold = false;
    bool italic = false;

    bool operator==(const FontStyle&) const = default;
};

/// How glyphs are drawn. What has no colour is not.
struct Ink {
    Colour colour{255, 255, 255, 255};
    bool underline = false;
    /// Around the glyphs.
    Colour edge = kNoColour;
    double edgeWidth = 2.0;
    /// To the right and below.
    Colour shadow = kNoColour;
    double shadowOffset = 3.0;
};

struct TextStyle {
    FontStyle font;
    Ink ink;
};

struct TextRun {
    TextStyle style;
    /// UTF-8; U+2028 breaks a line.
    std::string text;
};

/// Where lines stand in the width that is left: 0 left, 0.5 in the middle, 1 right.
using TextAlignment = double;

struct Paragraph {
    TextAlignment alignment = 0.0;
    /// Tells how high a paragraph without text is.
    FontStyle font;
    std::vector<TextRun> runs;
};

/// Throws Error(ZXE_E_NO_TEXT) for an element without a text; one with an empty text has one empty paragraph.
std::vector<Paragraph> ReadRichText(const XmlView& pluginData);

} // namespace kv
