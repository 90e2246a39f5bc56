#include "support/Contents.h"
#include "support/Script.h"

namespace kv::test {
namespace {

class EncodingParamsTest : public testing::Test {
protected:
    std::vector<ReceivedEvent> Events() { return Delivered(*project, *sink); }
    static LONG Bitrate(const ComPtr<IKVEncodingParams>& of)
    {
        return ValueOf(*of.Get(), &IKVEncodingParams::get_VideoBitrate);
    }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title = AddTitle(*project.Get());
    ComPtr<IKVEncodingParams> ofProject = Query<IKVEncodingParams>(project);
    ComPtr<RecordingSink> sink = Make<RecordingSink>();
    Connection connection{*project, *sink};
};

TEST(EncodingParamsObjectTest, StartsWithItsDefaultsOnItsOwn)
{
    const auto own = Create<IKVEncodingParams>(CLSID_KVEncodingParams);
    EXPECT_EQ("VideoResolution=1 AspectRatio=1 VideoFormat=0 VideoBitrate=8000000 AudioFormat=3 AudioBitrate=224000 "
              "WideDisplayMode=1 VBREncoding=0 TwoPassEncoding=0 SyncToProject=0 SubpictureFormat=1 AudioChannels=2 ",
              ScriptHost(own.Get()).Properties<IKVEncodingParams>());
    EXPECT_EQ(KV_E_CANNOT_FOLLOW_PROJECT, own->put_SyncToProject(VARIANT_TRUE));
    EXPECT_EQ(S_OK, own->put_VideoBitrate(-1));
    EXPECT_EQ(-1, ValueOf(*own.Get(), &IKVEncodingParams::get_VideoBitrate)) << "any value is stored";
    EXPECT_EQ(E_POINTER, own->get_AspectRatio(nullptr));
    EXPECT_EQ(E_POINTER, own->get_VBREncoding(nullptr));
}

TEST_F(EncodingParamsTest, ChangesAreToldWithTheirProperty)
{
    Events();
    ScriptHost script(ofProject.Get());
    std::vector<ReceivedEvent> expected;
    // Told although it is the same, but for the resolution.
    constexpr std::tuple<const char16_t*, LONG, LONG> kChanges[]{{u"VideoResolution", VideoResolution_720p, 100},
                                                                 {u"VideoResolution", VideoResolution_720p, 0},
                                                                 {u"AspectRatio", AspectRatio_16x9, 101},
                                                                 {u"VideoBitrate", 1, 102},
                                                                 {u"AudioFormat", AudioFormat_DTS, 103},
                                                                 {u"AudioBitrate", 1, 104},
                                                                 {u"WideDisplayMode", WideDisplayMode_Both, 105},
                                                                 {u"VideoFormat", VideoFormat_AVC, 106},
                                                                 {u"VideoFormat", VideoFormat_AVC, 106},
                                                                 {u"VBREncoding", -1, 107},
                                                                 {u"TwoPassEncoding", -1, 108},
                                                                 {u"SubpictureFormat", SubpictureFormat_None, 110},
                                                                 {u"AudioChannels", 6, 111}};
    for (const auto& [name, value, propId] : kChanges) {
        script.Put(name, Variant(value));
        if (propId != 0) expected.push_back(Event(EVENT_MenuEncodingParamChanged, {0, propId}));
    }
    EXPECT_EQ(expected, Events());
}

TEST_F(EncodingParamsTest, BooleansChangeByTrueAlone)
{
    Events();
    for (const VARIANT_BOOL before : {VARIANT_FALSE, VARIANT_TRUE}) {
        if (before) ofProject->put_VBREncoding(before);
        EXPECT_EQ(S_OK, ofProject->put_VBREncoding(1));
        EXPECT_EQ(before, ValueOf(*ofProject.Get(), &IKVEncodingParams::get_VBREncoding));
        EXPECT_EQ(before ? 2u : 0u, Events().size()) << "a change that stores true again";
    }
}

TEST_F(EncodingParamsTest, ATitleFollowsTheProjectUntilItLeaves)
{
    const auto encoding = Query<IKVEncodingParams>(title);
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*encoding.Get(), &IKVEncodingParams::get_SyncToProject));
    ofProject->put_VideoBitrate(5'000'000);
    EXPECT_EQ(5'000'000, Bitrate(encoding));
    EXPECT_EQ(KV_E_FOLLOWS_PROJECT, encoding->put_VideoBitrate(1));
    EXPECT_EQ(KV_E_FOLLOWS_PROJECT, encoding->put_VideoFormat(VideoFormat_AVC));
    EXPECT_EQ(KV_E_FOLLOWS_PROJECT, encoding->put_TwoPassEncoding(VARIANT_TRUE));
    EXPECT_EQ(S_OK, encoding->put_AspectRatio(AspectRatio_16x9)) << "a title's own";
    EXPECT_EQ(KV_E_CANNOT_FOLLOW_PROJECT, ofProject->put_SyncToProject(VARIANT_TRUE));

