#include "support/Host.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kv::test {
namespace {

using Palette = std::array<RGBEntry, 16>;

constexpr SPUColourInfo kSelected{1, 2, 3, 4, 5, 6, 7, 8};
constexpr SPUColourInfo kActivated{15, 15, 14, 13, 12, 11, 10, 9};

class RecordNodeTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put())); }

    /// The text of an attribute of a part of the menu.
    std::u16string Saved(std::u16string_view part, std::u16string_view attribute)
    {
        return AttributeText(*SaveToDocument(*project.Get()).Get(), u"//Menu/" + std::u16string(part), attribute);
    }

    /// Loads parts into the menu.
    void Load(const std::u16string& parts)
    {
        const auto document = ParseXml(u"<Root><Menu>" + parts + u"</Menu></Root>");
        EXPECT_EQ(S_OK, menu->loadXML(document.Get(), VARIANT_TRUE));
    }

    Palette Entries()
    {
        Palette entries{};
        EXPECT_EQ(S_OK, menu->GetPalette(entries.data()));
        return entries;
    }

    std::pair<SPUColourInfo, SPUColourInfo> Colours(SPUColourTypes type)
    {
        std::pair<SPUColourInfo, SPUColourInfo> colours{};
        EXPECT_EQ(S_OK, menu->GetSubpictureColours(type, &colours.first, &colours.second));
        return colours;
    }

    /// An edit of the menu as a step, there and back again.
    template <class Read>
    void ExpectUndone(HRESULT edited, Read&& read, const decltype(read())& before)
    {
        EXPECT_EQ(S_OK, edited);
        EXPECT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
        const auto after = read();
        EXPECT_FALSE(after == before);
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_TRUE(read() == before);
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_TRUE(read() == after);
        EXPECT_EQ(S_OK, project->BeginUndo(nullptr));
    }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVMenu> menu;
};

TEST_F(RecordNodeTest, APaletteIsSavedEntryByEntry)
{
    EXPECT_EQ(u"0x000000", Saved(u"Palette", u"entry15"));
    Palette entries{};
    entries[0] = {0x11, 0x22, 0x33};
    entries[15] = {0xff, 0, 1};
    EXPECT_EQ(S_OK, menu->SetPalette(entries.data()));
    EXPECT_EQ(u"0x332211", Saved(u"Palette", u"entry00"));
    EXPECT_EQ(u"0x0100FF", Saved(u"Palette", u"entry15"));
    EXPECT_EQ(entries, Entries());
}

TEST_F(RecordNodeTest, APaletteIsReadUpToTheFirstGap)
{
    const Palette set = [] {
        Palette entries;
        entries.fill({9, 9, 9});
        return entries;
    }();
    for (const char16_t* gap : {u"", u" entry03=''"}) {
        menu->SetPalette(set.data());
        Load(u"<Palette entry00='FF0000' entry01='0x332211' entry02='0X1' entry04='0x1'" + std::u16string(gap) + u"/>");
        Palette expected = set;
        expected[0] = {255, 255, 255};
        expected[1] = {0x11, 0x22, 0x33};
        expected[2] = {255, 255, 255};
        EXPECT_EQ(expected, Entries());
    }
}

TEST_F(RecordNodeTest, ColoursAreCheckedAndNothingIsStoredOfWrongOnes)
{
    struct Wrong {
        BYTE SPUColourInfo::*first;
        BYTE SPUColourInfo::*second;
        HRESULT result;
    };
    using Info = SPUColourInfo;
    for (const auto type : {SPU_Normal, SPU_BtnColours1, SPU_BtnColours3}) {
        EXPECT_EQ(S_OK, menu->SetSubpictureColours(type, &kActivated, &kActivated));
        // The first look changes what the second one tells.
        Colours(type);
        const auto before = Colours(type);
        for (const auto& [first, second, result] : {Wrong{&Info::pattCol, &Info::pattCnt, KV_E_BAD_COLOUR_INDEX},
                                                    {&Info::pattCnt, &Info::bkgdCol, KV_E_BAD_CONTRAST},
                                                    {&Info::emp1Col, &Info::emp1Col, KV_E_BAD_COLOUR_INDEX},
                                                    {&Info::emp2Cnt, &Info::emp2Cnt, KV_E_BAD_CONTRAST}}) {
            SPUColourInfo wrong = kSelected;
            wrong.*first = 16;
            wrong.*second = 255;
            EXPECT_EQ(result, menu->SetSubpictureColours(type, &wrong, &kActivated));
            if (type != SPU_Normal) {
                EXPECT_EQ(result, menu->SetSubpictureColours(type, &kSelected, &wrong));
            }
        }
        EXPECT_EQ(before, Colours(type));
    }
}

