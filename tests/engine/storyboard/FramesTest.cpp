#include "engine/Frame.h"
#include "engine/storyboard/StoryboardSupport.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

namespace kv::test {
namespace {

/// Stills of one colour, a mask of the left half, and a second of green and one of blue.
Bstr Source(const std::string& name)
{
    static const ClipFolder clips;
    [[maybe_unused]] static const bool made = [] {
        const auto colour = [](const char* rest) { return std::string("-f lavfi -i color=") + rest; };
        for (const char* plain : {"red", "lime", "blue", "white"})
            clips.Make(std::string(plain) + ".png", colour(plain) + ":size=64x48 -frames:v 1 -update 1");
        clips.Make("wide.png", colour("red:size=128x48 -frames:v 1 -update 1"));
        clips.Make("left.png", colour("black:size=64x48,drawbox=w=32:h=48:color=white:t=fill -frames:v 1 -update 1"));
        clips.Make("blink.mp4", colour("lime:size=64x48:rate=25:duration=1 ") +
                                    colour("blue:size=64x48:rate=25:duration=1 ") +
                                    "-filter_complex concat=n=2:v=1 -c:v mpeg4 -q:v 1");
        return true;
    }();
    return clips.File(name);
}

class FramesTest : public StoryboardTest {
protected:
    struct Place {
        double x;
        double y;
        double time = 0.0;
    };

    static std::string Key(const std::string& channel, const std::string& value)
    {
        return "<" + channel + "><StartOffsetElements><KeyFrame><Time>0</Time>" + value +
               "</KeyFrame></StartOffsetElements></" + channel + ">";
    }
    static std::string Scaled(const std::string& size)
    {
        return Key("Scaling", "<Vector><x>" + size + "</x><y>" + size + "</y><z>1</z></Vector>");
    }
    static ComPtr<IXMLDOMNode> PanZoom(const std::string& content)
    {
        return XmlElement::Parse("<ZXFPanZoom>" + content + "</ZXFPanZoom>").Get();
    }

    ComPtr<IUnknown> Overlay(LONG layer, const char* source, const std::string& document = "", double start = 0.0,
                             double end = 0.0)
    {
        ComPtr<IUnknown> effect;
        EXPECT_EQ(S_OK, edit->AddProductionEffect(layer, ZXE_EFFECT_OVERLAY, Document(document).Get(),
                                                  Source(source).Get(), 0, start, effect.Put()));
        EXPECT_EQ(S_OK, Call(effect, &ISubObject::put_EndOffset, end));
        return effect;
    }

