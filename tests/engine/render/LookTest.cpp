#include "engine/render/Look.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace kv::test {
namespace {

constexpr double kForEver = std::numeric_limits<double>::infinity();

std::string Key(const char* time, const std::string& value)
{
    return std::string("<KeyFrame><Time>") + time + "</Time>" + value + "</KeyFrame>";
}

std::string Value(const char* value)
{
    return std::string("<Value>") + value + "</Value>";
}

KeyFrames<1> Opacity(const std::string& lists)
{
    const auto document = XmlElement::Parse("<plugin_data><Opacity>" + lists + "</Opacity></plugin_data>");
    return ReadLook(document).placement.opacity;
}

TEST(KeyFrames, ChangeEvenlyBetweenKeysOfAllLists)
{
    const std::string start =
        "<StartOffsetElements>" + Key("0", Value("0")) + Key("2", Value("100")) + "</StartOffsetElements>";
    const std::string end =
        "<EndOffsetElements>" + Key("0", Value("50")) + Key("2", Value("200")) + "</EndOffsetElements>";
    const std::string percent = "<PercentageElements>" + Key("50", Value("10")) + "</PercentageElements>";
    const std::tuple<std::string, double, double, double> cases[]{
        {start, -1, 10, 0},          {start, 0, 10, 0},           {start, 0.5, 10, 25},
        {start, 2, 10, 100},         {start, 9, 10, 100},         {end, 0, 10, 200},
        {end, 9, 10, 125},           {end, 10, 10, 50},           {percent, 3, 10, 10},
        {start + end, 1, 10, 50},    {start + end, 5, 10, 150},   {start + end, 9, 10, 125},
        {start + percent, 4, 8, 10}, {start + percent, 3, 8, 55}, {start + end, 5, kForEver, 100},
        {start + percent, 1, -9, 55}};
    for (const auto& [lists, time, span, expected] : cases) {
        const auto value = Opacity(lists).At(time, span);
        ASSERT_TRUE(value) << lists;
        EXPECT_NEAR(expected, value->front(), 1e-9) << lists << time;
    }
    EXPECT_FALSE(Opacity(end + percent).At(1.0, kForEver));
    EXPECT_FALSE(Opacity("").At(1.0, 2.0));
}

TEST(KeyFrames, PassOverWhatIsNoKey)
{
    const char* const noKeys[] = {"<KeyFrame><Time>soon</Time><Value>7</Value></KeyFrame>",
                                  "<KeyFrame><Time>0</Time><Value>much</Value></KeyFrame>",
                                  "<KeyFrame><Time>NaN</Time><Value>7</Value></KeyFrame>",
                                  "<KeyFrame><Time>0</Time><Value>INF</Value></KeyFrame>",
                                  "<KeyFrame><Time>1e999</Time><Value>7</Value></KeyFrame>",
                                  "<Key><Time>0</Time><Value>7</Value></Key>"};
    for (const char* const noKey : noKeys) {
        const auto alone = std::string("<StartOffsetElements>") + noKey + "</StartOffsetElements>";
        EXPECT_FALSE(Opacity(alone).At(0.0, 1.0)) << noKey;
        const auto beside =
            std::string("<StartOffsetElements>") + noKey + Key("1", Value("3")) + "</StartOffsetElements>";
        EXPECT_EQ(3.0, Opacity(beside).At(0.0, 1.0).value()[0]) << noKey;
    }
    // What is missing is 0.
    EXPECT_EQ(0.0, Opacity("<StartOffsetElements><KeyFrame/></StartOffsetElements>").At(0.0, 1.0).value()[0]);
    const auto flat = XmlElement::Parse("<plugin_data><Scaling><StartOffsetElements>" +
                                        Key("0", "<Vector><x>1</x><y>2</y></Vector>") +
                                        "</StartOffsetElements></Scaling></plugin_data>");
    EXPECT_EQ((std::array<double, 3>{1, 2, 0}), ReadLook(flat).placement.scaling.At(0.0, 1.0));
}

TEST(KeyFrames, StandInTheOrderOfTheirTimes)
{
    // Times out of order and twice, and many of them.
    std::mt19937 random(7);
    constexpr int kKeys = 100'000;
    std::vector<int> times(kKeys);
    for (int i = 0; i < kKeys; ++i)
        times[static_cast<std::size_t>(i)] = i;
    std::shuffle(times.begin(), times.end(), random);
    std::string keys = Key("5", Value("9"));
    for (const int time : times)
        keys += Key(std::to_string(time).c_str(), Value(std::to_string(2 * time).c_str()));
    const KeyFrames<1> opacity = Opacity("<StartOffsetElements>" + keys + "</StartOffsetElements>");
    for (const double time : {0.0, 0.25, 5.0, 777.5, kKeys - 1.0})
        EXPECT_NEAR(2 * time, opacity.At(time, 1.0).value()[0], 1e-9);
}

TEST(Look, ReadsWhatADocumentTells)
{
    const std::string data = "<plugin_data><Translation><StartOffsetElements>" +
                             Key("0", "<Vector><x>0.5</x><y>-0.25</y><z>0</z></Vector>") +
                             "</StartOffsetElements></Translation><ParameterSet>"
                             "<Parameter><Value>1028</Value><ParamID>0</ParamID></Parameter>"
                             "<Parameter><Value>0.5</Value><ParamID>52</ParamID></Parameter>"
                             "<Parameter><Value>wide</Value><ParamID>53</ParamID></Parameter></ParameterSet>"
                             "<html><body><p>Words</p></body></html></plugin_data>";
    for (const std::string& document : {data, "<effect>" + data + "</effect>"}) {
        const Look look = ReadLook(XmlElement::Parse(document));
        const std::array<double, 3> moved{0.5, -0.25, 0.0};
        EXPECT_EQ(moved, look.placement.translation.At(3.0, 1.0));
        EXPECT_TRUE(look.placement.Moves());
        EXPECT_EQ(0.5, look.maskWidth);
        EXPECT_EQ(0.0, look.maskHeight);
        ASSERT_TRUE(look.text);
        EXPECT_GT(look.text->Width(), 0.0);
    }
    for (const XmlElement& nothing :
         {XmlElement(), XmlElement::Parse("<effect><plugin_data><html/></plugin_data></effect>")}) {
        const Look look = ReadLook(nothing);
        EXPECT_FALSE(look.placement.Moves());
        EXPECT_FALSE(look.text);
    }
    const std::string rectangle = "<StartOffsetElements>" +
                                  Key("0", "<fRect><left>0.1</left><top>0.2</top><right>0.7</right>"
                                           "<bottom>0.8</bottom></fRect>") +
                                  "</StartOffsetElements>";
    const auto crop = [&](const std::string& beside, const std::string& inside = {}) {
        const std::string text = "<ZXFPanZoom><Crop>" + rectangle + inside + "</Crop>" + beside + "</ZXFPanZoom>";
        return ReadLook(XmlElement::Parse(text)).crop.At(0.0, 1.0);
    };
    const std::array<double, 4> expected{0.1, 0.2, 0.7, 0.8};
    const std::string on = "<CropMode>1</CropMode>";
    const std::string off = "<CropMode>0</CropMode>";
    EXPECT_EQ(expected, crop(on));
    EXPECT_EQ(expected, crop(off, on));
    EXPECT_FALSE(crop(on, off));
    EXPECT_FALSE(crop(""));
}

} // namespace
} // namespace kv::test