TEST_F(RecordNodeTest, SchemesAreSavedAndLoadedByTheirNames)
{
    for (const auto type : {SPU_Normal, SPU_BtnColours1, SPU_BtnColours2})
        EXPECT_EQ(S_OK, menu->SetSubpictureColours(type, &kSelected, &kActivated));
    EXPECT_EQ(u"1", Saved(u"ButtonScheme1", u"pattSelCol"));
    EXPECT_EQ(u"8", Saved(u"ButtonScheme2", u"emp2SelCnt"));
    EXPECT_EQ(u"14", Saved(u"ButtonScheme2", u"bkgdActCol"));
    EXPECT_EQ(u"0", Saved(u"ButtonScheme3", u"pattSelCol"));
    EXPECT_EQ(u"6", Saved(u"SPUColours", u"emp1Cnt"));
    // A document may hold any byte, in any order of elements.
    Load(u"<ButtonScheme3 emp1ActCnt='200' pattSelCnt='3'/><ButtonScheme1 bkgdSelCol='256' pattSelCol='9'/>"
         u"<SPUColours bkgdCnt='7'/>");
    EXPECT_EQ(u"200", Saved(u"ButtonScheme3", u"emp1ActCnt"));
    EXPECT_EQ(u"9", Saved(u"ButtonScheme1", u"pattSelCol"));
    EXPECT_EQ(u"3", Saved(u"ButtonScheme1", u"bkgdSelCol"));
    EXPECT_EQ(u"7", Saved(u"SPUColours", u"bkgdCnt"));
    SPUColourInfo emphasised = SPUColourInfo{};
    emphasised.pattCnt = 3;
    EXPECT_EQ(emphasised, Colours(SPU_BtnColours3).first);
    emphasised.emp2Cnt = 2;
    EXPECT_EQ(emphasised, Colours(SPU_BtnColours3).first) << "the first look has changed it";
}

TEST_F(RecordNodeTest, TheLayoutRectangleIsFinite)
{
    constexpr FloatRect kRect{0.125f, 0.75f, 0.5f, -0.25f};
    EXPECT_EQ(S_OK, menu->put_LayoutRect(kRect));
    for (float FloatRect::*side : {&FloatRect::fLeft, &FloatRect::fTop, &FloatRect::fRight, &FloatRect::fBottom}) {
        for (const float endless : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
            FloatRect rect = kRect;
            rect.*side = endless;
            EXPECT_EQ(E_INVALIDARG, menu->put_LayoutRect(rect));
        }
    }
    EXPECT_EQ(kRect, ValueOf(*menu.Get(), &IKVMenu::get_LayoutRect));
    EXPECT_EQ(u"0.125", Saved(u"LayoutRect", u"left"));
    EXPECT_EQ(u"-0.25", Saved(u"LayoutRect", u"bottom"));
    Load(u"<LayoutRect top='1' right='wide'/>");
    EXPECT_EQ((FloatRect{0.125f, 1.0f, 0.5f, -0.25f}), ValueOf(*menu.Get(), &IKVMenu::get_LayoutRect));
}

TEST_F(RecordNodeTest, AllOfThemAreUndone)
{
    Palette entries{};
    entries[7] = {1, 2, 3};
    project->BeginUndo(nullptr);
    ExpectUndone(
        menu->SetPalette(entries.data()), [this] { return Entries(); }, Palette{});
    ExpectUndone(
        menu->put_LayoutRect({1, 2, 3, 4}), [this] { return ValueOf(*menu.Get(), &IKVMenu::get_LayoutRect); },
        FloatRect{});
    for (const auto* part : {u"SPUColours", u"ButtonScheme2"}) {
        const bool normal = part == std::u16string_view(u"SPUColours");
        ExpectUndone(
            menu->SetSubpictureColours(normal ? SPU_Normal : SPU_BtnColours2, &kSelected, &kActivated),
            [&] { return Saved(part, normal ? u"pattCol" : u"emp2ActCnt"); }, u"0");
    }
    project->EndUndo(VARIANT_FALSE);
}

} // namespace
} // namespace kv::test
