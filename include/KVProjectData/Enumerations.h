#pragma once
// The enumerations of the type library.

#include "platform/automation/TypeDescription.h"

KV_ENUM(DiscFormat, DVD_Video = 1, DVD_plusVR = 2, DVD_dashVR = 3, DVD_Video_CD = 4, VCD = 5, SVCD = 6, H_BDMV = 7,
        H_BD_AV = 8, H_HDDVD = 9, H_HDDVD_VR = 10, AVCHD = 11, HEVC_UHD = 12);

KV_ENUM(TVStandard, NTSC = 1, PAL = 2);

/// Flags.
KV_ENUM(TargetType, DiscTarget = 1, ISOTarget = 2, FolderTarget = 4, ISO_DVDdash9 = 8, ISO_DVDplus9 = 16, ISO_BDR = 32,
        ISO_BDRE = 64, ISO_DVDdashR = 128, ISO_DVDdashRW = 256, ISO_DVDplusR = 512, ISO_DVDplusRW = 1024,
        ISO_HDR = 2048, ISO_HDRDL = 4096);

/// Flags.
KV_ENUM(ProjectOptions, Archive_TitleImageSources = 1, Archive_TitleVideoSources = 2, Archive_MenuSources = 4,
        Audio_NormalizeLevels = 8, Video_ProgressiveOutput = 16, Editor_BtnFreeResizing = 32,
        Cmd_PlayRemainingTitles = 64);

KV_ENUM(DiscSizeEnum, SZ_CD650 = 1, SZ_CD700 = 2, SZ_DVD14 = 3, SZ_DVD47 = 4, SZ_DVD85 = 5, SZ_HD15 = 6, SZ_HD30 = 7,
        SZ_BD25 = 8, SZ_BD50 = 9, SZ_BD100 = 10, SZ_BD128 = 11);

KV_ENUM(DiscVideoType, Normal_2D = 1, Anaglyph_3D = 2, RealD_3D = 3);

/// Flags.
KV_ENUM(TitleFlags, Title_IsDeleted = 1, Title_GenerateChapterMenus = 2, Title_IsSlideshow = 4, Title_DoReencode = 8);

/// Flags.
KV_ENUM(TitleTypes, TitleType_Normal = 1, TitleType_FirstPlay = 2, TitleType_Transition = 4, TitleType_Private = 8);

KV_ENUM(VideoResolution, VideoResolution_None = 0, VideoResolution_Full_D1 = 1, VideoResolution_Cropped_D1 = 2,
        VideoResolution_Half_D1 = 3, VideoResolution_Quarter_D1 = 4, VideoResolution_SVCD = 5, VideoResolution_480i = 6,
        VideoResolution_480p = 7, VideoResolution_720p = 8, VideoResolution_1080i_960 = 9,
        VideoResolution_1080p_960 = 10, VideoResolution_1080i_1280 = 11, VideoResolution_1080i_1440 = 12,
        VideoResolution_1080p_1440 = 13, VideoResolution_1080i_1920 = 14, VideoResolution_1080p_1920 = 15,
        VideoResolution_2160i_3840 = 16, VideoResolution_2160p_3840 = 17);

KV_ENUM(AspectRatio, AspectRatio_None = 0, AspectRatio_4x3 = 1, AspectRatio_16x9 = 2);

KV_ENUM(VideoFormat, VideoFormat_MPEG2 = 0, VideoFormat_AVC = 1, VideoFormat_VC1 = 2, VideoFormat_MPEG1 = 3,
        VideoFormat_HEVC = 4);

KV_ENUM(AudioFormat, AudioFormat_None = 0, AudioFormat_LPCM = 1, AudioFormat_MPEG1 = 2, AudioFormat_AC3 = 3,
        AudioFormat_DD_PLUS = 4, AudioFormat_DL_MLP = 5, AudioFormat_DTS = 6, AudioFormat_DTS_HD = 7);

KV_ENUM(WideDisplayMode, WideDisplayMode_Letterbox = 1, WideDisplayMode_PanAndScan = 2, WideDisplayMode_Both = 3);

KV_ENUM(SubpictureFormat, SubpictureFormat_None = 0, SubpictureFormat_RLE = 1, SubpictureFormat_RLE_8bit = 2);