    Frame FrameAt(double seconds, ULONG width = 64, ULONG height = 48)
    {
        return FrameBy<IZXEProductionFrames>(production.Get(), seconds, width, height);
    }
    /// A letter for the colour of each place.
    std::string Shown(const std::vector<Place>& places)
    {
        std::string letters;
        for (const Place& place : places)
            letters += FrameAt(place.time).Letter(place.x, place.y);
        return letters;
    }
    std::string Middles(const std::vector<double>& times)
    {
        std::string letters;
        for (const double time : times)
            letters += FrameAt(time).Letter(0.5, 0.5);
        return letters;
    }
};

TEST_F(FramesTest, ShowPanelsInTurn)
{
    EXPECT_EQ("-", Middles({0.0}));
    AddPanel(Source("red.png"), 0.0, 2.0);
    AddPanel(Source("blink.mp4"));
    AddPanel(Bstr(u"/no/such/picture.png"), 0.0, 1.0);
    AddPanel(Source("white.png"), 1.0, 2.0);
    // A moniker is no file.
    AddPanel(Bstr(u"title:3"), 0.0, 1.0);
    EXPECT_EQ("rrggbbkwkkk", Middles({0.0, 1.97, 2.0, 2.98, 3.0, 3.98, 4.5, 5.5, 6.5, 99.0, 1e300}));
}

TEST_F(FramesTest, FitPanels)
{
    const auto panel = AddPanel(Source("wide.png"));
    const std::vector<Place> topLeftInner{{0.5, 0.05}, {0.05, 0.5}, {0.3, 0.5}};
    // A single panel without a length shows at any time.
    EXPECT_EQ("rrr", Middles({0.0, 7.0, 1e9}));
    EXPECT_EQ("rrr", Shown(topLeftInner));
    ASSERT_EQ(S_OK, production->put_UseSourceAspectRatio(VARIANT_TRUE));
    EXPECT_EQ("krr", Shown(topLeftInner));
    ASSERT_EQ(S_OK, Call(panel, &ISourceFile::put_Rotation, -91));
    EXPECT_EQ("rkk", Shown(topLeftInner));
    ASSERT_EQ(S_OK, Call(panel, &ISourceFile::SetPanZoom, PanZoom(Scaled("2")).Get()));
    EXPECT_EQ("rkr", Shown(topLeftInner));
    // The sides that are not given follow from the production.
    ASSERT_EQ(S_OK, Call(production, &IProductionInfo::put_AspectRatio, 2.0));
    EXPECT_EQ(96U, FrameAt(0.0, 0, 48).width);
    EXPECT_EQ(48U, FrameAt(0.0, 96, 0).height);
}

TEST_F(FramesTest, ShowOneEffectOfEachLayer)
{
    AddPanel(Source("red.png"), 0.0, 10.0);
    constexpr double kFrame = 1.0 / 29.97;
    Overlay(1, "lime.png", "", 0.5 * kFrame, 2.5 * kFrame);
    Overlay(1, "blue.png", "", 2.5 * kFrame);
    const auto top = Overlay(2, "white.png", Scaled("0.5"), 5.0, 6.0);
    // Of another type, and nothing but in the way.
    AddEffect(3, 7);
    EXPECT_EQ("ggbbwbb", Middles({0.0, 1.2 * kFrame, 2.2 * kFrame, 4.9, 5.0 + kFrame, 6.1, 99.0}));
    const std::vector<Place> outerLeftRight{{0.2, 0.5, 5.5}, {0.4, 0.5, 5.5}, {0.6, 0.5, 5.5}};
    EXPECT_EQ("bww", Shown(outerLeftRight));
    // What is edited, undone and deleted shows at once.
    InBlock([&] { EXPECT_EQ(S_OK, Call(top, &IEffectInfo::SetMaskFile, Source("left.png").Get(), ZXE_MASK_ALPHA)); });
    EXPECT_EQ("bwb", Shown(outerLeftRight));
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ("bww", Shown(outerLeftRight));
    ASSERT_EQ(S_OK, Call(top, &IEffectInfo::SetParameterDocument, Document(Scaled("0.1")).Get(), VARIANT_TRUE));
    EXPECT_EQ("bbb", Shown(outerLeftRight));
    EXPECT_EQ("w", Middles({5.5}));
    ASSERT_EQ(S_OK, edit->DeleteProductionEffect(2, Get(top, &IEffectInfo::get_EffectID)));
    EXPECT_EQ("b", Middles({5.5}));
}

TEST_F(FramesTest, ShowTextsAndCrops)
{
    const auto block =
        Document("<html><body><p><font fontHeight='480' color='Lime'>\xe2\x96\x88</font></p></body></html>");
    AddEffect(1, ZXE_EFFECT_TEXT, block);
    // A picture is no text, and a text is no picture.
    AddEffect(2, ZXE_EFFECT_OVERLAY, block);
    AddEffect(3, ZXE_EFFECT_TEXT, Document(Scaled("0.1")));
    EXPECT_EQ("g-", Shown({{0.5, 0.5}, {0.02, 0.5}}));
    const auto overlay = Overlay(4, "left.png");
    EXPECT_EQ("wk", Shown({{0.3, 0.5}, {0.7, 0.5}}));
    const auto crop =
        PanZoom(Key("Crop", "<fRect><left>0.25</left><top>0.25</top><right>0.45</right><bottom>0.45</bottom></fRect>") +
                "<CropMode>1</CropMode>");
    ASSERT_EQ(S_OK, Call(overlay, &ISourceFile::SetPanZoom, crop.Get()));
    EXPECT_EQ("ww", Shown({{0.3, 0.5}, {0.7, 0.5}}));
}

TEST_F(FramesTest, AnswerClearlyToBadInput)
{
    AddPanel(Source("red.png"));
    for (const double number : {-1.0, HUGE_VAL, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(E_INVALIDARG, FrameAt(number).result) << number;
    for (const auto& [width, height] : {std::pair{0U, 0U}, {16'385U, 1U}, {1U, 16'385U}, {0U, 0xFFFFFFFFU}})
        EXPECT_EQ(E_INVALIDARG, FrameAt(0.0, width, height).result);
    ULONG out = 9;
    EXPECT_EQ(E_POINTER, Query<IZXEProductionFrames>(production)->GetFrame(0.0, 1, 1, &out, &out, &out, nullptr));
    EXPECT_EQ(0U, out);
    EXPECT_EQ('r', FrameAt(0.0, 1, 16'384).Letter(0.5, 0.9));
    // A production is seen after its use, too.
    ASSERT_EQ(S_OK, production->Close());
    EXPECT_EQ("r", Middles({0.0}));
}

TEST_F(FramesTest, AreDrawnWhileOthersEdit)
{
    AddPanel(Source("red.png"), 0.0, 4.0);
    const auto overlay = Overlay(1, "lime.png", Scaled("0.5"));
    const auto text = AddEffect(2, ZXE_EFFECT_TEXT, Document("<html><body><p>Words</p></body></html>"));
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            // Whatever is edited, one of the colours shows.
            while (!done)
                EXPECT_THAT(Shown({{0.5, 0.3, 1.0}}), testing::AnyOf("r", "g", "b"));
        });
    }
    for (int i = 0; i < 15; ++i) {
        InBlock([&] {
            const auto document = Document(Scaled(i % 2 ? "0.7" : "0.9"));
            EXPECT_EQ(S_OK, Call(overlay, &IEffectInfo::SetParameterDocument, document.Get(), VARIANT_TRUE));
            const Bstr source = Source(i % 2 ? "lime.png" : "blue.png");
            EXPECT_EQ(S_OK, Call(overlay, &ISourceFile::put_FileName, source.Get()));
            Overlay(3, "blue.png", Scaled("0.1"));
            EXPECT_EQ(S_OK, edit->DeleteProductionEffect(2, Get(text, &IEffectInfo::get_EffectID)));
        });
        EXPECT_EQ(S_OK, production->Undo());
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ("g", Shown({{0.5, 0.3, 1.0}}));
}

} // namespace
} // namespace kv::test
