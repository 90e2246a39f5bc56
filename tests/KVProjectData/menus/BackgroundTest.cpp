#include "KVProjectData/menus/MenuSupport.h"

#include "platform/com/TaskMemory.h"

#include <array>
#include <limits>

namespace kv::test {
namespace {

using Rect = std::array<float, 4>;

class BackgroundTest : public MenuTest {
protected:
    void SetUp() override
    {
        MenuTest::SetUp();
        ASSERT_EQ(S_OK, SetNative(true));
    }

    /// Top, left, bottom, right.
    Rect Crop()
    {
        Rect rect{-1, -1, -1, -1};
        EXPECT_EQ(S_OK, menu->GetMenuBackgroundCrop(&rect[0], &rect[1], &rect[2], &rect[3]));
        return rect;
    }
    HRESULT SetCrop(const Rect& rect) { return menu->SetMenuBackgroundCrop(rect[0], rect[1], rect[2], rect[3]); }

    /// The pan-zoom of the first clip.
    XmlElement PanZoom()
    {
        ComPtr<IUnknown> panel;
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(BackgroundProduction())->GetPanelBaseObject(0, panel.Put()));
        ComPtr<IXMLDOMNode> panZoom;
        EXPECT_LE(S_OK, Query<ISourceFile>(panel)->GetPanZoom(panZoom.Put()));
        return XmlElement(panZoom.Get());
    }

    /// How wide the first clip is shown, in hundredths of what fits.
    int Scale()
    {
        const XmlElement vector =
            PanZoom().Child("Scaling").Child("StartOffsetElements").Child("KeyFrame").Child("Vector");
        EXPECT_EQ(vector.Typed("x", 0.0F), vector.Typed("y", 0.0F));
        EXPECT_EQ(1.0F, vector.Typed("z", 0.0F));
        return static_cast<int>(vector.Typed("x", 0.0F) * 100 + 0.5F);
    }
    bool Fills() { return ValueOf(*menu.Get(), &IKVMenu::IsMenuBackgroundFill) == VARIANT_TRUE; }
};

TEST_F(BackgroundTest, WithoutABackgroundProductionThereIsNothing)
{
    ASSERT_EQ(S_OK, SetNative(false));
    Events();
    double number = 5;
    VARIANT_BOOL flag = VARIANT_TRUE;
    BYTE* bits = nullptr;
    BSTR text = nullptr;
    for (const auto ask : {&IKVMenu::GetMenuBackgroundAudioVolume, &IKVMenu::GetMenuBackgroundVolume,
                           &IKVMenu::GetMenuBackgroundAspectRatio}) {
        EXPECT_EQ(S_FALSE, (menu.Get()->*ask)(&number));
        EXPECT_EQ(0.0, std::exchange(number, 5));
    }
    for (const auto ask :
         {&IKVMenu::get_BackgroundMute, &IKVMenu::get_BackgroundAudioMute, &IKVMenu::GetMenuBackgroundFadeInOut,
          &IKVMenu::GetMenuBackgroundAudioFadeEnable, &IKVMenu::IsMenuBackgroundFill}) {
        EXPECT_EQ(S_FALSE, (menu.Get()->*ask)(&flag));
        EXPECT_EQ(VARIANT_FALSE, std::exchange(flag, VARIANT_TRUE));
        EXPECT_EQ(E_POINTER, (menu.Get()->*ask)(nullptr));
    }
    Rect rect{1, 1, 1, 1};
    EXPECT_EQ(S_FALSE, menu->GetMenuBackgroundCrop(&rect[0], &rect[1], &rect[2], &rect[3]));
    EXPECT_EQ(Rect{}, rect);
    EXPECT_EQ(E_POINTER, menu->GetMenuBackgroundCrop(&rect[0], nullptr, &rect[2], &rect[3]));
    EXPECT_EQ(S_FALSE, menu->GetMenuBackgroundPanelSource(&text));
    EXPECT_EQ(S_FALSE, menu->GetMenuBackgroundPanelSource(nullptr));
    EXPECT_EQ(S_FALSE, menu->ExtractBackgroundThumbnail(4, 4, &bits));
    for (const auto set : {&IKVMenu::put_BackgroundMute, &IKVMenu::put_BackgroundAudioMute,
                           &IKVMenu::SetMenuBackgroundFadeInOut, &IKVMenu::SetMenuBackgroundAudioFadeEnable})
        EXPECT_EQ(S_FALSE, (menu.Get()->*set)(VARIANT_TRUE));
    for (const auto set : {&IKVMenu::SetMenuBackgroundVolume, &IKVMenu::SetMenuBackgroundAudioVolume})
        EXPECT_EQ(S_FALSE, (menu.Get()->*set)(0.5));
    EXPECT_EQ(S_OK, SetCrop({0, 0, std::numeric_limits<float>::infinity(), 1}));
    EXPECT_EQ(S_OK, menu->SetMenuBackgroundCropMode(VARIANT_TRUE));
    EXPECT_EQ(S_OK, menu->ResizeMenuBackground(VARIANT_TRUE));
    EXPECT_TRUE(Events().empty());
}

TEST_F(BackgroundTest, PassesTheSoundOn)
{
    folder.Write("song.wav", "la la la");
    ASSERT_EQ(S_OK, menu->put_Background(wide.Get()));
    ASSERT_EQ(S_OK, menu->put_Audio(folder.File("song.wav").Get()));
    Events();
    EXPECT_EQ(S_OK, menu->put_BackgroundMute(VARIANT_TRUE));
    EXPECT_EQ(S_OK, menu->SetMenuBackgroundAudioVolume(0.25));
    EXPECT_EQ(S_OK, menu->SetMenuBackgroundVolume(0.75));
    EXPECT_EQ(S_OK, menu->SetMenuBackgroundFadeInOut(VARIANT_TRUE));
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ(S_OK, menu->SetMenuBackgroundAudioFadeEnable(VARIANT_FALSE));
    EXPECT_EQ((std::vector{Changed(356)}), Events());
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*menu.Get(), &IKVMenu::get_BackgroundMute));
    EXPECT_EQ(VARIANT_FALSE, ValueOf(*menu.Get(), &IKVMenu::get_BackgroundAudioMute));
    EXPECT_EQ(0.25, ValueOf(*menu.Get(), &IKVMenu::GetMenuBackgroundAudioVolume));
    EXPECT_EQ(0.75, ValueOf(*menu.Get(), &IKVMenu::GetMenuBackgroundVolume));
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*menu.Get(), &IKVMenu::GetMenuBackgroundFadeInOut));
    EXPECT_EQ(VARIANT_FALSE, ValueOf(*menu.Get(), &IKVMenu::GetMenuBackgroundAudioFadeEnable));
    Query<IKVLocking>(menu)->LockObject(VARIANT_FALSE);
    EXPECT_EQ(KV_E_LOCKED, menu->put_BackgroundAudioMute(VARIANT_TRUE));
    EXPECT_EQ(KV_E_LOCKED, menu->ResizeMenuBackground(VARIANT_TRUE));
}

