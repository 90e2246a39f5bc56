#include "engine/text/TextLayout.h"

#include <algorithm>
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

Font FontOf(const TextStyle& style, int frameHeight)
{
    constexpr double kHeightUnits = 480.0;
    Font font(pango_font_description_new());
    pango_font_description_set_family(font.get(), style.face.c_str());
    pango_font_description_set_absolute_size(font.get(), style.height * frameHeight / kHeightUnits * PANGO_SCALE);
    pango_font_description_set_weight(font.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(font.get(), style.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    return font;
}

/// `usual` is the style of the whole paragraph.
void Style(PangoAttrList* attributes, const TextStyle& style, const TextStyle& usual, int frameHeight, std::size_t from,
           std::size_t to)
{
    constexpr int kWide = 257;
    const auto add = [&](PangoAttribute* attribute) {
        attribute->start_index = static_cast<guint>(from);
        attribute->end_index = static_cast<guint>(to);
        pango_attr_list_insert(attributes, attribute);
    };
    const auto wide = [](std::uint8_t channel) { return static_cast<guint16>(channel * kWide); };
    if (style != usual) add(pango_attr_font_desc_new(FontOf(style, frameHeight).get()));
    add(pango_attr_foreground_new(wide(style.red), wide(style.green), wide(style.blue)));
    // An alpha of 0 stands for none that is told.
    add(pango_attr_foreground_alpha_new(std::max<guint16>(wide(style.alpha), 1)));
    if (style.underline) add(pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
}

PangoAlignment AlignmentOf(TextAlignment alignment)
{
    if (alignment == 0.5) return PANGO_ALIGN_CENTER;
    return alignment == 1.0 ? PANGO_ALIGN_RIGHT : PANGO_ALIGN_LEFT;
}

GlibPtr<PangoLayout> LayOut(const Paragraph& paragraph, int frameHeight)
{
    GlibPtr<PangoLayout> layout = NewLayout();
    const Attributes attributes(pango_attr_list_new());
    std::string text;
    for (const TextRun& run : paragraph.runs) {
        const std::size_t from = text.size();
        text += run.text;
        Style(attributes.get(), run.style, paragraph.style, frameHeight, from, text.size());
    }
    pango_layout_set_font_description(layout.get(), FontOf(paragraph.style, frameHeight).get());
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_attributes(layout.get(), attributes.get());
    // The same side whatever the direction of its script.
    pango_layout_set_auto_dir(layout.get(), FALSE);
    pango_layout_set_alignment(layout.get(), AlignmentOf(paragraph.alignment));
    return layout;
}

} // namespace

TextLayout::TextLayout(const std::vector<Paragraph>& text, int frameHeight)
{
    const SectionLock lock(FontSection());
    for (const Paragraph& paragraph : text) {
        GlibPtr<PangoLayout> layout = LayOut(paragraph, frameHeight);
        PangoRectangle box;
        pango_layout_get_extents(layout.get(), nullptr, &box);
        const double width = box.width / static_cast<double>(PANGO_SCALE);
        // Its own width for now.
        m_blocks.push_back({std::move(layout), width, m_height});
        m_width = std::max(m_width, width);
        m_height += box.height / static_cast<double>(PANGO_SCALE);
    }
    for (std::size_t i = 0; i < text.size(); ++i)
        m_blocks[i].x = (m_width - m_blocks[i].x) * text[i].alignment;
}

TextLayout::~TextLayout()
{
    const SectionLock lock(FontSection());
    m_blocks.clear();
}

void TextLayout::Draw(cairo_t* context) const
{
    const SectionLock lock(FontSection());
    for (const Block& block : m_blocks) {
        cairo_move_to(context, block.x, block.y);
        pango_cairo_show_layout(context, block.layout.get());
    }
}

} // namespace kv
