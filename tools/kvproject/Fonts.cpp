#include "Fonts.h"

#include <fontconfig/fontconfig.h>
#include <memory>
#include <set>

namespace kvproject {
namespace {

using FontSet = std::unique_ptr<FcFontSet, decltype(&FcFontSetDestroy)>;

/// The fonts of that face, of all faces where it is null. Null where the fonts cannot be listed.
FontSet ListFonts(const std::string* face)
{
    static const std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)> config(FcInitLoadConfigAndFonts(),
                                                                              &FcConfigDestroy);
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> pattern(FcPatternCreate(), &FcPatternDestroy);
    const std::unique_ptr<FcObjectSet, decltype(&FcObjectSetDestroy)> wanted(FcObjectSetCreate(), &FcObjectSetDestroy);
    if (!config || !pattern || !wanted) return {nullptr, &FcFontSetDestroy};
    if (face) FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(face->c_str()));
    FcObjectSetAdd(wanted.get(), FC_FAMILY);
    return {FcFontList(config.get(), pattern.get(), wanted.get()), &FcFontSetDestroy};
}

} // namespace

bool IsInstalled(const std::string& face)
{
    const FontSet fonts = ListFonts(&face);
    return !fonts || fonts->nfont > 0;
}

std::vector<std::string> InstalledFaces()
{
    const FontSet fonts = ListFonts(nullptr);
    std::set<std::string> faces;
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcChar8* face = nullptr;
        for (int n = 0; FcPatternGetString(fonts->fonts[i], FC_FAMILY, n, &face) == FcResultMatch; ++n)
            faces.emplace(reinterpret_cast<const char*>(face));
    }
    return {faces.begin(), faces.end()};
}

} // namespace kvproject
