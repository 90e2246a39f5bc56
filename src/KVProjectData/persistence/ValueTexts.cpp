#include "KVProjectData/persistence/ValueTexts.h"

#include <charconv>

namespace kv {
namespace {

template <class Number>
void AppendNumber(Number value, std::string& text)
{
    char digits[16];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
}

constexpr std::string_view kDiscFormats[]{"",     "DVD_Video",   "DVD_plusVR",  "DVD_dashVR", "DVD_Video_CD", "VCD",
                                          "SVCD", "BluRay_BDMV", "BluRay_BDAV", "HDDVD",      "HDDVD_VR",     "AVCHD"};
constexpr std::string_view kDiscSizes[]{"",       "CD_650",   "CD_700",   "DVD_14",    "DVD_47",
                                        "DVD_85", "HDDVD_15", "HDDVD_30", "BluRay_25", "BluRay_50"};
constexpr std::string_view kTVStandards[]{"", "NTSC", "PAL"};
constexpr std::string_view kDiscVideoTypes[]{"", "Normal_2D", "Anaglyph_3D", "RealD_3D"};
constexpr std::string_view kAspectRatios[]{"None", "4x3", "16x9"};
constexpr std::string_view kAudioFormats[]{"", "LPCM", "MPEG-1", "AC-3", "DD_Plus", "DL_MLP", "DTS", "DTS_HD"};
constexpr std::string_view kSubpictureFormats[]{"", "RLE", "RLE_8Bit"};
constexpr std::string_view kVideoFormats[]{"MPEG-2", "AVC/H.264", "VC-1", "MPEG-1"};
constexpr std::string_view kVideoResolutions[]{"",
                                               "Full_D1",
                                               "Cropped_D1",
                                               "Half_D1",
                                               "Quarter_D1",
                                               "SVCD",
                                               "HD_480i",
                                               "HD_480p",
                                               "HD_720p",
                                               "HD_1080i_960",
                                               "HD_1080p_960",
                                               "HD_1080i_1280",
                                               "HD_1080i_1440",
                                               "HD_1080p_1440",
                                               "HD_1080i_1920",
                                               "HD_1080p_1920"};
constexpr std::string_view kWideDisplayModes[]{"", "Letterbox", "PanAndScan", "Both"};
constexpr std::string_view kOverlayHighlights[]{"None", "Extent", "Source"};
constexpr std::string_view kSourceTypes[]{"None",          "File",          "BtnCmdLink",      "Title",
                                          "AllTitles",     "AllMenuTitles", "AllMenuChapters", "AllTitleChapters",
                                          "Private_Title", "User_Defined"};
constexpr std::string_view kTextHighlights[]{"None", "Extent", "Box", "Underline", "Outline"};
constexpr std::string_view kTextTypes[]{"None", "RootMenu", "SubMenu", "unknown", "User"};
constexpr std::string_view kTextHandles[]{"",       "TopLeft",     "TopMiddle",  "TopRight",     "MiddleLeft",
                                          "Center", "MiddleRight", "BottomLeft", "BottomMiddle", "BottomRight"};

constexpr std::string_view kProjectOptionFlags[]{
    "Archive_TitleImageSources", "Archive_TitleVideoSources", "Archive_MenuSources",    "Audio_NormalizeLevels",
    "Video_ProgressiveOutput",   "Editor_BtnFreeResizing",    "Cmd_PlayRemainingTitles"};
constexpr std::string_view kMenuFlags[]{"StillMenu"};
constexpr std::string_view kMenuTypes[]{"Main", "Chapter", "MainTemplate", "ChapterTemplate", "Transition"};
constexpr std::string_view kOverlayTypes[]{"Generic", "Frame", "Thumbnail", "Highlight", "Matte"};
constexpr std::string_view kTextTypeFlags[]{"Label", "Index"};
constexpr std::string_view kTitleTypes[]{"Normal", "FirstPlay", "Transition", "Private"};

} // namespace

constinit const EnumNames kDiscFormatNames(kDiscFormats);
constinit const EnumNames kDiscSizeNames(kDiscSizes);
constinit const EnumNames kTVStandardNames(kTVStandards);
constinit const EnumNames kDiscVideoTypeNames(kDiscVideoTypes);
constinit const EnumNames kAspectRatioNames(kAspectRatios);
constinit const EnumNames kAudioFormatNames(kAudioFormats);
constinit const EnumNames kSubpictureFormatNames(kSubpictureFormats);
constinit const EnumNames kVideoFormatNames(kVideoFormats);
constinit const EnumNames kVideoResolutionNames(kVideoResolutions);
constinit const EnumNames kWideDisplayModeNames(kWideDisplayModes);
constinit const EnumNames kOverlayHighlightNames(kOverlayHighlights);
constinit const EnumNames kSourceTypeNames(kSourceTypes);
constinit const EnumNames kTextHighlightNames(kTextHighlights);
constinit const EnumNames kTextTypeNames(kTextTypes);
constinit const EnumNames kTextHandleNames(kTextHandles);
constinit const FlagNames kProjectOptionNames(kProjectOptionFlags);
constinit const FlagNames kMenuFlagNames(kMenuFlags);
constinit const FlagNames kMenuTypeNames(kMenuTypes);
constinit const FlagNames kOverlayTypeNames(kOverlayTypes);
constinit const FlagNames kTextTypeFlagNames(kTextTypeFlags);
constinit const FlagNames kTitleTypeNames(kTitleTypes);

void EnumNames::AppendText(ULONG value, std::string& text) const
{
    AppendNumber(static_cast<LONG>(value), text);
    text += " (";
    text += value < m_names.size() ? m_names[value] : "unknown";
    text += ')';
}

void FlagNames::AppendText(ULONG value, std::string& text) const
{
    AppendNumber(value, text);
    text += " (";
    const std::size_t first = text.size();
    for (std::size_t bit = 0; bit < m_names.size(); ++bit) {
        if (!(value >> bit & 1)) continue;
        if (text.size() > first) text += '|';
        text += m_names[bit];
    }
    text += ')';
}

} // namespace kv
