#pragma once
// The text of a parameter document as paragraphs of runs.

#include "platform/xml/Dom.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kv {

struct TextStyle {
    std::string face = "Arial";
    /// 480ths of the frame's height.
    double height = 24.0;
    std::uint8_t red = 255;
    std::uint8_t green = 255;
    std::uint8_t blue = 255;
    std::uint8_t alpha = 255;
    bool bold = false;
    bool italic = false;
    bool underline = false;

    bool operator==(const TextStyle&) const = default;
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
    /// How high a paragraph without text is.
    TextStyle style;
    std::vector<TextRun> runs;
};

/// Throws Error(ZXE_E_NO_TEXT) for an element without a text; one with an empty text has one empty paragraph.
std::vector<Paragraph> ReadRichText(IXMLDOMNode* pluginData);

/// Takes over what a colour's text tells; a text that tells nothing leaves black.
void SetColour(TextStyle& style, std::string_view text);

} // namespace kv