KV_ENUM(DiscCommand, PlayTitleFromChapter = 1, PlayMenu = 2, StopPlayback = 3, SetSubpictureStream = 4, Transition = 5,
        PlayClip = 6, PlayAllTitles = 7, PlayMenuTitles = 8, PlayNextTitle = 9);

/// Flags.
KV_ENUM(MenuTypes, MenuType_Main = 1, MenuType_Chapter = 2, MenuType_TemplateMain = 4, MenuType_TemplateChap = 8,
        MenuType_Transition = 16);

/// Flags. MenuFlag_UserButtonsDirty tells that a button was moved or resized.
KV_ENUM(MenuFlags, MenuFlag_Still = 1, MenuFlag_UserButtonsDirty = 2);

/// Of the host's templates; no member takes it.
KV_ENUM(ContentStyle, TitleOnly = 0, SeveralTitles = 1, EachTitle = 2, PreviewboxOnly = 3, Style_None = 4);

KV_ENUM(SPUColourTypes, SPU_Normal = -1, SPU_BtnColours1 = 0, SPU_BtnColours2 = 1, SPU_BtnColours3 = 2);

/// Flags.
KV_ENUM(MenuElementFlags, Menu_Elem_Invisible = 1, Menu_Elem_NoResize = 2, Menu_Elem_NoMove = 4, Menu_Elem_NoRotate = 8,
        Menu_Elem_NoDelete = 16, Menu_Elem_Keep_Aspect = 32, Menu_Btn_Force_Activate = 64, Menu_Elem_Zoomed = 128);

/// Flags. ButtonType_Nav is the four that navigate.
KV_ENUM(ButtonTypes, ButtonType_Next = 1, ButtonType_Prev = 2, ButtonType_Home = 4, ButtonType_Up = 8,
        ButtonType_Nav = 15, ButtonType_ChapterIndex = 16, ButtonType_Command = 32);

/// Flags, but for the last.
KV_ENUM(OverlayTypes, OverlayType_Generic = 1, OverlayType_Frame = 2, OverlayType_Thumbnail = 4,
        OverlayType_Highlight = 8, OverlayType_Matte = 16, OverlayType_InsertMeida = 22);

/// What of an overlay is highlighted with its button.
KV_ENUM(OverlayHighlight, OverlayHLI_None = 0, OverlayHLI_Extent = 1, OverlayHLI_Source = 2);

/// What an overlay's picture is taken from.
KV_ENUM(SourceTypes, Source_None = 0, Source_File = 1, Source_BtnCmdLink = 2, Source_TitleId = 3, Source_AllTitles = 4,
        Source_AllMenuTitles = 5, Source_AllMenuChapters = 6, Source_AllTitleChapters = 7, Source_Private_Title = 8,
        Source_Private_Start = 9);

/// Flags.
KV_ENUM(TextTypes, TextType_Label = 1, TextType_Index = 2);

KV_ENUM(TextType, Type_None = 0, Type_RootMenuText = 1, Type_SubMenuText = 2, Type_UserText = 4);

/// What of a text is highlighted with its button.
KV_ENUM(TextHighlight, TextHLI_None = 0, TextHLI_Extent = 1, TextHLI_Box = 2, TextHLI_Underline = 3,
        TextHLI_Outline = 4);

/// The point of a text that its position tells.
KV_ENUM(TextHandles, Handle_TopLeft = 1, Handle_TopMiddle = 2, Handle_TopRight = 3, Handle_MiddleLeft = 4,
        Handle_Center = 5, Handle_MiddleRight = 6, Handle_BottomLeft = 7, Handle_BottomMiddle = 8,
        Handle_BottomRight = 9);

KV_ENUM(TextColor, TextColor_Face = 0, TextColor_Edge = 1, TextColor_Shadow = 2);

/// Flags, of which the first of left, right, centre, justify counts.
KV_ENUM(TextJustifyFlags, TextJustify_Left = 1, TextJustify_Right = 2, TextJustify_Center = 4, TextJustify_Justify = 8);

/// Flags.
KV_ENUM(TextStyles, TextStyle_Bold = 1, TextStyle_Italic = 2, TextStyle_Edge = 4, TextStyle_Shadow = 8,
        TextStyle_UnderLine = 64);
