#include "support/Script.h"

namespace kv::test {
namespace {

class EncodingParamsTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(S_OK, project->AddTitle(0, title.Put())); }

    std::vector<ReceivedEvent> Events() { return Delivered(*project, *sink); }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title;
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
    for (const auto& [name, value] :
         std::initializer_list<std::pair<const char16_t*, LONG>>{{u"VideoResolution", VideoResolution_720p},
                                                                 {u"VideoResolution", VideoResolution_720p},
                                                                 {u"AspectRatio", AspectRatio_16x9},
                                                                 {u"VideoBitrate", 1},
                                                                 {u"AudioFormat", AudioFormat_DTS},
                                                                 {u"AudioBitrate", 1},
                                                                 {u"WideDisplayMode", WideDisplayMode_Both},
                                                                 {u"VideoFormat", VideoFormat_AVC},
                                                                 {u"VideoFormat", VideoFormat_AVC},
                                                                 {u"VBREncoding", -1},
                                                                 {u"TwoPassEncoding", -1},
                                                                 {u"SubpictureFormat", SubpictureFormat_None},
                                                                 {u"AudioChannels", 6}})
        script.Put(name, Variant(value));
    std::vector<ReceivedEvent> expected;
    for (LONG propId : {100, 101, 102, 103, 104, 105, 106, 106, 107, 108, 110, 111})
        expected.push_back(Event(EVENT_MenuEncodingParamChanged, {0, propId}));
    EXPECT_EQ(expected, Events());
}

TEST_F(EncodingParamsTest, BooleansChangeByTrueAlone)
{
    Events();
    EXPECT_EQ(S_OK, ofProject->put_VBREncoding(1));
    EXPECT_EQ(VARIANT_FALSE, ValueOf(*ofProject.Get(), &IKVEncodingParams::get_VBREncoding));
    EXPECT_TRUE(Events().empty());
    ofProject->put_VBREncoding(VARIANT_TRUE);
    EXPECT_EQ(S_OK, ofProject->put_VBREncoding(1));
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*ofProject.Get(), &IKVEncodingParams::get_VBREncoding))
        << "a change that stores true again";
    EXPECT_EQ(2u, Events().size());
}

TEST_F(EncodingParamsTest, ATitleFollowsTheProjectUntilItLeaves)
{
    const auto encoding = Query<IKVEncodingParams>(title);
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*encoding.Get(), &IKVEncodingParams::get_SyncToProject));
    ofProject->put_VideoBitrate(5'000'000);
    EXPECT_EQ(5'000'000, ValueOf(*encoding.Get(), &IKVEncodingParams::get_VideoBitrate));
    EXPECT_EQ(KV_E_FOLLOWS_PROJECT, encoding->put_VideoBitrate(1));
    EXPECT_EQ(KV_E_FOLLOWS_PROJECT, encoding->put_VideoFormat(VideoFormat_AVC));
    EXPECT_EQ(KV_E_FOLLOWS_PROJECT, encoding->put_TwoPassEncoding(VARIANT_TRUE));
    EXPECT_EQ(S_OK, encoding->put_AspectRatio(AspectRatio_16x9)) << "a title's own";
    EXPECT_EQ(KV_E_CANNOT_FOLLOW_PROJECT, ofProject->put_SyncToProject(VARIANT_TRUE));

    Events();
    EXPECT_EQ(S_OK, encoding->put_SyncToProject(VARIANT_FALSE));
    EXPECT_EQ((std::vector{Event(EVENT_TitleEncodingParamChanged, {ValueOf(*title.Get(), &IKVTitle::get_ID), 109})}),
              Events());
    ofProject->put_VideoBitrate(6'000'000);
    EXPECT_EQ(5'000'000, ValueOf(*encoding.Get(), &IKVEncodingParams::get_VideoBitrate)) << "kept on leaving";
    EXPECT_EQ(AspectRatio_16x9, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio));
    EXPECT_EQ(S_OK, encoding->put_VideoBitrate(1));
    EXPECT_EQ(S_OK, encoding->put_SyncToProject(1)) << "any value but 0 is true";
    EXPECT_EQ(6'000'000, ValueOf(*encoding.Get(), &IKVEncodingParams::get_VideoBitrate));
}

TEST_F(EncodingParamsTest, NewTitlesTakeTheProjectsAspectRatio)
{
    ofProject->put_AspectRatio(AspectRatio_16x9);
    ASSERT_EQ(S_OK, project->AddTitle(0, title.Put()));
    EXPECT_EQ(AspectRatio_16x9, ValueOf(*Query<IKVEncodingParams>(title).Get(), &IKVEncodingParams::get_AspectRatio));
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
