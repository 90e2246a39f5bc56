#include "engine/EngineSupport.h"
#include "engine/Frame.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <utility>

namespace kv::test {
namespace {

Frame FrameOf(IZXMediaInformation* media, double seconds, ULONG width = 0, ULONG height = 0)
{
    return FrameBy<IZXMediaFrames>(media, seconds, width, height);
}

ComPtr<IZXMediaInformation> OpenMedia(const ClipFolder& folder, const char* name)
{
    auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    EXPECT_EQ(S_OK, media->Open(folder.File(name).Get())) << name;
    return media;
}

/// Clips whose frames, 25 a second, are grey above, brighter by 4 steps of 219 than the one before, and noise below, so
/// that they have a usual size; and pictures of four colours.
const ClipFolder& FrameClips()
{
    static const ClipFolder clips;
    [[maybe_unused]] static const bool made = [] {
        const std::string greys = "-f lavfi -i \"color=black:size=128x96:rate=25:duration=2,"
                                  "geq=lum='if(lt(Y,48),16+4*N,50+random(1)*150)':cb=128:cr=128\" -q:v 1 ";
        clips.Make("greys.mp4", greys + "-c:v mpeg4 -bf 2 -g 12");
        clips.Make("greys.mpg", greys + "-c:v mpeg2video -bf 2 -g 12 -flags +cgop -sc_threshold 1000000000");
        clips.Make("greys.mkv", greys + "-c:v ffv1");
        clips.Make("greys.avi", greys + "-c:v mjpeg");
        clips.Make("wide.mp4", greys + "-c:v mpeg4 -aspect 16:9 -frames:v 1");
        const std::string quarters =
            "-f lavfi -i \"color=red:size=64x32,drawbox=x=32:w=32:h=16:color=lime:t=fill,"
            "drawbox=y=16:w=32:h=16:color=blue:t=fill,drawbox=x=32:y=16:w=32:h=16:color=white:t=fill\" -frames:v 1 ";
        clips.Make("quarters.png", quarters + "-update 1");
        clips.Make("quarters.jpg", quarters + "-q:v 1 -update 1");
        clips.Make("quarters.mp4", quarters + "-c:v mpeg4 -q:v 1");
        for (const char* angle : {"90", "180", "270"}) {
            clips.Make(std::string("turned") + angle + ".mp4",
                       std::string("-i quarters.mp4 -c copy -metadata:s:v rotate=") + angle);
        }
        // White and half seen, beside a green that is not seen at all.
        clips.Make("alpha.png", "-f lavfi -i \"color=white:size=64x32,format=rgba,geq="
                                "r='if(lt(X,32),255,0)':g=255:b='if(lt(X,32),255,0)':a='if(lt(X,32),128,0)'\" "
                                "-frames:v 1 -update 1");
        return true;
    }();
    return clips;
}

MATCHER_P(IsGreyOfFrame, number, "")
{
    if (arg.result != S_OK) return false;
    *result_listener << "grey of frame " << arg.At(0.5, 0.25)[0] * 219.0 / 255 / 4;
    return std::abs(arg.At(0.5, 0.25)[0] - number * 4 * 255 / 219) <= 3;
}

TEST(MediaFrames, ShowsTheFrameOfATime)
{
    const std::pair<double, int> times[] = {{0.0, 0},   {0.02, 0},  {0.039, 0}, {0.04, 1}, {0.5, 12},
                                            {0.52, 13}, {1.0, 25},  {1.97, 49}, {0.2, 5},  {0.0, 0},
                                            {1.5, 37},  {99.0, 49}, {1e300, 49}};
    for (const char* name : {"greys.mp4", "greys.mpg", "greys.mkv", "greys.avi"}) {
        const auto media = OpenMedia(FrameClips(), name);
        for (const auto& [seconds, number] : times)
            EXPECT_THAT(FrameOf(media.Get(), seconds), IsGreyOfFrame(number)) << name << " " << seconds;
        // In steps, as one plays.
        for (int number = 0; number < 50; ++number)
            EXPECT_THAT(FrameOf(media.Get(), number / 25.0), IsGreyOfFrame(number)) << name;
    }
}

TEST(MediaFrames, ScalesAndTurns)
{
    const std::tuple<const char*, double, const char*> cases[] = {{"quarters.png", 2.0, "rgbw"},
                                                                  {"quarters.mp4", 2.0, "rgbw"},
                                                                  {"turned90.mp4", 0.5, "gwrb"},
                                                                  {"turned180.mp4", 2.0, "wbgr"},
                                                                  {"turned270.mp4", 0.5, "brwg"}};
    for (const auto& [file, ratio, corners] : cases) {
        SCOPED_TRACE(file);
        const auto media = OpenMedia(FrameClips(), file);
        double aspect = 0.0;
        EXPECT_EQ(S_OK, Query<IZXMediaFrames>(media)->get_AspectRatio(&aspect));
        EXPECT_NEAR(ratio, aspect, 1e-9);
        ULONG width = 0;
        ULONG height = 0;
        EXPECT_EQ(S_OK, media->GetVideoProperties(ZXM_STREAM_PICTURE, 0, &width, &height, &aspect));
        EXPECT_NEAR(ratio, static_cast<double>(width) / height, 1e-9);
        const auto wide = static_cast<ULONG>(16 * ratio);
        // Asked for, and given.
        for (const auto& [w, h, columns, rows] : {std::tuple{0U, 0U, width, height},
                                                  {2 * wide, 0U, 2 * wide, 32U},
                                                  {0U, 16U, wide, 16U},
                                                  {50U, 70U, 50U, 70U}}) {
            const Frame frame = FrameOf(media.Get(), 0.0, w, h);
            EXPECT_EQ(std::tuple(columns, rows), std::tuple(frame.width, frame.height));
            EXPECT_EQ(corners, frame.Corners());
        }
    }
    EXPECT_THAT(FrameOf(OpenMedia(FrameClips(), "quarters.mp4").Get(), 0.0).At(0.2, 0.2),
                testing::Pointwise(testing::DoubleNear(6), {0, 0, 255, 255}));
    EXPECT_EQ(96U, FrameOf(OpenMedia(FrameClips(), "wide.mp4").Get(), 0.0, 0, 54).width);
    const Frame small = FrameOf(OpenMedia(FrameClips(), "alpha.png").Get(), 7.0, 9, 5);
    EXPECT_THAT(small.At(0.1, 0.5), testing::Pointwise(testing::DoubleNear(1), {128, 128, 128, 128}));
    EXPECT_THAT(small.At(0.9, 0.5), testing::ElementsAre(0, 0, 0, 0));
    // No green shines through at the edge.
    const std::vector<int> edge = small.At(0.5, 0.5);
    EXPECT_LE(edge[1], edge[3]);
    EXPECT_NEAR(edge[0], edge[1], 1);
}

/// A picture that tells how it is shown, by a tag among others.
std::string Exif(char orientation, bool little)
{
    const auto number = [=](int bytes, int value) {
        std::string text(static_cast<std::size_t>(bytes), '\0');
        text[static_cast<std::size_t>(little ? 0 : bytes - 1)] = static_cast<char>(value);
        return text;
    };
    return (little ? "II" : "MM") + number(2, 42) + number(4, 8) + number(2, 2) + number(2, 1) + number(2, 3) +
           number(4, 1) + number(4, 9) + std::string(little ? "\x12\x01" : "\x01\x12", 2) + number(2, 3) +
           number(4, 1) + number(2, orientation) + number(2, 0);
}

std::string JpegWith(const std::string& exif)
{
    const std::string head = {'\xFF', '\xE1', '\0', static_cast<char>(exif.size() + 8), 'E', 'x', 'i', 'f', '\0', '\0'};
    return FrameClips().Read("quarters.jpg").insert(2, head + exif);
}

std::string PngWith(const std::string& exif)
{
    constexpr std::size_t kBehindHeader = 33;
    const std::string chunk = std::string(3, '\0') + static_cast<char>(exif.size()) + "eXIf" + exif + "sums";
    return FrameClips().Read("quarters.png").insert(kBehindHeader, chunk);
}

TEST(MediaFrames, TurnsPicturesAsTheyWereTaken)
{
    // The corners, from the top left in rows, by the value of the tag.
    const char* const corners[] = {"rgbw", "rgbw", "grwb", "wbgr", "bwrg", "rbgw", "brwg", "wgbr", "gwrb", "rgbw"};
    const ClipFolder folder;
    for (char orientation = 0; orientation < 10; ++orientation) {
        for (const bool little : {true, false}) {
            const std::string exif = Exif(orientation, little);
            folder.Write("jpeg", JpegWith(exif));
            folder.Write("png", PngWith(exif));
            for (const char* name : {"jpeg", "png"}) {
                const Frame frame = FrameOf(OpenMedia(folder, name).Get(), 0.0);
                EXPECT_EQ(corners[static_cast<int>(orientation)], frame.Corners()) << name;
                EXPECT_EQ(orientation >= 5 && orientation <= 8, frame.width < frame.height) << name;
            }
        }
    }
    // Cut off anywhere, the tag counts or it does not.
    const std::string exif = Exif(6, true);
    for (std::size_t length = 0; length < exif.size(); ++length) {
        folder.Write("cut", JpegWith(exif.substr(0, length)));
        EXPECT_EQ(S_OK, FrameOf(OpenMedia(folder, "cut").Get(), 0.0).result) << length;
    }
}

TEST(MediaFrames, AnswersClearlyWhereThereIsNoFrame)
{
    const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    double aspect = 9.0;
    EXPECT_EQ(ZXE_E_NOT_OPEN, Query<IZXMediaFrames>(media)->get_AspectRatio(&aspect));
    EXPECT_EQ(0.0, aspect);
    EXPECT_EQ(ZXE_E_NOT_OPEN, FrameOf(media.Get(), 0.0).result);
    ASSERT_EQ(S_OK, media->Open(Clips().File("sound.wav").Get()));
    EXPECT_EQ(ZXE_E_NO_STREAM, FrameOf(media.Get(), 0.0).result);
    EXPECT_EQ(ZXE_E_NO_STREAM, Query<IZXMediaFrames>(media)->get_AspectRatio(&aspect));
    ASSERT_EQ(S_OK, media->Open(FrameClips().File("greys.mp4").Get()));
    for (const double seconds : {-0.1, std::nan(""), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(E_INVALIDARG, FrameOf(media.Get(), seconds).result);
    EXPECT_EQ(E_INVALIDARG, FrameOf(media.Get(), 0.0, 16'385, 1).result);
    EXPECT_EQ(E_INVALIDARG, FrameOf(media.Get(), 0.0, 1, 0xFFFFFFFF).result);
    EXPECT_THAT(FrameOf(media.Get(), 1.0), IsGreyOfFrame(25));
}

TEST(MediaFrames, ReadsWhatIsThereOfDamagedFiles)
{
    const ClipFolder folder;
    // Cut off in the middle: the last frame that is whole stays.
    for (const char* name : {"greys.mpg", "greys.mkv"}) {
        const std::string whole = FrameClips().Read(name);
        folder.Write(name, whole.substr(0, whole.size() / 2));
        const auto media = OpenMedia(folder, name);
        EXPECT_THAT(FrameOf(media.Get(), 0.2), IsGreyOfFrame(5)) << name;
        const Frame last = FrameOf(media.Get(), 1.9);
        ASSERT_EQ(S_OK, last.result) << name;
        EXPECT_LT(last.At(0.5, 0.25)[0], 45 * 4 * 255 / 219) << name;
    }
    for (const char* name : {"greys.mp4", "greys.mpg", "greys.mkv", "alpha.png", "turned90.mp4"}) {
        for (const std::size_t stride : {61U, 509U, 1009U}) {
            std::string damaged = FrameClips().Read(name);
            for (std::size_t i = stride; i < damaged.size(); i += stride)
                damaged[i] = static_cast<char>(damaged[i] ^ (i * 31 + 1));
            folder.Write("damaged", damaged);
            const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
            if (media->Open(folder.File("damaged").Get()) != S_OK) continue;
            for (const double seconds : {0.0, 1.0, 9.0}) {
                const HRESULT result = FrameOf(media.Get(), seconds, 32, 0).result;
                EXPECT_TRUE(result == S_OK || result == ZXE_E_NO_FRAME || result == ZXE_E_NO_STREAM) << name;
            }
        }
    }
    // What was opened is read on when its name is gone, and when nothing is left behind the name.
    for (const bool emptied : {false, true}) {
        folder.Write("gone.mkv", FrameClips().Read("greys.mkv"));
        const auto gone = OpenMedia(folder, "gone.mkv");
        emptied ? folder.Write("gone.mkv", "") : void(std::filesystem::remove(folder.PathOf("gone.mkv")));
        const HRESULT result = FrameOf(gone.Get(), 1.9).result;
        EXPECT_TRUE(result == S_OK || (emptied && result == ZXE_E_NO_FRAME));
    }
}

} // namespace
} // namespace kv::test
