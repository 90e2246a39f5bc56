#include "KVProjectData/persistence/ValueTexts.h"
#include "support/Host.h"

namespace kv::test {
namespace {

class SavingTest : public testing::Test {
protected:
    std::u16string Saved(std::u16string_view path, std::u16string_view attribute)
    {
        return AttributeText(*SaveToDocument(*project.Get()).Get(), path, attribute);
    }

    ComPtr<IKVProjectData> project = NewProject();
};

TEST_F(SavingTest, WritesAnEmptyProjectWithItsDefaults)
{
    const auto document = SaveToDocument(*project.Get());
    ComPtr<IXMLDOMElement> root;
    document->get_documentElement(root.Put());
    EXPECT_EQ(uR"x(<Root><Project DiscSize="4 (DVD_47)" ID="0" TVStandard="1 (NTSC)" ThemeSource="" Version="900")x"
              uR"x( discFormat="1 (DVD_Video)" discVideoType="1 (Normal_2D)" doCompression="1" fitToDisc="0" label="")x"
              uR"x( menuless="0" name="" onDiscProject="0" onDiscSizeKB="0" options="0 ()" remainingCaptures="-1">)x"
              uR"x(<Titles NumItems="0"/><Menus NumItems="0"/><DataFiles NumItems="0"/><Commands/>)x"
              uR"x(<Encoding VBREncoding="0" aspectRatio="1 (4x3)" audioBitrate="224000" audioChannels="2")x"
              uR"x( audioFormat="3 (AC-3)" subpictureFormat="1 (RLE)" syncToProject="0" twoPassEncoding="0")x"
              uR"x( videoBitrate="8000000" videoFormat="0 (MPEG-2)" videoResolution="1 (Full_D1)")x"
              uR"x( wideDisplayMode="1 (Letterbox)"/></Project></Root>)x",
              XmlOf(*root.Get()));
}

TEST_F(SavingTest, WritesNumbersWithTheirNames)
{
    constexpr std::u16string_view kProject = u"/Root/Project";
    struct Case {
        LONG value;
        std::u16string_view text;
    };
    for (const Case& c : {Case{0, u"0 ()"},
                          {11, u"11 (AVCHD)"},
                          {12, u"12 (unknown)"},
                          {-1, u"-1 (unknown)"},
                          {3, u"3 (DVD_dashVR)"}}) {
        project->put_DiscFormat(static_cast<DiscFormat>(c.value));
        EXPECT_EQ(c.text, Saved(kProject, u"discFormat"));
    }
    for (const Case& c : {Case{9, u"9 (BluRay_50)"}, {10, u"10 (unknown)"}}) {
        project->put_DiscSize(static_cast<DiscSizeEnum>(c.value));
        EXPECT_EQ(c.text, Saved(kProject, u"DiscSize"));
    }
    for (const Case& c : {Case{5, u"5 (Archive_TitleImageSources|Archive_MenuSources)"},
                          {0x41, u"65 (Archive_TitleImageSources|Cmd_PlayRemainingTitles)"},
                          {0x80, u"128 ()"},
                          {-1, u"4294967295 (Archive_TitleImageSources|Archive_TitleVideoSources|Archive_MenuSources|"
                               u"Audio_NormalizeLevels|Video_ProgressiveOutput|Editor_BtnFreeResizing|"
                               u"Cmd_PlayRemainingTitles)"}}) {
        project->put_Options(static_cast<ULONG>(c.value));
        EXPECT_EQ(c.text, Saved(kProject, u"options"));
    }
    project->put_MenuLess(VARIANT_TRUE);
    project->put_OnDiscSize(0xFFFFFFFF);
    EXPECT_EQ(u"-1", Saved(kProject, u"menuless"));
    EXPECT_EQ(u"4294967295", Saved(kProject, u"onDiscSizeKB"));
}

TEST_F(SavingTest, WritesSizesAsTheShortestTextThatReadsBack)
{
    ComPtr<IKVTitle> title;
    project->AddTitle(0, title.Put());
    for (const auto& [size, text] : {std::pair{0.1, u"0.1"}, {1e300, u"1e+300"}, {4.7e9, u"4700000000"}}) {
        title->put_VOBSize(size);
        const auto document = SaveToDocument(*project.Get());
        EXPECT_EQ(text, AttributeText(*document.Get(), u"//Title", u"vobSize"));
        const auto loaded = NewProject();
        EXPECT_EQ(S_OK, loaded->loadXML(document.Get()));
        ComPtr<IKVTitle> again;
        ASSERT_EQ(S_OK, loaded->GetTitle(1, again.Put()));
        EXPECT_EQ(size, ValueOf(*again.Get(), &IKVTitle::get_VOBSize));
    }
}

TEST(HexadecimalTextTest, TakesDigitsBehindASmallXAlone)
{
    for (const ULONG value : {0u, 0x00FF00FFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(static_cast<LONG>(value), ParseHex(ToUtf16(FormatHex(value)))) << FormatHex(value);
    EXPECT_EQ("0x00FF00FF", FormatHex(0x00FF00FF));
    for (const auto& [text, value] : {std::pair{u"0xaBc", 0xABC},
                                      {u"0x12 rest", 0x12},
                                      {u"0x123456789", -1},
                                      {u"0X00FF", -1},
                                      {u"255", -1},
                                      {u" 0x1", -1},
                                      {u"0xg", -1},
                                      {u"0x", -1},
                                      {u"", -1}})
        EXPECT_EQ(value, ParseHex(text)) << ToUtf8(text);
}

TEST_F(SavingTest, RefusesTextThatXmlCannotHold)
{
    ComPtr<IKVTitle> title;
    project->AddTitle(0, title.Put());
    const auto document = ParseXml(u"<Root/>");
    ComPtr<IXMLDOMElement> root;
    document->get_documentElement(root.Put());
    for (std::u16string_view bad : {std::u16string_view(u"a\u0001b"), std::u16string_view(u"a\xD800z")}) {
        title->put_Label(Bstr(bad).Get());
        testing::internal::CaptureStderr();
        EXPECT_EQ(E_INVALIDARG, project->SaveXML(root.Get()));
#ifdef NDEBUG
        EXPECT_EQ("", testing::internal::GetCapturedStderr());
#else
        EXPECT_EQ("Failed on attribute: label\n", testing::internal::GetCapturedStderr());
#endif
    }
    title->put_Label(Str(u"tab\tline\n<&>\"' \u00e9 \U0001F4C0").Get());
    const auto loaded = NewProject();
    EXPECT_EQ(S_OK, loaded->loadXML(SaveToDocument(*project.Get()).Get()));
    ComPtr<IKVTitle> again;
    ASSERT_EQ(S_OK, loaded->GetTitle(1, again.Put()));
    EXPECT_EQ(u"tab\tline\n<&>\"' \u00e9 \U0001F4C0", Text(*again.Get(), &IKVTitle::get_Label));
}

TEST_F(SavingTest, WritesCommandsUnderTheirOwnNames)
{
    const auto fragment = ParseXml(u"<file name='a.mpg'><part/></file>");
    ComPtr<IXMLDOMElement> file;
    fragment->get_documentElement(file.Put());
    std::array records{DiscCommandParams{PlayMenu, 4, -5, file.Get()}, DiscCommandParams{PlayNextTitle, 0, 0, nullptr}};
    const auto commands = Query<IKVCommandList>(project);
    ASSERT_EQ(S_OK, commands->SetCommandList(2, records.data()));
    const auto document = SaveToDocument(*project.Get());
    ComPtr<IXMLDOMNode> saved;
    document->selectSingleNode(Str(u"/Root/Project/Commands").Get(), saved.Put());
    EXPECT_EQ(uR"x(<Commands><PlayMenu code="2" param1="4" param2="-5"><file name="a.mpg"><part/></file></PlayMenu>)x"
              uR"x(<PlayNextTitle code="9" param1="0" param2="0"/></Commands>)x",
              XmlOf(*saved.Get()));
}

} // namespace
} // namespace kv::test
