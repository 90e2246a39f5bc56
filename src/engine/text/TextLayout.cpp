#include "engine/text/TextLayout.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace kv {
namespace {

struct FontCloser {
    void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
};
using Font = std::unique_ptr<PangoFontDescription, FontCloser>;

struct AttributesCloser {
    void operator()(PangoAttrList* attributes) const { pango_attr_list_unref(attributes); }
};
using Attributes = std::unique_ptr<PangoAttrList, AttributesCloser>;

struct IteratorCloser {
    void operator()(PangoLayoutIter* iterator) const { pango_layout_iter_free(iterator); }
};
using Iterator = std::unique_ptr<PangoLayoutIter, IteratorCloser>;

struct MetricsCloser {
    void operator()(PangoFontMetrics* metrics) const { pango_font_metrics_unref(metrics); }
};
using Metrics = std::unique_ptr<PangoFontMetrics, MetricsCloser>;

double Pixels(int units)
{
    return units / static_cast<double>(PANGO_SCALE);
}

Font FontOf(const FontStyle& style, double unit)
{
    Font font(pango_font_description_new());
    pango_font_description_set_family(font.get(), style.face.c_str());
    pango_font_description_set_absolute_size(font.get(), style.height * unit * PANGO_SCALE);
    pango_font_description_set_weight(font.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(font.get(), style.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    return font;
}

PangoAlignment AlignmentOf(TextAlignment alignment)
{
    if (alignment == 0.5) return PANGO_ALIGN_CENTER;
    return alignment == 1.0 ? PANGO_ALIGN_RIGHT : PANGO_ALIGN_LEFT;
}

GlibPtr<PangoLayout> LayOut(const Paragraph& paragraph, double unit)
{
    GlibPtr<PangoLayout> layout = NewLayout();
    const Attributes attributes(pango_attr_list_new());
    std::string text;
    for (const TextRun& run : paragraph.runs) {
        const std::size_t from = text.size();
        text += run.text;
        const auto add = [&](PangoAttribute* attribute) {
            attribute->start_index = static_cast<guint>(from);
            attribute->end_index = static_cast<guint>(text.size());
            pango_attr_list_insert(attributes.get(), attribute);
        };
        if (run.style.font != paragraph.font) add(pango_attr_font_desc_new(FontOf(run.style.font, unit).get()));
        // Sets the glyphs of the run apart; they are not drawn by it.
        add(pango_attr_foreground_new(0, 0, 0));
    }
    pango_layout_set_font_description(layout.get(), FontOf(paragraph.font, unit).get());
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_attributes(layout.get(), attributes.get());
    // The same side whatever the direction of its script.
    pango_layout_set_auto_dir(layout.get(), FALSE);
    pango_layout_set_alignment(layout.get(), AlignmentOf(paragraph.alignment));
    return layout;
}

void SetColour(cairo_t* context, const Colour& colour)
{
    constexpr double kMost = 255.0;
    cairo_set_source_rgba(context, colour.red / kMost, colour.green / kMost, colour.blue / kMost, colour.alpha / kMost);
}

/// Whether a square of that height has a size in pixels that there is something to see of, and that fonts have.
bool IsVisible(cairo_t* context, double height)
{
    constexpr double kLeast = 0.05;
    constexpr double kMost = 1e5;
    double across[]{height, 0.0};
    double down[]{0.0, height};
    cairo_user_to_device_distance(context, &across[0], &across[1]);
    cairo_user_to_device_distance(context, &down[0], &down[1]);
    const double width = std::hypot(across[0], across[1]);
    const double length = std::hypot(down[0], down[1]);
    const double area = std::fabs(across[0] * down[1] - across[1] * down[0]);
    return width <= kMost && length <= kMost && area >= kLeast * std::max(width, length);
}

} // namespace

TextLayout::TextLayout(const std::vector<Paragraph>& text, int frameHeight)
{
    constexpr double kHeightUnits = 480.0;
    const double unit = frameHeight / kHeightUnits;
    const SectionLock lock(FontSection());
    // Released within the section, also when there is no memory for all of them.
    std::vector<Block> blocks;
    for (const Paragraph& paragraph : text) {
        GlibPtr<PangoLayout> layout = LayOut(paragraph, unit);
        PangoRectangle box;
        pango_layout_get_extents(layout.get(), nullptr, &box);
        const double width = Pixels(box.width);
        // Its own width for now.
        blocks.push_back({std::move(layout), width, m_height});
        m_width = std::max(m_width, width);
        m_height += Pixels(box.height);
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        blocks[i].x = (m_width - blocks[i].x) * text[i].alignment;
        AddRuns(text[i], blocks[i], unit);
    }
    m_blocks = std::move(blocks);
}

void TextLayout::AddRuns(const Paragraph& paragraph, const Block& block, double unit)
{
    // Where the text of each run ends.
    std::vector<std::size_t> ends;
    for (const TextRun& run : paragraph.runs)
        ends.push_back((ends.empty() ? 0 : ends.back()) + run.text.size());
    const Iterator iterator(pango_layout_get_iter(block.layout.get()));
    do {
        const PangoLayoutRun* glyphs = pango_layout_iter_get_run_readonly(iterator.get());
        // Lines end with none.
        if (!glyphs) continue;
        const auto offset = static_cast<std::size_t>(glyphs->item->offset);
        const auto place = static_cast<std::size_t>(std::ranges::upper_bound(ends, offset) - ends.begin());
        if (place == ends.size()) continue;
        const TextStyle& style = paragraph.runs[place].style;
        PangoRectangle box;
        pango_layout_iter_get_run_extents(iterator.get(), nullptr, &box);
        PangoFont* font = glyphs->item->analysis.font;
        Run run{font,
                glyphs->glyphs,
                style.ink,
                style.font.height * unit,
                block.x + Pixels(box.x),
                block.y + Pixels(pango_layout_iter_get_run_baseline(iterator.get())),
                Pixels(box.width)};
        run.ink.edgeWidth *= unit;
        run.ink.shadowOffset *= unit;
        if (style.ink.underline) {
            const Metrics metrics(pango_font_get_metrics(font, glyphs->item->analysis.language));
            run.lineTop = -Pixels(pango_font_metrics_get_underline_position(metrics.get()));
            run.lineHeight = Pixels(pango_font_metrics_get_underline_thickness(metrics.get()));
        }
        m_runs.push_back(run);
    } while (pango_layout_iter_next_run(iterator.get()));
}

TextLayout::~TextLayout()
{
    const SectionLock lock(FontSection());
    m_blocks.clear();
}

void TextLayout::Draw(cairo_t* context) const
{
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;
    cairo_clip_extents(context, &left, &top, &right, &bottom);
    const SectionLock lock(FontSection());
    for (const Part part : {Part::Shadow, Part::Edge, Part::Face}) {
        for (const Run& run : m_runs) {
            // Glyphs may stand out of their row.
            const double reach = 2.0 * (run.height + run.ink.edgeWidth + run.ink.shadowOffset);
            const bool within = run.x - reach < right && run.x + run.width + reach > left &&
                                run.baseline - reach < bottom && run.baseline + reach > top;
            if (within) Draw(context, run, part);
        }
    }
}

void TextLayout::Draw(cairo_t* context, const Run& run, Part part)
{
    if (!IsVisible(context, run.height)) return;
    const Ink& ink = run.ink;
    const Colour& colour = part == Part::Shadow ? ink.shadow : part == Part::Edge ? ink.edge : ink.colour;
    if (colour.alpha == 0) return;
    SetColour(context, colour);
    switch (part) {
    case Part::Shadow:
        cairo_translate(context, ink.shadowOffset, ink.shadowOffset);
        Fill(context, run);
        cairo_translate(context, -ink.shadowOffset, -ink.shadowOffset);
        break;
    case Part::Edge:
        // The face lies over its inner half.
        cairo_set_line_width(context, 2.0 * ink.edgeWidth);
        cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
        Follow(context, run);
        cairo_stroke(context);
        break;
    case Part::Face:
        Fill(context, run);
        break;
    }
}

void TextLayout::Fill(cairo_t* context, const Run& run)
{
    // Larger glyphs would take much memory as pictures.
    constexpr double kMostHeight = 256.0;
    double x = run.height;
    double y = run.height;
    cairo_user_to_device_distance(context, &x, &y);
    if (std::hypot(x, y) > kMostHeight) {
        Follow(context, run);
    } else {
        cairo_move_to(context, run.x, run.baseline);
        pango_cairo_show_glyph_string(context, run.font, run.glyphs);
        cairo_new_path(context);
        if (run.ink.underline) {
            cairo_rectangle(context, run.x, run.baseline + run.lineTop, run.width, run.lineHeight);
        }
    }
    cairo_fill(context);
}

void TextLayout::Follow(cairo_t* context, const Run& run)
{
    cairo_new_path(context);
    cairo_move_to(context, run.x, run.baseline);
    pango_cairo_glyph_string_path(context, run.font, run.glyphs);
    if (run.ink.underline) cairo_rectangle(context, run.x, run.baseline + run.lineTop, run.width, run.lineHeight);
}

} // namespace kv
