#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/tree/AttributeTexts.h"
#include "support/Contents.h"

namespace kv::test {
namespace {

struct SavingTest : testing::Test {
    ComPtr<IKVProjectData> project = NewProject();
};

TEST_F(SavingTest, WritesAnEmptyProjectWithItsDefaults)
{
    EXPECT_EQ(uR"x(<Root><Project DiscSize="4 (DVD_47)" ID="0" TVStandard="1 (NTSC)" ThemeSource="" Version="900")x"
              uR"x( discFormat="1 (DVD_Video)" discVideoType="1 (Normal_2D)" doCompression="1" fitToDisc="0" label="")x"
              uR"x( menuless="0" name="" onDiscProject="0" onDiscSizeKB="0" options="0 ()" remainingCaptures="-1">)x"
              uR"x(<Titles NumItems="0"/><Menus NumItems="0"/><DataFiles NumItems="0"/><Commands/>)x"
              uR"x(<Encoding VBREncoding="0" aspectRatio="1 (4x3)" audioBitrate="224000" audioChannels="2")x"
              uR"x( audioFormat="3 (AC-3)" subpictureFormat="1 (RLE)" syncToProject="0" twoPassEncoding="0")x"
              uR"x( videoBitrate="8000000" videoFormat="0 (MPEG-2)" videoResolution="1 (Full_D1)")x"
              uR"x( wideDisplayMode="1 (Letterbox)"/></Project></Root>)x",
              XmlOf(*SaveToDocument(*project.Get())));
}

TEST(HexadecimalTextTest, TakesDigitsBehindASmallXAlone)
{
    for (const auto& [value, text] : {std::pair{0u, "0x00000000"},
                                      {0x00FF00FFu, "0x00FF00FF"},
                                      {0x80000000u, "0x80000000"},
                                      {0xFFFFFFFFu, "0xFFFFFFFF"}}) {
        std::string written;
        AppendHex(value, 8, written);
        EXPECT_EQ(text, written);
        EXPECT_EQ(value, ParseHex(text));
    }
    std::string shorter;
    AppendHex(0x1234567, 6, shorter);
    EXPECT_EQ("0x1234567", shorter);
    for (const auto& [text, value] : {std::pair{"0xaBc", 0xABC},
                                      {"0x12 rest", 0x12},
                                      {"0x123456789", -1},
                                      {"0X00FF", -1},
                                      {"255", -1},
                                      {" 0x1", -1},
                                      {"0xg", -1},
                                      {"0x", -1},
                                      {"", -1}})
        EXPECT_EQ(static_cast<ULONG>(value), ParseHex(text)) << text;
}

TEST_F(SavingTest, RefusesTextThatXmlCannotHold)
{
    const auto title = AddTitle(*project.Get());
    const auto root = ParseElement(u"<Root/>");
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
}

} // namespace
} // namespace kv::test
