#include "Fonts.h"

#include <fontconfig/fontconfig.h>
#include <memory>

namespace kvproject {

bool IsInstalled(const std::string& face)
{
    static const std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)> config(FcInitLoadConfigAndFonts(),
                                                                              &FcConfigDestroy);
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> pattern(FcPatternCreate(), &FcPatternDestroy);
    const std::unique_ptr<FcObjectSet, decltype(&FcObjectSetDestroy)> wanted(FcObjectSetCreate(), &FcObjectSetDestroy);
    if (!config || !pattern || !wanted) return true;
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(face.c_str()));
    FcObjectSetAdd(wanted.get(), FC_FAMILY);
    const std::unique_ptr<FcFontSet, decltype(&FcFontSetDestroy)> fonts(
        FcFontList(config.get(), pattern.get(), wanted.get()), &FcFontSetDestroy);
    return !fonts || fonts->nfont > 0;
}

} // namespace kvproject