    Events();
    EXPECT_EQ(S_OK, encoding->put_SyncToProject(VARIANT_FALSE));
    EXPECT_EQ((std::vector{Event(EVENT_TitleEncodingParamChanged, {IdOf(title), 109})}), Events());
    ofProject->put_VideoBitrate(6'000'000);
    EXPECT_EQ(5'000'000, Bitrate(encoding)) << "kept on leaving";
    EXPECT_EQ(AspectRatio_16x9, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio));
    EXPECT_EQ(S_OK, encoding->put_VideoBitrate(1));
    EXPECT_EQ(S_OK, encoding->put_SyncToProject(1)) << "any value but 0 is true";
    EXPECT_EQ(6'000'000, Bitrate(encoding));

    ofProject->put_AspectRatio(AspectRatio_16x9);
    const auto next = Query<IKVEncodingParams>(AddTitle(*project.Get()));
    EXPECT_EQ(AspectRatio_16x9, ValueOf(*next.Get(), &IKVEncodingParams::get_AspectRatio));
}

TEST_F(EncodingParamsTest, ReadsWhatOtherVersionsWrote)
{
    struct Case {
        std::u16string_view attributes;
        VideoFormat format;
        VideoResolution resolution;
    };
    for (const Case& c : {Case{u"HDVideoFormat='1 (AVC/H.264)'", VideoFormat_AVC, VideoResolution_Full_D1},
                          {u"videoFormat='3 (MPEG-1)' HDVideoFormat='1'", VideoFormat_MPEG1, VideoResolution_Full_D1},
                          {u"videoResolution='17 (unknown)'", VideoFormat_MPEG2, VideoResolution_2160p_3840},
                          {u"syncToProject='1' videoFormat='2'", VideoFormat_VC1, VideoResolution_Full_D1}}) {
        const auto document =
            ParseXml(std::u16string(u"<Project><Encoding ").append(c.attributes).append(u"/></Project>"));
        ASSERT_EQ(S_OK, project->loadXML(document.Get()));
        EXPECT_EQ(c.format, ValueOf(*ofProject.Get(), &IKVEncodingParams::get_VideoFormat)) << ToUtf8(c.attributes);
        EXPECT_EQ(c.resolution, ValueOf(*ofProject.Get(), &IKVEncodingParams::get_VideoResolution));
        EXPECT_EQ(VARIANT_FALSE, ValueOf(*ofProject.Get(), &IKVEncodingParams::get_SyncToProject))
            << "the project's own";
        EXPECT_EQ(S_OK, ofProject->put_VideoBitrate(1));
    }
    ofProject->put_VideoResolution(VideoResolution_2160p_3840);
    EXPECT_EQ(u"17 (unknown)", AttributeText(*SaveToDocument(*project.Get()).Get(), u"//Encoding", u"videoResolution"));
}

} // namespace
} // namespace kv::test
