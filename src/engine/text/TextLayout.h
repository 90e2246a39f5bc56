#pragma once
// A text as it stands in a frame of a certain height.

#include "engine/text/Fonts.h"
#include "engine/text/RichText.h"

#include <vector>

namespace kv {

/// For any number of threads.
class TextLayout {
public:
    TextLayout(const std::vector<Paragraph>& text, int frameHeight);
    TextLayout(const TextLayout&) = delete;
    TextLayout& operator=(const TextLayout&) = delete;
    ~TextLayout();

    /// Pixels, without edges and shadows.
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

    /// A row of glyphs of one font and one ink; lengths are pixels.
    struct Run {
        PangoFont* font;
        PangoGlyphString* glyphs;
        Ink ink;
        double height;
        double x;
        double baseline;
        double width;
        /// The underline's top, below the baseline.
        double lineTop = 0.0;
        double lineHeight = 0.0;
    };

    void AddRuns(const Paragraph& paragraph, const Block& block, double unit);
    /// Fills the glyphs, or follows their outlines.
    static void Fill(cairo_t* context, const Run& run);
    static void Follow(cairo_t* context, const Run& run);
    /// In the order in which they lie above each other.
    enum class Part { Shadow, Edge, Face };
    static void Draw(cairo_t* context, const Run& run, Part part);

    std::vector<Block> m_blocks;
    /// Of the blocks, which own what is in them.
    std::vector<Run> m_runs;
    double m_width = 0.0;
    double m_height = 0.0;
};

} // namespace kv
