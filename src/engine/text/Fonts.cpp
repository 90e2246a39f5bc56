#include "engine/text/Fonts.h"

#include "platform/com/Error.h"

#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <pango/pangofc-fontmap.h>

namespace kv {
namespace {

/// Fonts are looked for by their own names alone; what is found nowhere is DejaVu Sans.
constexpr const char* kSettings = R"(<?xml version="1.0"?>
<fontconfig>
  <dir>/usr/share/fonts</dir>
  <dir>/usr/local/share/fonts</dir>
  <dir prefix="xdg">fonts</dir>
  <cachedir>/var/cache/fontconfig</cachedir>
  <cachedir prefix="xdg">fontconfig</cachedir>
  <match target="pattern">
    <edit name="family" mode="append_last"><string>DejaVu Sans</string></edit>
  </match>
</fontconfig>)";

struct ConfigCloser {
    void operator()(FcConfig* config) const { FcConfigDestroy(config); }
};
using Config = std::unique_ptr<FcConfig, ConfigCloser>;

struct OptionsCloser {
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};
using FontOptions = std::unique_ptr<cairo_font_options_t, OptionsCloser>;

class Fonts {
public:
    Fonts()
    {
        // The types that Pango enters into the process stay behind this library; their code has to stay, too.
        if (!dlopen("libpangocairo-1.0.so.0", RTLD_NOW | RTLD_NODELETE)) throw Error(E_FAIL);
        const Config config(FcConfigCreate());
        const auto* settings = reinterpret_cast<const FcChar8*>(kSettings);
        if (!config || !FcConfigParseAndLoadFromMemory(config.get(), settings, FcTrue) ||
            !FcConfigBuildFonts(config.get())) {
            throw Error(E_FAIL);
        }
        m_map.reset(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
        if (!m_map) throw Error(E_FAIL);
        pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(m_map.get()), config.get());
        pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(m_map.get()), 96.0);
        m_context.reset(pango_font_map_create_context(m_map.get()));
        const FontOptions options(cairo_font_options_create());
        cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(m_context.get(), options.get());
        pango_context_set_round_glyph_positions(m_context.get(), FALSE);
        pango_context_set_language(m_context.get(), pango_language_from_string("en"));
    }

    PangoContext* Context() const { return m_context.get(); }

private:
    GlibPtr<PangoFontMap> m_map;
    GlibPtr<PangoContext> m_context;
};

} // namespace

CriticalSection& FontSection()
{
    static CriticalSection section;
    return section;
}

GlibPtr<PangoLayout> NewLayout()
{
    static const Fonts fonts;
    return GlibPtr<PangoLayout>(pango_layout_new(fonts.Context()));
}

} // namespace kv
