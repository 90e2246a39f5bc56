// A text that the helper edits, as the engine's text plug-in draws it.

#include "KVProjectData/Engine/Text.h"
#include "KVProjectData/effects/RichTextEditor.h"
#include "TextSupport.h"
#include "engine/EngineSupport.h"

namespace kv::test {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

/// How many pixels are opaque and of these colours, which are 0xRRGGBB.
std::vector<int> Drawn(CZXPTextPlugInHelper& text, const std::vector<ULONG>& colours)
{
    constexpr double kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const auto plugIn = CreateEngine<IZXTextPlugIn>(CLSID_ZXTextPlugIn);
    XmlElement saved;
    EXPECT_EQ(S_OK, text.Save(saved));
    EXPECT_EQ(S_OK, plugIn->SetUp(kWidth, kHeight, kIdentity, kIdentity));
    EXPECT_EQ(S_OK, plugIn->SetText(saved.Get()));
    ULONG stride = 0;
    SafeArray pixels;
    EXPECT_EQ(S_OK, plugIn->Draw(&stride, pixels.Put()));
    std::vector<int> counts(colours.size());
    const auto* bytes = static_cast<const std::uint8_t*>(pixels.Get() ? pixels.Get()->pvData : nullptr);
    for (int i = 0; bytes && i < kWidth * kHeight; ++i, bytes += 4) {
        const ULONG colour = static_cast<ULONG>(bytes[2]) << 16 | static_cast<ULONG>(bytes[1]) << 8 | bytes[0];
        for (std::size_t which = 0; which < colours.size(); ++which)
            counts[which] += bytes[3] == 255 && colour == colours[which];
    }
    return counts;
}

TEST(DrawnText, ShowsWhatIsSetWithItsEdgeAndShadow)
{
    XmlElement data = TextData("<p>old</p><p><font edgeColor='Green'>words</font></p>");
    RichTextEditor(data.Child("html").Child("body"))
        .Apply(TextCommand::Parse(
            "f:<font fontHeight=90,edgeColor=Red,edgeWidth=6,shadowColor=#0000FF00,shadowOffset=30></font>"));
    CZXPTextPlugInHelper text;
    ASSERT_EQ(S_OK, text.Load(data));
    const std::vector<ULONG> inks{0xFFFFFF, 0xFF0000, 0x0000FF, 0x008000};
    const std::vector<int> old = Drawn(text, inks);
    EXPECT_TRUE(old[0] && old[1] && old[2] && !old[3]) << testing::PrintToString(old);

    for (const char* setting :
         {"string=MMM", "height=150", "style=200", "justify=2", "face=DejaVu Serif", "colour=008000"})
        ASSERT_EQ(S_OK, Put(text, setting)) << setting;
    const std::vector<int> fresh = Drawn(text, inks);
    EXPECT_TRUE(!fresh[0] && fresh[1] && fresh[2] && fresh[3] > old[0]) << testing::PrintToString(fresh);

    ASSERT_EQ(S_OK, Put(text, "string="));
    EXPECT_EQ(Drawn(text, inks), std::vector<int>(4)) << "no placeholder is drawn";
    ASSERT_EQ(S_OK, Put(text, "string=MMM"));
    EXPECT_EQ(Drawn(text, inks), fresh) << "the formatting outlives an empty text";
    ASSERT_EQ(S_OK, Put(text, "colour=ff000000"));
    EXPECT_EQ(Drawn(text, inks)[3], 0) << "wholly transparent";
}

} // namespace
} // namespace kv::test
