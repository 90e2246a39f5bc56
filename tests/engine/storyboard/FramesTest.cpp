#include "engine/storyboard/StoryboardSupport.h"

#include <gmock/gmock.h>

#include <atomic>
#include <limits>
#include <thread>

namespace kv::test {
namespace {

struct Frame {
    HRESULT result = S_OK;
    ULONG width = 9;
    ULONG height = 9;
    std::vector<std::uint8_t> bytes;

    /// A letter for the colour of a place in parts of the width and height: r, g, b, w, k for black, - for nothing.
    char At(double x, double y) const
    {
        const auto column = static_cast<std::size_t>(x * width);
        const auto row = static_cast<std::size_t>(y * height);
        const auto* pixel = bytes.data() + (row * width + column) * 4;
        const auto high = [&](int channel) { return pixel[channel] > 128; };
        if (!high(3)) return '-';
        const int lit = (high(2) ? 4 : 0) + (high(1) ? 2 : 0) + (high(0) ? 1 : 0);
        return "kbg?r??w"[lit];
    }
};

Frame FrameOf(const ComPtr<IZXEProductionData>& production, double seconds, ULONG width = 64, ULONG height = 48)
{
    Frame frame;
    ULONG stride = 9;
    SafeArray pixels;
    frame.result = Query<IZXEProductionFrames>(production)
                       ->GetFrame(seconds, width, height, &frame.width, &frame.height, &stride, pixels.Put());
    EXPECT_EQ(frame.width * 4, stride);
    EXPECT_EQ(SUCCEEDED(frame.result), pixels.Get() != nullptr);
    if (pixels.Get()) {
        const auto* bytes = static_cast<const std::uint8_t*>(pixels.Get()->pvData);
        frame.bytes.assign(bytes, bytes + pixels.Get()->rgsabound[0].cElements);
        EXPECT_EQ(frame.height * stride, frame.bytes.size());
    }
    return frame;
}

/// Stills of one colour, 4 by 3, a mask of the left half, and a second of green and one of blue.
const ClipFolder& Colours()
{
    static const ClipFolder clips;
    [[maybe_unused]] static const bool made = [] {
        for (const char* colour : {"red", "lime", "blue", "white"}) {
            clips.Make(std::string(colour) + ".png",
                       std::string("-f lavfi -i color=") + colour + ":size=64x48 -frames:v 1 -update 1");
        }
        clips.Make("left.png", "-f lavfi -i color=black:size=64x48,drawbox=w=32:h=48:color=white:t=fill -frames:v 1 "
                               "-update 1");
        clips.Make("wide.png", "-f lavfi -i color=red:size=128x48 -frames:v 1 -update 1");
        clips.Make("blink.mp4", "-f lavfi -i color=lime:size=64x48:rate=25:duration=1 "
                                "-f lavfi -i color=blue:size=64x48:rate=25:duration=1 "
                                "-filter_complex concat=n=2:v=1 -c:v mpeg4 -q:v 1");
        return true;
    }();
    return clips;
}

class FramesTest : public StoryboardTest {
protected:
    static std::string Key(const char* channel, const std::string& value)
    {
        return std::string("<") + channel + "><StartOffsetElements><KeyFrame><Time>0</Time>" + value +
               "</KeyFrame></StartOffsetElements></" + channel + ">";
    }
    static std::string Scaled(const char* size)
    {
        return Key("Scaling", std::string("<Vector><x>") + size + "</x><y>" + size + "</y><z>1</z></Vector>");
    }

    ComPtr<IUnknown> Overlay(LONG layer, const char* colour, const std::string& document = "", double start = 0.0,
                             double end = 0.0)
    {
        ComPtr<IUnknown> effect;
        EXPECT_EQ(S_OK, edit->AddProductionEffect(layer, ZXE_EFFECT_OVERLAY, Document(document).Get(),
                                                  Colours().File(colour).Get(), 0, start, effect.Put()));
        EXPECT_EQ(S_OK, Call(effect, &ISubObject::put_EndOffset, end));
        return effect;
    }

