#pragma once
// Where the registry says which folders an installation has.

#include <string_view>

namespace kv {

inline constexpr std::u16string_view kPathsKey = u"SOFTWARE\\KORVA\\ZENDA\\Zenda\\Paths";
inline constexpr std::u16string_view kContentName = u"AppDataContent";
inline constexpr std::u16string_view kAlternateContentName = u"AlternateContent";

inline constexpr std::u16string_view kSkinKey = u"SOFTWARE\\KORVA\\ZENDA\\Orvel\\BRXOPTIONS";
inline constexpr std::u16string_view kSkinName = u"Current Skin";

inline constexpr std::u16string_view kPlugInsKey = u"SOFTWARE\\Korva\\ZENDA\\Tarnex\\Album";
inline constexpr std::u16string_view kPlugInsName = u"EffectsFilesPath";

} // namespace kv
