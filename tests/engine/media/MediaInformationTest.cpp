#include "engine/EngineSupport.h"

#include <algorithm>
#include <sys/stat.h>

namespace kv::test {
namespace {

struct Picture {
    HRESULT result = S_OK;
    ULONG width = 0;
    ULONG height = 0;
    double frameRate = 0.0;
};

Picture PictureOf(IZXMediaInformation& media, LONG kind, LONG index)
{
    Picture picture{S_OK, 9, 9, 9.0};
    picture.result = media.GetVideoProperties(kind, index, &picture.width, &picture.height, &picture.frameRate);
    return picture;
}

void ExpectPicture(const Picture& expected, const Picture& found)
{
    EXPECT_EQ(expected.result, found.result);
    EXPECT_EQ(expected.width, found.width);
    EXPECT_EQ(expected.height, found.height);
    EXPECT_NEAR(expected.frameRate, found.frameRate, 0.001);
}

constexpr Picture kNone{ZXE_E_NO_STREAM};

TEST(MediaInformation, TellsSizeRateAndDuration)
{
    const std::tuple<const char*, Picture, Picture, double> cases[]{
        {"pal.mpg", {S_OK, 720, 576, 25.0}, {S_OK, 720, 576, 25.0}, 1.0},
        {"ntsc.mp4", {S_OK, 720, 480, 29.97}, {S_OK, 720, 480, 29.97}, 1.0},
        {"fast.mkv", {S_OK, 640, 360, 50.0}, {S_OK, 640, 360, 50.0}, 1.0},
        {"still.png", kNone, {S_OK, 320, 240, 0.0}, 0.0},
        {"sound.wav", kNone, kNone, 2.0},
        {"cover.m4a", kNone, {S_OK, 320, 240, 0.0}, 2.0}};
    const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    for (const auto& [file, video, picture, duration] : cases) {
        SCOPED_TRACE(file);
        ASSERT_EQ(S_OK, media->Open(Clips().File(file).Get()));
        ExpectPicture(video, PictureOf(*media, ZXM_STREAM_VIDEO, 0));
        ExpectPicture(picture, PictureOf(*media, ZXM_STREAM_PICTURE, 0));
        ExpectPicture(kNone, PictureOf(*media, ZXM_STREAM_PICTURE, 1));
        double seconds = -1.0;
        EXPECT_EQ(S_OK, media->get_Duration(&seconds));
        EXPECT_NEAR(duration, seconds, 0.1);
    }
}

TEST(MediaInformation, UnderstandsNamesOfEveryKind)
{
    const ClipFolder folder;
    const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    // Names that mean a row of pictures, another protocol or options to the reader of media.
    for (const char* name :
         {"image%03d.png", "*.png", "http:clip", "concat:a|b", "-i", "k\xc3\xb6rper \xf0\x9f\x8e\xac.txt", "none"}) {
        SCOPED_TRACE(name);
        std::filesystem::copy_file(Clips().PathOf("still.png"), folder.PathOf(name));
        EXPECT_EQ(S_OK, media->Open(folder.File(name).Get()));
    }
    std::u16string backslashes(Clips().File("pal.mpg").View());
    std::ranges::replace(backslashes, u'/', u'\\');
    EXPECT_EQ(S_OK, media->Open(Bstr(backslashes).Get()));
}

TEST(MediaInformation, RefusesWhatIsNoMedia)
{
    const ClipFolder folder;
    const std::string clip = Clips().PathOf("pal.mpg");
    const std::string movie = Clips().Read("ntsc.mp4");
    folder.Write("empty.mp4", "");
    folder.Write("note.txt", "Just some words.\n");
    folder.Write("note.mpg", std::string(100'000, 'x'));
    folder.Write("headless.mp4", movie.substr(0, movie.size() / 2));
    folder.Write("subtitles.srt", "1\n00:00:01,000 --> 00:00:02,000\nHello\n");
    folder.Write("list.ffconcat", "ffconcat version 1.0\nfile '" + clip + "'\n");
    folder.Write("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + clip + "\n#EXT-X-ENDLIST\n");
    folder.Write("list.mpd", "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" "
                             "profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\" type=\"static\" "
                             "mediaPresentationDuration=\"PT1S\"><Period><AdaptationSet mimeType=\"video/mp4\">"
                             "<Representation id=\"0\" bandwidth=\"1000\"><BaseURL>" +
                                 Clips().PathOf("ntsc.mp4") +
                                 "</BaseURL></Representation></AdaptationSet></Period></MPD>");
    std::filesystem::create_directory(folder.PathOf("folder.mp4"));
    ASSERT_EQ(0, mkfifo(folder.PathOf("pipe").c_str(), 0600));
    const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    for (const char* name : {"empty.mp4", "note.txt", "note.mpg", "headless.mp4", "subtitles.srt", "list.ffconcat",
                             "list.m3u8", "list.mpd", "folder.mp4", "pipe", "missing.mp4"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(ZXE_E_NOT_MEDIA, media->Open(folder.File(name).Get()));
    }
    for (const std::u16string_view name : {u"/dev/zero", u"http://127.0.0.1/clip.mp4", u"moniker:clip", u"\xd800"}) {
        EXPECT_EQ(ZXE_E_NOT_MEDIA, media->Open(Bstr(name).Get()));
    }
    EXPECT_EQ(ZXE_E_NOT_MEDIA, media->Open(Bstr(std::u16string(Clips().File("pal.mpg").View()) + u'\0' + u"x").Get()));
    EXPECT_EQ(E_INVALIDARG, media->Open(nullptr));
}

TEST(MediaInformation, SurvivesDamagedFiles)
{
    const ClipFolder folder;
    const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    for (const char* name : {"pal.mpg", "ntsc.mp4", "fast.mkv", "still.png", "cover.m4a"}) {
        const std::string whole = Clips().Read(name);
        for (const std::size_t stride : {7U, 61U, 1009U}) {
            std::string damaged = whole;
            for (std::size_t i = stride; i < damaged.size(); i += stride)
                damaged[i] = static_cast<char>(damaged[i] ^ (i * 31 + 1));
            folder.Write("damaged", damaged);
            const HRESULT opened = media->Open(folder.File("damaged").Get());
            EXPECT_TRUE(opened == S_OK || opened == ZXE_E_NOT_MEDIA) << name;
        }
    }
    // What is there of a programme stream is enough.
    folder.Write("cut.mpg", Clips().Read("pal.mpg").substr(0, 60'000));
    ASSERT_EQ(S_OK, media->Open(folder.File("cut.mpg").Get()));
    ExpectPicture({S_OK, 720, 576, 25.0}, PictureOf(*media, ZXM_STREAM_VIDEO, 0));
}

TEST(MediaInformation, DoesNotDecodePicturesOfAnySize)
{
    // The header claims 16000 x 16000 pixels: 768 MB when decoded.
    std::string picture = Clips().Read("still.png");
    for (const std::size_t field : {16U, 20U})
        picture.replace(field, 4, std::string("\0\0\x3e\x80", 4));
    const ClipFolder folder;
    folder.Write("huge.png", picture);
    const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    EXPECT_EQ(ZXE_E_NOT_MEDIA, media->Open(folder.File("huge.png").Get()));
}

TEST(MediaInformation, ForgetsWhatWasOpenWhenItFails)
{
    const auto media = CreateEngine<IZXMediaInformation>(CLSID_ZXMediaInformation);
    const auto expectNothingOpen = [&] {
        ExpectPicture({ZXE_E_NOT_OPEN}, PictureOf(*media, ZXM_STREAM_VIDEO, 0));
        double seconds = 9.0;
        EXPECT_EQ(ZXE_E_NOT_OPEN, media->get_Duration(&seconds));
        EXPECT_EQ(0.0, seconds);
    };
    expectNothingOpen();
    ASSERT_EQ(S_OK, media->Open(Clips().File("pal.mpg").Get()));
    for (const auto& [kind, index] : {std::pair{2, 0}, {-1, 0}, {1, 1}, {1, -1}, {0, 1 << 30}}) {
        ExpectPicture(kNone, PictureOf(*media, kind, index));
    }
    ULONG width = 9;
    double rate = 9.0;
    EXPECT_EQ(E_POINTER, media->GetVideoProperties(1, 0, &width, nullptr, &rate));
    EXPECT_EQ(0U, width);
    EXPECT_EQ(0.0, rate);
    EXPECT_EQ(ZXE_E_NOT_MEDIA, media->Open(Bstr(u"/no/such/file").Get()));
    expectNothingOpen();
}

} // namespace
} // namespace kv::test
