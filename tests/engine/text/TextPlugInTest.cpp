#include "engine/EngineSupport.h"

#include "KVProjectData/Engine/Text.h"
#include "platform/com/Activation.h"
#include "platform/xml/Dom.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

namespace kv::test {
namespace {

constexpr double kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
constexpr ULONG kWidth = 640;
constexpr ULONG kHeight = 480;

ComPtr<IXMLDOMElement> Document(const std::string& xml)
{
    ComPtr<IXMLDOMDocument> document;
    EXPECT_EQ(S_OK, CreateInstance(CLSID_DOMDocument, document));
    VARIANT_BOOL parsed = VARIANT_FALSE;
    EXPECT_EQ(S_OK, document->loadXML(Bstr(ToUtf16(xml)).Get(), &parsed)) << xml.substr(0, 100);
    ComPtr<IXMLDOMElement> root;
    document->get_documentElement(root.Put());
    return root;
}

ComPtr<IXMLDOMElement> Body(const std::string& content)
{
    return Document("<plugin_data><html><body>" + content + "</body></html></plugin_data>");
}

ComPtr<IZXTextPlugIn> TextOf(const std::string& content)
{
    auto text = CreateEngine<IZXTextPlugIn>(CLSID_ZXTextPlugIn);
    EXPECT_EQ(S_OK, text->SetUp(kWidth, kHeight, kIdentity, kIdentity));
    EXPECT_EQ(S_OK, text->SetText(Body(content).Get()));
    return text;
}

struct Box {
    double width;
    double height;
};

/// In pixels of the frame.
Box BoxOf(const std::string& content)
{
    ZXTextPoint corners[4];
    EXPECT_EQ(S_OK, TextOf(content)->GetCorners(corners));
    return {(corners[3].x - corners[0].x) * kWidth / 2, (corners[0].y - corners[1].y) * kHeight / 2};
}

/// What of the frame is drawn on.
struct Ink {
    int left = kWidth;
    int top = kHeight;
    int right = -1;
    int bottom = -1;
    int pixels = 0;
    /// Of the pixel that is covered most.
    std::vector<int> colour{0, 0, 0, 0};
};

Ink InkOf(IZXTextPlugIn* text)
{
    ULONG stride = 9;
    SafeArray pixels;
    EXPECT_EQ(S_OK, text->Draw(&stride, pixels.Put()));
    EXPECT_EQ(kWidth * 4, stride);
    Ink ink;
    if (!pixels.Get()) return ink;
    const auto* pixel = static_cast<const std::uint8_t*>(pixels.Get()->pvData);
    for (int y = 0; y < static_cast<int>(kHeight); ++y) {
        for (int x = 0; x < static_cast<int>(kWidth); ++x, pixel += 4) {
            EXPECT_LE(std::max({pixel[0], pixel[1], pixel[2]}), pixel[3]);
            if (pixel[3] > ink.colour[3]) ink.colour.assign(pixel, pixel + 4);
            if (pixel[3] < 32) continue;
            ink.left = std::min(ink.left, x);
            ink.right = std::max(ink.right, x);
            ink.top = std::min(ink.top, y);
            ink.bottom = std::max(ink.bottom, y);
            ++ink.pixels;
        }
    }
    return ink;
}

Ink InkOf(const std::string& content)
{
    return InkOf(TextOf(content).Get());
}

TEST(TextPlugIn, MeasuresTheLaidOutText)
{
    // DejaVu Sans is 1.164 of its size high, and its M 0.863 wide.
    const Box m = BoxOf("<p><font fontHeight='100'>M</font></p>");
    EXPECT_NEAR(116.4, m.height, 0.5);
    EXPECT_NEAR(86.3, m.width, 0.5);
    struct Case {
        const char* content;
        double width;
        double height;
    };
    const Case cases[] = {
        {"<p><font fontHeight='100' face='No Such Face'>M</font></p>", 1, 1},
        {"<p><font fontHeight='100' face='DejaVu Sans'>MM</font></p>", 2, 1},
        {"<p><font fontHeight='50'>M</font></p>", 0.5, 0.5},
        {"<font fontHeight='100'><p>M</p><p>MM</p></font>", 2, 2},
        {"<font fontHeight='100'><p>M<br/>MM<br/>M</p></font>", 2, 3},
        {"<font fontHeight='100'>\n  <p>M</p>\n  <p/>\n</font>\n", 1, 2},
        {"<font fontHeight='100'>M<font fontHeight='50'>M</font></font>", 1.5, 1},
        {"<p><font fontHeight='100'><table><strange>M</strange><!-- M --></table></font></p>", 1, 1},
        {"<p><font fontHeight='100'><![CDATA[M]]></font></p>", 1, 1},
        {"<font fontHeight='100'>M<p>M</p>M</font>", 1, 3},
        {"<p/>", 0, 0.24},
        {"<p placeholder='1'><b>~</b></p>", 0, 0.24},
        {"<font fontHeight='100'>M</font>&#32;<font fontHeight='100'>M</font>", 2.088, 1},
        {"", 0, 0.24},
        {"<p><font fontHeight='twelve'>M</font></p>", 0.24, 0.24},
        {"<p><font fontHeight='-5'>M</font></p>", 0.24, 0.24},
        {"<p><font fontHeight='inf'>M</font></p>", 0.24, 0.24},
        {"<p><font fontHeight='1e99'>M</font></p>", 0.01, 0.01},
        {"<p><font fontHeight=' +50.5pt'>M</font></p>", 0.505, 0.505},
        {"<p><font fontHeight='999999999'>M</font></p>", 10, 10},
    };
    for (const Case& item : cases) {
        const Box box = BoxOf(item.content);
        EXPECT_NEAR(item.width, box.width / m.width, 0.02) << item.content;
        EXPECT_NEAR(item.height, box.height / m.height, 0.02) << item.content;
    }
    EXPECT_GT(BoxOf("<p><b>Words</b></p>").width, BoxOf("<p>Words</p>").width * 1.05);
    EXPECT_NE(BoxOf("<p><font face='DejaVu Sans Mono'>iii</font></p>").width, BoxOf("<p>iii</p>").width);
}

TEST(TextPlugIn, PutsCornersThroughBothMatrices)
{
    const auto text = TextOf("<p>Corners</p>");
    ZXTextPoint plain[4];
    ASSERT_EQ(S_OK, text->GetCorners(plain));
    EXPECT_LT(plain[0].x, 0.0);
    EXPECT_GT(plain[0].y, 0.0);
    for (int i = 0; i < 4; ++i) {
        // Top left, bottom left, bottom right, top right, about the middle.
        EXPECT_NEAR(i < 2 ? plain[0].x : -plain[0].x, plain[i].x, 1e-12);
        EXPECT_NEAR(i == 0 || i == 3 ? plain[0].y : -plain[0].y, plain[i].y, 1e-12);
    }
    constexpr double kDouble[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    constexpr double kQuarter[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0.5, 0, 0, 1};
    constexpr double kPerspective[16] = {1, 0, 0, 0, 0, 1, 0, 0.5, 0, 0, 1, 0, 0, 0, 0, 1};
    struct Case {
        const double* first;
        const double* second;
        ZXTextPoint (*expected)(ZXTextPoint);
    };
    const Case cases[] = {
        {kDouble, kQuarter,
         [](ZXTextPoint p) {
             return ZXTextPoint{-2 * p.y + 0.5, 2 * p.x};
         }},
        {kQuarter, kDouble,
         [](ZXTextPoint p) {
             return ZXTextPoint{2 * (-p.y + 0.5), 2 * p.x};
         }},
        {kPerspective, kIdentity,
         [](ZXTextPoint p) {
             return ZXTextPoint{p.x / (1 + p.y / 2), p.y / (1 + p.y / 2)};
         }},
    };
    for (const Case& item : cases) {
        ASSERT_EQ(S_OK, text->SetUp(kWidth, kHeight, item.first, item.second));
        ZXTextPoint corners[4];
        ASSERT_EQ(S_OK, text->GetCorners(corners));
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(item.expected(plain[i]).x, corners[i].x, 1e-12);
            EXPECT_NEAR(item.expected(plain[i]).y, corners[i].y, 1e-12);
        }
    }
    constexpr double kNothing[16] = {};
    ZXTextPoint corners[4] = {{9, 9}};
    ASSERT_EQ(S_OK, text->SetUp(kWidth, kHeight, kNothing, kIdentity));
    EXPECT_EQ(E_INVALIDARG, text->GetCorners(corners));
    EXPECT_EQ(0.0, corners[0].x);
    ULONG stride = 9;
    SafeArray pixels;
    EXPECT_EQ(E_INVALIDARG, text->Draw(&stride, pixels.Put()));
    EXPECT_TRUE(stride == 0 && !pixels.Get());
    // Seen from its edge.
    constexpr double kFlat[16] = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    ASSERT_EQ(S_OK, text->SetUp(kWidth, kHeight, kFlat, kIdentity));
    EXPECT_EQ(0, InkOf(text.Get()).pixels);
}

TEST(TextPlugIn, DrawsWithinItsCorners)
{
    const std::string words = "<font fontHeight='60'><p align='right'>Hxxg<br/>x</p></font>";
    const Box box = BoxOf(words);
    const auto text = TextOf(words);
    const Ink ink = InkOf(text.Get());
    EXPECT_NEAR(kWidth / 2 - box.width / 2, ink.left, 8);
    EXPECT_NEAR(kWidth / 2 + box.width / 2, ink.right, 8);
    EXPECT_GT(ink.top, kHeight / 2 - box.height / 2);
    EXPECT_LT(ink.bottom, kHeight / 2 + box.height / 2);
    // Turned by a quarter, counter-clockwise as one sees it, and moved to the right.
    constexpr double kTurned[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0.5, 0, 0, 1};
    ASSERT_EQ(S_OK, text->SetUp(kWidth, kHeight, kTurned, kIdentity));
    const Ink turned = InkOf(text.Get());
    EXPECT_NEAR(ink.pixels, turned.pixels, ink.pixels / 8);
    EXPECT_NEAR((ink.right - ink.left) * kHeight / kWidth, turned.bottom - turned.top, 3);
    EXPECT_NEAR(kWidth * 3 / 4, (turned.left + turned.right) / 2, 10);
    // Only the second line differs by alignment.
    const auto shortLine = [](const std::string& align, const char* end = "</p>") {
        return InkOf("<p align='" + align +
                     "'><font fontHeight='60'><font color='#000000FF'>wide wide</font><br/>x</font>" + end)
            .left;
    };
    EXPECT_LT(shortLine("left") + 80, shortLine("center"));
    EXPECT_LT(shortLine("center") + 80, shortLine("right"));
    EXPECT_EQ(shortLine("left"), shortLine("justify"));
    // An inner paragraph is aligned as it says, else as the one around it; so is what follows it there.
    for (const auto& [align, inner] : {std::pair{"center", "center'><p id='1"},
                                       {"center", "center'><p align='right'/>\n<p id='1"},
                                       {"right", "center'><p align='right"}})
        EXPECT_EQ(shortLine(align), shortLine(inner, "</p></p>")) << inner;
    EXPECT_EQ(shortLine("center"), shortLine("center'><p align='left'/><font id='1", "</font></p>"));
}

TEST(TextPlugIn, DrawsColoursAndStyles)
{
    const auto drawn = [](const std::string& colour) {
        return InkOf("<p><font fontHeight='200' color='" + colour + "'>\xe2\x96\x88</font></p>").colour;
    };
    const std::pair<const char*, std::vector<int>> colours[] = {
        {"#11223344", {0x33 * 187 / 255, 0x22 * 187 / 255, 0x11 * 187 / 255, 187}},
        {"#FF8000", {0, 128, 255, 255}},
        {"reddish", {0, 0, 255, 255}},
        {"AQUA", {255, 255, 0, 255}},
        {"R10G20B30T00", {0x30, 0x20, 0x10, 255}},
        {"#", {0, 0, 0, 255}},
        {"", {0, 0, 0, 255}},
    };
    for (const auto& [colour, expected] : colours)
        EXPECT_THAT(drawn(colour), testing::Pointwise(testing::DoubleNear(1), expected)) << colour;
    EXPECT_EQ(255, InkOf("<p><font fontHeight='200'>\xe2\x96\x88</font></p>").colour[0]);
    // Below all glyphs lies the shadow, above it the edge.
    const auto square = [](const char* more) {
        return InkOf(std::string("<p><font fontHeight='100' ") + more + ">\xe2\x96\x88</font></p>");
    };
    const Ink bare = square("");
    const Ink edged = square("color='White' edgeColor='#FF000000' edgeWidth='10'");
    EXPECT_NEAR(bare.left - 10, edged.left, 1);
    EXPECT_NEAR(bare.bottom + 10, edged.bottom, 1);
    const Ink shaded = square("shadowColor='#0000FF80' shadowOffset='20'");
    EXPECT_EQ(bare.left, shaded.left);
    EXPECT_NEAR(bare.right + 20, shaded.right, 1);
    EXPECT_NEAR(bare.bottom + 20, shaded.bottom, 1);
    EXPECT_GT(square("edgeColor='Red' edgeWidth='1e9'").left, bare.left - 110);
    for (const char* none : {"edgeWidth='10' shadowOffset='9'", "edgeColor='#000000FF' shadowColor='#000000FF'",
                             "edgeColor='Red' edgeWidth='0' shadowColor='Red' shadowOffset='0'"})
        EXPECT_EQ(bare.pixels, square(none).pixels) << none;
    const auto styled = [](const char* open, const char* close) {
        return InkOf("<p><font fontHeight='100'>" + std::string(open) + "oooo" + close + "</font></p>");
    };
    const Ink plain = styled("", "");
    EXPECT_GT(styled("<b>", "</b>").pixels, plain.pixels * 1.2);
    EXPECT_GT(styled("<u>", "</u>").pixels, plain.pixels * 1.1);
    EXPECT_NE(styled("<i>", "</i>").left, plain.left);
}

TEST(TextPlugIn, AnswersClearlyToBadInput)
{
    const auto text = CreateEngine<IZXTextPlugIn>(CLSID_ZXTextPlugIn);
    ZXTextPoint corners[4];
    EXPECT_EQ(ZXE_E_NOT_OPEN, text->GetCorners(corners));
    double broken[16] = {};
    broken[5] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(E_INVALIDARG, text->SetUp(640, 480, kIdentity, broken));
    for (const auto& [width, height] : {std::pair{0U, 480U}, {640U, 0U}, {16'385U, 1U}, {1U, 0xFFFFFFFFU}})
        EXPECT_EQ(E_INVALIDARG, text->SetUp(width, height, kIdentity, kIdentity));
    EXPECT_EQ(E_POINTER, text->SetUp(640, 480, nullptr, kIdentity));
    ASSERT_EQ(S_OK, text->SetUp(640, 480, kIdentity, kIdentity));
    EXPECT_EQ(ZXE_E_NO_TEXT, text->GetCorners(corners));
    ASSERT_EQ(S_OK, text->SetText(Body("<p>Kept</p>").Get()));
    ASSERT_EQ(S_OK, text->GetCorners(corners));
    const double width = corners[3].x;
    for (const char* xml :
         {"<plugin_data/>", "<plugin_data><html/></plugin_data>", "<plugin_data><body/></plugin_data>"})
        EXPECT_EQ(ZXE_E_NO_TEXT, text->SetText(Document(xml).Get())) << xml;
    EXPECT_EQ(ZXE_E_NO_TEXT, text->SetText(text.Get()));
    EXPECT_EQ(E_POINTER, text->SetText(nullptr));
    EXPECT_EQ(E_POINTER, text->GetCorners(nullptr));
    ASSERT_EQ(S_OK, text->GetCorners(corners));
    EXPECT_EQ(width, corners[3].x);
}

TEST(TextPlugIn, BoundsHugeTexts)
{
    std::string runs;
    for (int i = 0; i < 20'000; ++i)
        runs += i % 2 ? "<b>word </b>" : "<font color='Red'>word </font>";
    std::string levels = "deep";
    for (int i = 0; i < 200; ++i)
        levels = (i % 2 ? "<font fontHeight='" + std::to_string(8 + i) + "'>" + levels + "</font>"
                        : "<strange>" + levels + "</strange>");
    std::string paragraphs;
    for (int i = 0; i < 50'000; ++i)
        paragraphs += "<p/>";
    for (const std::string& content :
         {runs, levels, paragraphs, std::string(1 << 20, 'x'),
          "<font face='" + std::string(1 << 20, 'x') + "'>a</font>",
          std::string("\xf0\x9f\x98\x80 \xd8\xb9\xd8\xb1\xd8\xa8\xd9\x8a \xe2\x80\xae abc \xe2\x80\xa9 def")}) {
        const Box box = BoxOf("<p>" + content + "</p>");
        EXPECT_TRUE(std::isfinite(box.width) && box.width >= 0) << content.substr(0, 40);
        EXPECT_TRUE(std::isfinite(box.height) && box.height > 0) << content.substr(0, 40);
    }
}

TEST(TextPlugIn, LaysOutInSeveralThreads)
{
    const double width = BoxOf("<p>Threads <b>at</b> work</p>").width;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                EXPECT_EQ(width, BoxOf("<p>Threads <b>at</b> work</p>").width);
                EXPECT_GT(InkOf("<p>Threads</p>").pixels, 0);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
} // namespace kv::test
