#pragma once
// A text as it stands in a frame of a certain height.

#include "engine/text/Fonts.h"
#include "engine/text/RichText.h"

#include <vector>

namespace kv {

class TextLayout {
public:
    TextLayout(const std::vector<Paragraph>& text, int frameHeight);
    TextLayout(const TextLayout&) = delete;
    TextLayout& operator=(const TextLayout&) = delete;
    ~TextLayout();

    /// Pixels.
    double Width() const { return m_width; }
    double Height() const { return m_height; }

    /// With the box's top left at the origin.
    void Draw(cairo_t* context) const;

private:
    struct Block {
        GlibPtr<PangoLayout> layout;
        double x;
        double y;
    };

    std::vector<Block> m_blocks;
    double m_width = 0.0;
    double m_height = 0.0;
};

} // namespace kv