TEST_F(BackgroundTest, CropsEveryClip)
{
    ASSERT_EQ(S_OK, menu->put_Background(narrow.Get()));
    EXPECT_EQ((Rect{0, 0, 1, 1}), Crop());
    Events();
    const float endless = std::numeric_limits<float>::infinity();
    EXPECT_EQ(E_INVALIDARG, SetCrop({0, 0, endless, 1}));
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    EXPECT_EQ(S_OK, SetCrop({0.125F, 0.25F, 0.5F, 0.75F}));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    EXPECT_EQ((Rect{0.125F, 0.25F, 0.5F, 0.75F}), Crop());
    EXPECT_EQ((std::vector{Changed(301)}), Events());
    const auto setting = [&](const char* name) { return PanZoom().Typed(name, ULONG{77}); };
    EXPECT_EQ(3u, setting("EditMode"));
    EXPECT_TRUE(PanZoom().Typed("CropMode", false)) << "a new crop is used";

    EXPECT_EQ(S_OK, menu->SetMenuBackgroundCropMode(VARIANT_FALSE));
    EXPECT_FALSE(PanZoom().Typed("CropMode", true));
    EXPECT_EQ((Rect{0.125F, 0.25F, 0.5F, 0.75F}), Crop()) << "the part stays";
    ASSERT_EQ(S_OK, menu->put_Background(wide.Get()));
    EXPECT_EQ(S_OK, menu->SetMenuBackgroundCropMode(VARIANT_TRUE));
    EXPECT_EQ((Rect{0, 0, 1, 1}), Crop());
}