    char Middle(double seconds = 0.0) { return FrameOf(production, seconds).At(0.5, 0.5); }
};

TEST_F(FramesTest, ShowPanelsInTurn)
{
    EXPECT_EQ('-', Middle());
    AddPanel(Colours().File("red.png"), 0.0, 2.0);
    AddPanel(Colours().File("blink.mp4"));
    AddPanel(Bstr(u"/no/such/picture.png"), 0.0, 1.0);
    AddPanel(Colours().File("white.png"), 1.0, 2.0);
    // A moniker is no file.
    AddPanel(Bstr(u"title:3"), 0.0, 1.0);
    const std::pair<double, char> times[] = {{0.0, 'r'}, {1.97, 'r'}, {2.0, 'g'}, {2.98, 'g'}, {3.0, 'b'},  {3.98, 'b'},
                                             {4.5, 'k'}, {5.5, 'w'},  {6.5, 'k'}, {99.0, 'k'}, {1e300, 'k'}};
    for (const auto& [seconds, shown] : times)
        EXPECT_EQ(shown, Middle(seconds)) << seconds;
}

TEST_F(FramesTest, FitPanels)
{
    const auto panel = AddPanel(Colours().File("wide.png"));
    // A single panel without a length shows at any time.
    EXPECT_EQ('r', FrameOf(production, 7.0).At(0.5, 0.05));
    ASSERT_EQ(S_OK, production->put_UseSourceAspectRatio(VARIANT_TRUE));
    EXPECT_EQ('k', FrameOf(production, 0.0).At(0.5, 0.05));
    EXPECT_EQ('r', FrameOf(production, 0.0).At(0.05, 0.5));
    ASSERT_EQ(S_OK, Call(panel, &ISourceFile::put_Rotation, -91));
    EXPECT_EQ('r', FrameOf(production, 0.0).At(0.5, 0.05));
    EXPECT_EQ('k', FrameOf(production, 0.0).At(0.05, 0.5));
    const auto zoom = XmlElement::Parse("<ZXFPanZoom>" + Scaled("2") + "</ZXFPanZoom>");
    ASSERT_EQ(S_OK, Call(panel, &ISourceFile::SetPanZoom, zoom.Get()));
    EXPECT_EQ('r', FrameOf(production, 0.0).At(0.3, 0.5));
    // The sides that are not given follow from the production.
    ASSERT_EQ(S_OK, Call(production, &IProductionInfo::put_AspectRatio, 2.0));
    const Frame wide = FrameOf(production, 0.0, 0, 48);
    EXPECT_EQ(96U, wide.width);
    EXPECT_EQ(48U, FrameOf(production, 0.0, 96, 0).height);
}

TEST_F(FramesTest, ShowOneEffectOfEachLayer)
{
    AddPanel(Colours().File("red.png"), 0.0, 10.0);
    constexpr double kFrame = 1.0 / 29.97;
    Overlay(1, "lime.png", "", 0.5 * kFrame, 2.5 * kFrame);
    Overlay(1, "blue.png", "", 2.5 * kFrame);
    const auto top = Overlay(2, "white.png", Scaled("0.5"), 5.0, 6.0);
    // Of another type, and nothing but in the way.
    AddEffect(3, 7);
    const std::pair<double, char> times[] = {{0.0, 'g'},          {1.2 * kFrame, 'g'}, {2.2 * kFrame, 'b'}, {4.9, 'b'},
                                             {5.0 + kFrame, 'w'}, {6.1, 'b'},          {99.0, 'b'}};
    for (const auto& [seconds, shown] : times)
        EXPECT_EQ(shown, Middle(seconds)) << seconds;
    const Frame frame = FrameOf(production, 5.5);
    EXPECT_EQ('b', frame.At(0.2, 0.5));
    // What is edited, undone and deleted shows at once.
    InBlock([&] {
        EXPECT_EQ(S_OK, Call(top, &IEffectInfo::SetMaskFile, Colours().File("left.png").Get(), ZXE_MASK_ALPHA));
    });
    EXPECT_EQ('w', FrameOf(production, 5.5).At(0.4, 0.5));
    EXPECT_EQ('b', FrameOf(production, 5.5).At(0.6, 0.5));
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ('w', FrameOf(production, 5.5).At(0.6, 0.5));
    ASSERT_EQ(S_OK, Call(top, &IEffectInfo::SetParameterDocument, Document(Scaled("0.1")).Get(), VARIANT_TRUE));
    EXPECT_EQ('b', FrameOf(production, 5.5).At(0.4, 0.5));
    ASSERT_EQ(S_OK, edit->DeleteProductionEffect(2, Get(top, &IEffectInfo::get_EffectID)));
    EXPECT_EQ('b', Middle(5.5));
}

TEST_F(FramesTest, ShowTextsAndCrops)
{
    const std::string block =
        "<html><body><p><font fontHeight='480' color='Lime'>\xe2\x96\x88</font></p></body></html>";
    AddEffect(1, ZXE_EFFECT_TEXT, Document(block));
    EXPECT_EQ('g', Middle());
    EXPECT_EQ('-', FrameOf(production, 0.0).At(0.02, 0.5));
    // A picture is no text, and a text is no picture.
    AddEffect(2, ZXE_EFFECT_OVERLAY, Document(block));
    AddEffect(2, ZXE_EFFECT_TEXT, Document(Scaled("0.1")));
    EXPECT_EQ('g', Middle());
    const auto overlay = Overlay(4, "left.png");
    EXPECT_EQ('w', FrameOf(production, 0.0).At(0.3, 0.5));
    EXPECT_EQ('k', FrameOf(production, 0.0).At(0.7, 0.5));
    const auto crop = XmlElement::Parse("<ZXFPanZoom>" +
                                        Key("Crop", "<fRect><left>0.25</left><top>0.25</top><right>0.45</right>"
                                                    "<bottom>0.45</bottom></fRect>") +
                                        "</ZXFPanZoom>");
    ASSERT_EQ(S_OK, Call(overlay, &ISourceFile::SetPanZoom, crop.Get()));
    EXPECT_EQ('w', FrameOf(production, 0.0).At(0.9, 0.5));
}

TEST_F(FramesTest, AnswerClearlyToBadInput)
{
    AddPanel(Colours().File("red.png"));
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double seconds : {-1.0, kInfinity, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(E_INVALIDARG, FrameOf(production, seconds).result) << seconds;
    for (const auto& [width, height] : {std::pair{0U, 0U}, {16'385U, 1U}, {1U, 16'385U}, {0U, 0xFFFFFFFFU}})
        EXPECT_EQ(E_INVALIDARG, FrameOf(production, 0.0, width, height).result);
    ULONG number = 9;
    EXPECT_EQ(E_POINTER,
              Query<IZXEProductionFrames>(production)->GetFrame(0.0, 1, 1, &number, &number, &number, nullptr));
    EXPECT_EQ(0U, number);
    EXPECT_EQ('r', FrameOf(production, 0.0, 1, 1).At(0.5, 0.5));
    EXPECT_EQ('r', FrameOf(production, 0.0, 1, 16'384).At(0.5, 0.9));
    // A production is seen after its use, too.
    ASSERT_EQ(S_OK, production->Close());
    EXPECT_EQ('r', Middle());
}

TEST_F(FramesTest, AreDrawnWhileOthersEdit)
{
    AddPanel(Colours().File("red.png"), 0.0, 4.0);
    const auto overlay = Overlay(1, "lime.png", Scaled("0.5"));
    const auto text = AddEffect(2, ZXE_EFFECT_TEXT, Document("<html><body><p>Words</p></body></html>"));
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            // Whatever is edited, one of the colours shows.
            while (!done)
                EXPECT_THAT((std::vector{'g', 'b', 'r'}), testing::Contains(FrameOf(production, 1.0).At(0.5, 0.3)));
        });
    }
    constexpr int kEdits = 15;
    for (int i = 0; i < kEdits; ++i) {
        InBlock([&] {
            EXPECT_EQ(S_OK, Call(overlay, &IEffectInfo::SetParameterDocument,
                                 Document(Scaled(i % 2 ? "0.7" : "0.9")).Get(), VARIANT_TRUE));
            EXPECT_EQ(S_OK,
                      Call(overlay, &ISourceFile::put_FileName, Colours().File(i % 2 ? "lime.png" : "blue.png").Get()));
            Overlay(3, "blue.png", Scaled("0.1"));
            EXPECT_EQ(S_OK, edit->DeleteProductionEffect(2, Get(text, &IEffectInfo::get_EffectID)));
        });
        EXPECT_EQ(S_OK, production->Undo());
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ('g', FrameOf(production, 1.0).At(0.5, 0.3));
}

} // namespace
} // namespace kv::test