TEST_F(BackgroundTest, WhatUndoBringsBackIsWhatTheStoryboardHeld)
{
    folder.Write("song.wav", "la la la");
    const Bstr song = folder.File("song.wav");
    ASSERT_EQ(S_OK, menu->put_Background(narrow.Get()));
    const std::function<HRESULT()> edits[]{
        [&] { return menu->put_Audio(song.Get()); },
        [&] {
            return SetCrop({0.125F, 0.25F, 0.5F, 0.75F});
        },
        [&] { return menu->SetMenuBackgroundCropMode(VARIANT_FALSE); },
    };
    for (const bool native : {true, false}) {
        ASSERT_LE(S_OK, SetNative(native));
        const auto held = [&] { return Held(native ? BackgroundProduction() : Production()); };
        const auto step = [&](const std::function<HRESULT()>& edit) {
            ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
            EXPECT_EQ(S_OK, edit());
            ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
        };
        for (const auto& edit : edits) {
            SCOPED_TRACE(std::to_string(&edit - edits) + (native ? " native" : " plain"));
            if (!native && &edit != edits) continue;
            ASSERT_EQ(S_OK, menu->put_Audio(nullptr));
            const std::string before = held();
            // A step before that the storyboards take part in is not taken back in the place of this one.
            step([&] { return menu->put_Background(wide.Get()); });
            const std::string between = held();
            step(edit);
            const std::string after = held();
            EXPECT_NE(between, after);
            EXPECT_EQ(S_OK, project->UndoOperation());
            EXPECT_EQ(between, held());
            EXPECT_EQ(S_OK, project->UndoOperation());
            EXPECT_EQ(before, held());
            EXPECT_EQ(S_OK, project->RedoOperation());
            EXPECT_EQ(S_OK, project->RedoOperation());
            EXPECT_EQ(after, held());
        }
    }
}

TEST_F(BackgroundTest, FitsAndFills)
{
    struct Case {
        const Bstr& source;
        Rect crop;
        int filling;
    };
    // The frame is 16:9. A part of the source has an aspect ratio of its own.
    const Case cases[]{
        {wide, {0, 0, 1, 1}, 100},         {narrow, {0, 0, 1, 1}, 133},       {narrow, {0, 0, 0.5F, 1}, 100},
        {wide, {0, 0.25F, 1, 0.75F}, 200}, {narrow, {0.5F, 0, 0.5F, 1}, 133},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        ASSERT_EQ(S_OK, menu->put_Background(each.source.Get()));
        ASSERT_EQ(S_OK, SetCrop(each.crop));
        Events();
        EXPECT_EQ(S_OK, menu->ResizeMenuBackground(VARIANT_FALSE));
        EXPECT_EQ((std::vector{Changed(301)}), Events());
        EXPECT_EQ(each.filling, Scale());
        EXPECT_TRUE(Fills());
        EXPECT_EQ(each.crop, Crop());
        EXPECT_EQ(S_OK, menu->ResizeMenuBackground(VARIANT_TRUE));
        EXPECT_EQ(100, Scale());
        EXPECT_EQ(each.filling == 100, Fills());
    }
    EXPECT_DOUBLE_EQ(4.0 / 3.0, ValueOf(*menu.Get(), &IKVMenu::GetMenuBackgroundAspectRatio));
}

TEST_F(BackgroundTest, ShowsItsThumbnail)
{
    BYTE* bits = nullptr;
    ASSERT_EQ(S_OK, menu->put_Background(still.Get()));
    for (const auto& [width, height] : {std::pair{0, 4}, {4, -1}, {40'000, 1}})
        EXPECT_EQ(E_INVALIDARG, menu->ExtractBackgroundThumbnail(width, height, &bits));
    EXPECT_EQ(E_POINTER, menu->ExtractBackgroundThumbnail(4, 4, nullptr));
    // Of a narrow picture in a wide frame: black at the sides, opaque everywhere.
    ASSERT_EQ(S_OK, menu->ExtractBackgroundThumbnail(32, 18, &bits));
    const UniqueTaskMem<BYTE> owner(bits);
    const auto pixel = [&](int x, int y) {
        return std::pair{int{bits[(y * 32 + x) * 4]}, int{bits[(y * 32 + x) * 4 + 3]}};
    };
    EXPECT_EQ((std::pair{0, 255}), pixel(0, 0));
    EXPECT_EQ((std::pair{0x60, 255}), pixel(16, 17));
    EXPECT_EQ((std::pair{0, 255}), pixel(31, 17));
}

} // namespace
} // namespace kv::test
