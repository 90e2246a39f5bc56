// What is read of, and written to, an effect's "plugin_data".

#include "KVProjectData/effects/ZXPGenericParamSetImpl.h"
#include "KVProjectData/effects/ZXPPlugInHelper.h"
#include "support/Markup.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

namespace kv {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// All keys of a transform by channel, list and time.
using Keys = std::map<std::tuple<ULONG, ULONG, double>, std::tuple<float, float, float, ULONG>>;

Keys KeysOf(IZXPTransform& transform)
{
    Keys keys;
    for (const ULONG channel : {ZXP_TRANSLATION, ZXP_ROTATION, ZXP_SCALING, ZXP_OPACITY, ZXP_HANDLES}) {
        for (const ULONG list : {ZXP_FROM_START, ZXP_FROM_END, ZXP_PERCENT}) {
            ULONG count = 0;
            EXPECT_EQ(S_OK, transform.GetKeyCount(channel, list, &count));
            for (ULONG i = 0; i < count; ++i) {
                double time = 0;
                float x, y, z;
                ULONG caps;
                EXPECT_EQ(S_OK, transform.GetKeyTime(channel, list, i, &time));
                EXPECT_EQ(S_OK, transform.GetKeyValue(channel, time, list, &x, &y, &z, &caps));
                keys[{channel, list, time}] = {x, y, z, caps};
            }
        }
    }
    return keys;
}

/// The markup without line breaks, indents and the declaration of the prefix.
std::string Markup(const XmlElement& element)
{
    return test::Plain(element.Markup());
}

std::string Xml(std::string_view name, std::string_view type, std::string_view text)
{
    return "<" + std::string(name) + " dt:dt=\"" + std::string(type) + "\">" + std::string(text) + "</" +
           std::string(name) + ">";
}

std::string Saved(const std::string& content)
{
    return "<plugin_data>" + content + "</plugin_data>";
}

XmlElement PlugInData(const std::string& content)
{
    return XmlElement::Parse("<plugin_data xmlns:dt=\"urn:schemas-microsoft-com:datatypes\">" + content +
                             "</plugin_data>");
}

std::string KeyXml(double time, std::string_view value)
{
    return "<KeyFrame>" + Xml("Time", "r8", time == 0 ? "0" : std::to_string(time)) + Xml("Caps", "ui4", "462847") +
           std::string(value) + "</KeyFrame>";
}

const std::string kVectorXml =
    "<Vector>" + Xml("x", "r4", "0.5") + Xml("y", "r4", "-0.25") + Xml("z", "r4", "1") + "</Vector>";

std::string Delta(std::string_view name)
{
    return "<" + std::string(name) + ">" + Xml("x", "r4", "0") + Xml("y", "r4", "0") + Xml("z", "r4", "0") + "</" +
           std::string(name) + ">";
}

/// What every saved transform ends with.
const std::string kDefaultScalars = Xml("IsSelectable", "boolean", "1") + Xml("IsEditable", "boolean", "1") +
                                    Xml("Caps", "ui4", "4915") + Delta("HandlesDelta") + Delta("TranslationDelta") +
                                    Delta("RotationDelta") + Delta("ScalingDelta") + Xml("OpacityDelta", "ui4", "0");

TEST(Transform, SavesChannelsListsAndScalarsInTheirOrder)
{
    CZXPTransformImpl transform;
    for (const HRESULT set : {transform.SetKeyValue(ZXP_HANDLES, 0, ZXP_PERCENT, 0.5f, -0.25f, 1, ZXP_ALL_CAPS),
                              transform.SetKeyValue(ZXP_OPACITY, 0, ZXP_FROM_END, 200, 7, 7, ZXP_ALL_CAPS),
                              transform.SetKeyValue(ZXP_SCALING, 2, ZXP_FROM_START, 1, 1, 1, 7),
                              transform.SetKeyValue(ZXP_SCALING, 2, ZXP_FROM_START, 0.5f, -0.25f, 1, ZXP_ALL_CAPS),
                              transform.SetKeyValue(ZXP_SCALING, 0, ZXP_FROM_START, 0.5f, -0.25f, 1, ZXP_ALL_CAPS)})
        EXPECT_EQ(S_OK, set);
    XmlElement data = XmlElement::Parse("<plugin_data><Caps/><html>text</html><Scaling><old/></Scaling><Speed>2</Speed>"
                                        "<Rotation><StartOffsetElements/></Rotation><Crop><EditMode>3</EditMode></Crop>"
                                        "</plugin_data>");
    ASSERT_EQ(S_OK, transform.Save(data.Get()));
    const std::string mode = Xml("EditMode", "ui4", "3");
    const std::string channels =
        "<Scaling>" + mode + "<StartOffsetElements>" + KeyXml(0, kVectorXml) + "<KeyFrame>" + Xml("Time", "r8", "2") +
        Xml("Caps", "ui4", "462847") + kVectorXml + "</KeyFrame></StartOffsetElements></Scaling><Opacity>" + mode +
        "<EndOffsetElements>" + KeyXml(0, Xml("Value", "ui4", "200")) + "</EndOffsetElements></Opacity><Handles>" +
        mode + "<PercentageElements>" + KeyXml(0, kVectorXml) + "</PercentageElements></Handles>";
    EXPECT_EQ(Markup(data), Saved("<html>text</html><Crop><EditMode>3</EditMode></Crop>" + channels + kDefaultScalars));

    XmlElement bad = XmlElement::Parse("<plugin_data><Scaling/><Crop><EditMode>three</EditMode></Crop></plugin_data>");
    const std::string before = Markup(bad);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, transform.Save(bad.Get()));
    EXPECT_EQ(before, Markup(bad)) << "not half of it";

    transform.put_PathID(ZXP_FROM_START, 1);
    transform.put_PathID(ZXP_FROM_END, 2);
    transform.put_PathID(77, 3);
    transform.put_Speed(0.5);
    transform.put_IsEditable(VARIANT_FALSE);
    transform.put_Caps(5);
    transform.ClearChannels(ZXP_ALL_CHANNELS);
    XmlElement scalars = XmlElement::New("plugin_data");
    ASSERT_EQ(S_OK, transform.Save(scalars.Get()));
    EXPECT_EQ(Markup(scalars).substr(0, 270),
              Saved(Xml("StartPathID", "ui4", "1") + Xml("EndPathID", "ui4", "2") + Xml("PercentPathID", "ui4", "3") +
                    Xml("Speed", "r8", "0.5") + Xml("IsSelectable", "boolean", "1") +
                    Xml("IsEditable", "boolean", "0") + Xml("Caps", "ui4", "5"))
                  .substr(0, 270));
}

TEST(Transform, LoadsWhatItSavedAndForgetsWhatItHeld)
{
    CZXPTransformImpl first;
    for (const ULONG channel : {ZXP_TRANSLATION, ZXP_ROTATION, ZXP_SCALING, ZXP_OPACITY, ZXP_HANDLES}) {
        for (const ULONG list : {ZXP_FROM_START, ZXP_FROM_END, ZXP_PERCENT}) {
            for (const double time : {3.0, -1.5, 1e-300, 0.1})
                EXPECT_EQ(S_OK,
                          first.SetKeyValue(channel, time, list, static_cast<float>(channel), 1.0f / 3, -0.0f, list));
        }
        EXPECT_EQ(S_OK, first.SetDelta(channel, static_cast<float>(channel), 2, 3));
    }
    first.put_Speed(1.0 / 3);
    first.put_PathID(ZXP_PERCENT, 0xFFFFFFFF);
    first.put_IsSelectable(VARIANT_FALSE);
    XmlElement data = XmlElement::New("plugin_data");
    ASSERT_EQ(S_OK, first.Save(data.Get()));

    CZXPTransformImpl second;
    second.SetKeyValue(ZXP_SCALING, 99, ZXP_PERCENT, 1, 1, 1, 0);
    second.put_PathID(ZXP_FROM_START, 9);
    second.put_IsEditable(VARIANT_FALSE);
    second.put_IsLocked(VARIANT_TRUE);
    ASSERT_EQ(S_OK, second.Load(XmlElement::Parse(data.Markup()).Get()));
    EXPECT_EQ(KeysOf(second).size(), 60u);
    EXPECT_EQ(KeysOf(second), KeysOf(first));
    XmlElement again = XmlElement::New("plugin_data");
    ASSERT_EQ(S_OK, second.Save(again.Get()));
    EXPECT_EQ(again.Markup(), data.Markup());
    VARIANT_BOOL locked = VARIANT_FALSE;
    EXPECT_EQ(S_OK, second.get_IsLocked(&locked));
    EXPECT_EQ(locked, VARIANT_TRUE) << "no document holds it";
}

TEST(Transform, EditsKeysAtExactTimes)
{
    CZXPTransformImpl transform;
    const auto set = [&](double time, float x) {
        return transform.SetKeyValue(ZXP_ROTATION, time, ZXP_FROM_START, x, 0, 0, 1);
    };
    const auto times = [&] {
        std::vector<double> found;
        for (const auto& [key, value] : KeysOf(transform))
            found.push_back(std::get<2>(key));
        return found;
    };
    const auto at = [&](double time) {
        float x = 0, y, z;
        ULONG caps;
        const HRESULT result = transform.GetKeyValue(ZXP_ROTATION, time, ZXP_FROM_START, &x, &y, &z, &caps);
        return std::pair(result, x);
    };
    const auto move = [&](double from, double to) { return transform.MoveKey(ZXP_ROTATION, ZXP_FROM_START, from, to); };
    using Times = std::vector<double>;
    EXPECT_EQ(S_OK, set(2, 2));
    EXPECT_EQ(S_OK, set(1, 1));
    EXPECT_EQ(S_OK, set(2, 3));
    EXPECT_EQ(times(), (Times{1, 2}));
    EXPECT_EQ(at(2), std::pair(S_OK, 3.0f));
    EXPECT_EQ(at(2.0000001), std::pair(TYPE_E_ELEMENTNOTFOUND, 0.0f));
    EXPECT_EQ(S_OK, move(1, 1.0005)) << "too little to move";
    EXPECT_EQ(S_OK, move(5, 5.0005)) << "nor does it matter whether there is a key";
    EXPECT_EQ(TYPE_E_ELEMENTNOTFOUND, move(5, 6));
    EXPECT_EQ(E_INVALIDARG, move(1, kNaN));
    EXPECT_EQ(times(), (Times{1, 2}));
    EXPECT_EQ(S_OK, move(2, 0));
    EXPECT_EQ(times(), (Times{0, 1}));
    EXPECT_EQ(S_OK, move(0, 1)) << "in the place of the other";
    EXPECT_EQ(at(1), std::pair(S_OK, 3.0f));
    EXPECT_EQ(S_OK, set(4, 4));
    EXPECT_EQ(S_OK, transform.ShiftKeys(-1));
    EXPECT_EQ(times(), (Times{0, 3}));
    EXPECT_EQ(E_INVALIDARG, transform.ShiftKeys(1e300)) << "both would be at one time";
    EXPECT_EQ(E_INVALIDARG, transform.ShiftKeys(kInfinity));
    EXPECT_EQ(TYPE_E_ELEMENTNOTFOUND, transform.DeleteKey(ZXP_ROTATION, ZXP_FROM_START, 1));
    EXPECT_EQ(S_OK, transform.DeleteKey(ZXP_ROTATION, ZXP_FROM_START, 0));
    EXPECT_EQ(times(), Times{3});
    EXPECT_EQ(S_OK, transform.ClearChannels(ZXP_SCALING));
    EXPECT_EQ(times(), Times{3});
    EXPECT_EQ(S_OK, transform.ClearChannels(ZXP_ROTATION));
    EXPECT_EQ(times(), Times{});
}

TEST(Transform, RefusesChannelsListsAndNumbersThatAreNone)
{
    CZXPTransformImpl transform;
    float x, y, z;
    ULONG caps, count;
    double time;
    for (const ULONG channel : {0u, 0x000Eu, 0x00FFu, 0x70FFFu, ZXP_ALL_CHANNELS, 0x80000u}) {
        for (const HRESULT result :
             {transform.SetKeyValue(channel, 0, ZXP_FROM_START, 0, 0, 0, 0),
              transform.GetKeyValue(channel, 0, ZXP_FROM_START, &x, &y, &z, &caps),
              transform.MoveKey(channel, ZXP_FROM_START, 0, 0), transform.SetDelta(channel, 0, 0, 0)})
            EXPECT_EQ(E_INVALIDARG, result) << channel;
        EXPECT_EQ(channel == ZXP_ALL_CHANNELS ? S_OK : E_INVALIDARG, transform.ClearChannels(channel)) << channel;
    }
    for (const ULONG list : {0u, 3u, 5u, 8u}) {
        for (const HRESULT result :
             {transform.SetKeyValue(ZXP_SCALING, 0, list, 0, 0, 0, 0),
              transform.GetKeyValue(ZXP_SCALING, 0, list, &x, &y, &z, &caps),
              transform.MoveKey(ZXP_SCALING, list, 0, 0), transform.DeleteKey(ZXP_SCALING, list, 0)})
            EXPECT_EQ(E_INVALIDARG, result) << list;
    }
    const auto nan = static_cast<float>(kNaN);
    for (const HRESULT result : {transform.SetKeyValue(ZXP_SCALING, kNaN, ZXP_FROM_START, 0, 0, 0, 0),
                                 transform.SetKeyValue(ZXP_SCALING, kInfinity, ZXP_FROM_START, 0, 0, 0, 0),
                                 transform.SetKeyValue(ZXP_SCALING, 0, ZXP_FROM_START, 0, nan, 0, 0),
                                 transform.SetDelta(ZXP_SCALING, 0, 0, nan), transform.put_Speed(kNaN),
                                 transform.GetKeyTime(ZXP_SCALING, ZXP_FROM_START, 0, &time)})
        EXPECT_EQ(E_INVALIDARG, result);
    for (const float opacity : {-1.0f, 4294967296.0f, nan})
        EXPECT_EQ(E_INVALIDARG, transform.SetKeyValue(ZXP_OPACITY, 0, ZXP_FROM_START, opacity, 0, 0, 0)) << opacity;
    EXPECT_TRUE(KeysOf(transform).empty());
    for (const HRESULT result : {transform.GetKeyValue(ZXP_SCALING, 0, ZXP_FROM_START, nullptr, &y, &z, &caps),
                                 transform.GetKeyCount(ZXP_SCALING, ZXP_FROM_START, nullptr),
                                 transform.get_Caps(nullptr), transform.Load(static_cast<IUnknown*>(nullptr))})
        EXPECT_EQ(E_POINTER, result);
    EXPECT_EQ(S_OK, transform.GetKeyCount(ZXP_SCALING, ZXP_FROM_START, &count));
    EXPECT_EQ(count, 0u);
    void* out = &transform;
    EXPECT_EQ(E_NOTIMPL, transform.QueryInterface(IUnknown::IID, &out));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(static_cast<ULONG>(E_NOTIMPL), transform.AddRef());
}

TEST(Transform, HandsOutTheCornersOfItsSquare)
{
    CZXPTransformImpl transform;
    ZXPVector handles[4];
    ZXPReferenceFrame frame;
    const auto corners = [&] {
        EXPECT_EQ(S_OK, transform.GetHandles(handles, &frame));
        return std::vector(handles, handles + 4);
    };
    EXPECT_EQ(corners(), (std::vector<ZXPVector>{{-1, 1, 0}, {-1, -1, 0}, {1, -1, 0}, {1, 1, 0}}));
    EXPECT_EQ(std::tuple(frame.ulWidth, frame.ulHeight, frame.dFrameRate, frame.dAspectRatio),
              std::tuple(640u, 480u, 30.0, 4.0 / 3.0));
    EXPECT_EQ(S_OK, transform.put_FirstHandle({-1, 0.75f}));
    EXPECT_EQ(corners()[2], (ZXPVector{1, -0.75f, 0}));
    EXPECT_EQ(E_POINTER, transform.GetHandles(nullptr, &frame));
}

TEST(Documents, ThatCannotBeReadLeaveEverythingAsItWas)
{
    const std::string key = "<KeyFrame>" + Xml("Time", "r8", "1") + kVectorXml + "</KeyFrame>";
    for (const std::string& bad :
         {Xml("Speed", "r8", "fast"), Xml("Speed", "r8", "nan"), Xml("Caps", "ui4", "-1"),
          Xml("IsEditable", "boolean", "maybe"),
          "<Scaling><StartOffsetElements>" + key + "<KeyFrame>" + Xml("Time", "r8", "inf") +
              "</KeyFrame></StartOffsetElements></Scaling>",
          std::string("<Handles><PercentageElements><KeyFrame><Vector><x>left</x></Vector></KeyFrame></"
                      "PercentageElements></Handles>"),
          std::string(
              "<Opacity><EndOffsetElements><KeyFrame><Value>1e10</Value></KeyFrame></EndOffsetElements></Opacity>"),
          std::string("<RotationDelta><z>1e60</z></RotationDelta>")}) {
        CZXPTransformImpl transform;
        transform.SetKeyValue(ZXP_SCALING, 5, ZXP_FROM_START, 1, 1, 1, 1);
        const Keys before = KeysOf(transform);
        const XmlElement data = PlugInData("<StartPathID>7</StartPathID>" + bad);
        EXPECT_EQ(DISP_E_TYPEMISMATCH, transform.Load(data.Get())) << bad;
        EXPECT_EQ(KeysOf(transform), before) << bad;
        ULONG path = 1;
        EXPECT_EQ(S_OK, transform.get_PathID(ZXP_FROM_START, &path));
        EXPECT_EQ(path, 0u) << bad;
        CZXPPlugInHelper helper;
        XmlElement saved = data;
        EXPECT_EQ(DISP_E_TYPEMISMATCH, helper.Load(data)) << bad;
        EXPECT_EQ(E_FAIL, helper.Save(saved)) << bad;
        EXPECT_FALSE(saved);
    }
}

TEST(Documents, OfManyKeysInAnyOrderAreLoadedAtOnce)
{
    constexpr int kKeys = 100'000;
    std::string keys;
    for (int i = 0; i < kKeys; ++i)
        keys += "<KeyFrame><Time>" + std::to_string((i * 7919LL) % kKeys / 2) + "</Time><Vector><x>" +
                std::to_string(i) + "</x></Vector></KeyFrame>";
    XmlElement data = XmlElement::Parse("<plugin_data><Rotation><EndOffsetElements>" + keys +
                                        "</EndOffsetElements></Rotation></plugin_data>");
    CZXPTransformImpl transform;
    ASSERT_EQ(S_OK, transform.Load(data.Get()));
    ULONG count = 0;
    EXPECT_EQ(S_OK, transform.GetKeyCount(ZXP_ROTATION, ZXP_FROM_END, &count));
    EXPECT_EQ(count, kKeys / 2u);
    for (const ULONG index : {0u, 1u, count - 1}) {
        double time = -1;
        EXPECT_EQ(S_OK, transform.GetKeyTime(ZXP_ROTATION, ZXP_FROM_END, index, &time));
        EXPECT_EQ(time, index);
    }
    // Times 0 come with i * 7919 = 0 and 1 (modulo the number of keys); the later one of them counts.
    float x = 0, y, z;
    ULONG caps = 0;
    EXPECT_EQ(S_OK, transform.GetKeyValue(ZXP_ROTATION, 0, ZXP_FROM_END, &x, &y, &z, &caps));
    EXPECT_EQ(static_cast<LONGLONG>(x) * 7919 % kKeys, 1);
    EXPECT_EQ(caps, ZXP_ALL_CAPS);
    EXPECT_EQ(S_OK, transform.Save(data.Get()));
    EXPECT_EQ(data.Child("Rotation").Child("EndOffsetElements").Children().size(), count);
}

// Crop

CropSettings SettingsOf(IZXPCropSource& crop)
{
    CropSettings settings;
    VARIANT_BOOL mode = VARIANT_FALSE;
    EXPECT_EQ(S_OK, crop.get_EditMode(&settings.editMode));
    EXPECT_EQ(S_OK, crop.get_PresetID(&settings.presetID));
    EXPECT_EQ(S_OK, crop.get_CropMode(&mode));
    settings.cropMode = mode == VARIANT_TRUE;
    return settings;
}

TEST(CropSource, WritesTheRectangleOfAPanAndZoom)
{
    CZXPPlugInHelper helper;
    ASSERT_EQ(S_OK, helper.Load(XmlElement::New("ZXFPanZoom")));
    helper.CropSource().put_EditMode(3);
    helper.CropSource().put_CropMode(VARIANT_TRUE);
    EXPECT_EQ(S_OK, helper.CropSource().put_CropRect({0.25f, 0.125f, 0.75f, 0.875f}));
    XmlElement saved;
    ASSERT_EQ(S_OK, helper.Save(saved));
    const std::string rect = "<fRect>" + Xml("left", "r4", "0.25") + Xml("top", "r4", "0.125") +
                             Xml("right", "r4", "0.75") + Xml("bottom", "r4", "0.875") + "</fRect>";
    EXPECT_EQ(Markup(saved), "<ZXFPanZoom>" + kDefaultScalars + "<Crop><StartOffsetElements>" + KeyXml(0, rect) +
                                 "</StartOffsetElements></Crop>" + Xml("PresetID", "ui4", "0") +
                                 Xml("EditMode", "ui4", "3") + Xml("CropMode", "boolean", "1") + "</ZXFPanZoom>");
    CZXPCropSourceImpl loaded;
    ASSERT_EQ(S_OK, loaded.Load(saved.Get()));
    EXPECT_EQ(SettingsOf(loaded), (CropSettings{3, 0, true}));
    FloatRect read{};
    ULONG caps = 0;
    EXPECT_EQ(S_OK, loaded.GetKeyRect(0, ZXP_FROM_START, &read, &caps));
    EXPECT_EQ(read, (FloatRect{0.25f, 0.125f, 0.75f, 0.875f}));
    EXPECT_EQ(E_INVALIDARG, loaded.put_CropRect({0, 0, static_cast<float>(kNaN), 0}));
    EXPECT_EQ(TYPE_E_ELEMENTNOTFOUND, loaded.GetKeyRect(0, ZXP_PERCENT, &read, &caps));
    EXPECT_EQ(read, FloatRect{});
}

TEST(CropSource, KeepsItsSettingsWhereverTheyStand)
{
    const std::string direct =
        Xml("PresetID", "ui4", "6") + Xml("EditMode", "ui4", "5") + Xml("CropMode", "boolean", "1");
    // Content, settings, and what stands there after they were changed to 5, 6 and true.
    const std::tuple<const char*, CropSettings, const char*> cases[]{
        {"", {0, 0, false}, ""},
        {"<Crop/>", {0, 0, false}, "<Crop/>"},
        {"<EditMode>3</EditMode><CropMode>1</CropMode>", {3, 0, true}, ""},
        {"<Crop><EditMode>3</EditMode><CropMode>-1</CropMode></Crop><EditMode>9</EditMode><PresetID>2</PresetID>",
         {3, 2, true},
         "<Crop><EditMode dt:dt=\"ui4\">5</EditMode><CropMode dt:dt=\"boolean\">1</CropMode></Crop>"}};
    for (const auto& [content, settings, saved] : cases) {
        CZXPCropSourceImpl crop;
        XmlElement data = PlugInData(content);
        ASSERT_EQ(S_OK, crop.Load(data.Get())) << content;
        EXPECT_EQ(SettingsOf(crop), settings) << content;
        crop.put_EditMode(5);
        crop.put_PresetID(6);
        crop.put_CropMode(1);
        ASSERT_EQ(S_OK, crop.Save(data.Get())) << content;
        EXPECT_EQ(Markup(data), Saved(saved + direct)) << content;
        CZXPCropSourceImpl again;
        ASSERT_EQ(S_OK, again.Load(data.Get())) << content;
        EXPECT_EQ(SettingsOf(again), (CropSettings{5, 6, true})) << content;
    }
    XmlElement untouched = XmlElement::Parse("<plugin_data><html/></plugin_data>");
    CZXPCropSourceImpl crop;
    ASSERT_EQ(S_OK, crop.Load(untouched.Get()));
    ASSERT_EQ(S_OK, crop.Save(untouched.Get()));
    EXPECT_EQ(Markup(untouched), "<plugin_data><html/></plugin_data>") << "no word of a crop where there is none";
}

TEST(PlugInHelper, HandsOutOneWorkingCopyWithTheLatestValues)
{
    const XmlElement data = XmlElement::Parse("<plugin_data><html><body>text</body></html></plugin_data>");
    CZXPPlugInHelper helper;
    XmlElement first;
    XmlElement second;
    EXPECT_EQ(E_FAIL, helper.Save(first));
    EXPECT_EQ(E_INVALIDARG, helper.Load(XmlElement()));
    ASSERT_EQ(S_OK, helper.Load(data));
    ASSERT_EQ(S_OK, helper.Save(first));
    EXPECT_FALSE(first == data);
    EXPECT_EQ(Markup(first.Child("html")), "<html><body>text</body></html>");
    helper.Transform().SetKeyValue(ZXP_OPACITY, 0, ZXP_FROM_START, 128, 0, 0, ZXP_ALL_CAPS);
    ASSERT_EQ(S_OK, helper.Save(second));
    EXPECT_EQ(second, first);
    EXPECT_TRUE(first.Child("Opacity"));
    EXPECT_EQ(Markup(data), "<plugin_data><html><body>text</body></html></plugin_data>");
    CZXPPlugInHelper attached;
    ASSERT_EQ(S_OK, attached.Attach(first));
    ASSERT_EQ(S_OK, attached.Save(second));
    EXPECT_EQ(second, first);
}

// Parameter sets

Parameter Named(ULONG id, Variant value, std::string name)
{
    Parameter parameter;
    parameter.id = id;
    parameter.value = std::move(value);
    parameter.name = std::move(name);
    return parameter;
}

TEST(ParameterSet, KeepsEveryRecord)
{
    CZXPGenericParamSetImpl set;
    const Variant values[]{
        Variant(LONG{-1028}), Variant(u"C:\\m <&> \xe4.png"), Variant(u""), Variant(1.0 / 3), Variant(true), Variant()};
    for (ULONG id = 100; const Variant& value : values) {
        Parameter parameter = Named(id--, value, "  Mask File ");
        parameter.min = Variant(LONG{1});
        parameter.max = value;
        parameter.def = Variant(0.5);
        parameter.desc = "\xc3\xa4";
        parameter.usage = 0xFFFFFFFF;
        set.Add(parameter);
    }
    XmlElement data = XmlElement::Parse("<plugin_data><ParameterSet><old/></ParameterSet><html/></plugin_data>");
    set.Save(data);
    ASSERT_EQ(data.Children("ParameterSet").size(), 1u);
    const XmlElement second = data.Child("ParameterSet").Children()[1];
    EXPECT_EQ(XmlElement::Parse("<a xmlns:dt=\"urn:schemas-microsoft-com:datatypes\">" + second.Markup() + "</a>")
                  .Child("Parameter")
                  .Children()
                  .size(),
              8u);
    std::string order;
    for (const XmlElement& child : second.Children())
        order += std::string(child.Name()) + ":" + std::string(child.Attribute("dt:dt")) + " ";
    EXPECT_EQ(order, "Value:string ValueMin:i4 ValueMax:string ValueDef:r8 ParamID:ui4 Usage:ui4 Name: Desc: ");

    CZXPGenericParamSetImpl loaded;
    loaded.Load(XmlElement::Parse(data.Markup()));
    ULONG count = 0;
    EXPECT_EQ(S_OK, loaded.get_Count(&count));
    ASSERT_EQ(count, std::size(values));
    for (ULONG id = 100; const Variant& value : values) {
        Variant read, min, max, def;
        Bstr name, desc;
        ULONG usage = 0;
        VARTYPE type = VT_NULL;
        EXPECT_EQ(S_OK, loaded.GetValue(id, read.Put()));
        EXPECT_EQ(S_OK, loaded.GetType(id, &type));
        EXPECT_EQ(S_OK, loaded.GetRange(id, min.Put(), max.Put()));
        EXPECT_EQ(S_OK, loaded.GetDefault(id, def.Put()));
        EXPECT_EQ(S_OK, loaded.GetName(id, name.Put()));
        EXPECT_EQ(S_OK, loaded.GetDesc(id, desc.Put()));
        EXPECT_EQ(S_OK, loaded.GetUsage(id, &usage));
        for (const Variant* copy : {&read, &max}) {
            EXPECT_EQ(copy->vt, value.vt) << id;
            EXPECT_EQ(View(copy->As(VT_BSTR).bstrVal), View(value.As(VT_BSTR).bstrVal)) << id;
        }
        EXPECT_EQ(std::tuple(type, min.lVal, def.dblVal, usage), std::tuple(value.vt, LONG{1}, 0.5, 0xFFFFFFFF));
        EXPECT_EQ(name.View(), u"  Mask File ");
        EXPECT_EQ(desc.View(), u"\xe4");
        --id;
    }
}

TEST(ParameterSet, LoadsOverWhatIsDeclared)
{
    CZXPGenericParamSetImpl set;
    set.Add(Named(ZXP_PARAM_MASK_WIDTH, Variant(1.5), "Mask Width"));
    set.Add(Named(ZXP_PARAM_EFFECT_ID, Variant(LONG{1027}), "Effect ID"));
    EXPECT_THROW(set.Add(Named(ZXP_PARAM_EFFECT_ID, Variant(), "")), Error);
    set.Load(PlugInData("<ParameterSet><Parameter><Usage>3</Usage>" + Xml("Value", "i4", "5") +
                        "<ParamID>0</ParamID></Parameter><other/><Parameter><ParamID>77</ParamID></Parameter>"
                        "</ParameterSet>"));
    ULONG count = 0;
    set.get_Count(&count);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(set.Value(ZXP_PARAM_MASK_WIDTH).dblVal, 1.5);
    EXPECT_EQ(set.Value(ZXP_PARAM_EFFECT_ID).lVal, 5);
    Bstr name;
    EXPECT_EQ(S_OK, set.GetName(ZXP_PARAM_EFFECT_ID, name.Put()));
    EXPECT_EQ(name.View(), u"Effect ID");
    EXPECT_EQ(set.Value(77).vt, VT_EMPTY);
    set.Load(XmlElement());

    for (const std::string& bad : {"<ParamID>0</ParamID>" + Xml("Value", "i4", "many"), Xml("Value", "i4", "1"),
                                   std::string("<ParamID>x</ParamID>")}) {
        const XmlElement data = PlugInData("<ParameterSet><Parameter><ParamID>78</ParamID></Parameter><Parameter>" +
                                           bad + "</Parameter></ParameterSet>");
        EXPECT_THROW(set.Load(data), Error) << bad;
        EXPECT_FALSE(set.Has(78)) << bad;
        EXPECT_EQ(set.Value(ZXP_PARAM_EFFECT_ID).lVal, 5) << bad;
    }

    Variant value(u"left over");
    VARTYPE type = VT_I4;
    EXPECT_EQ(E_INVALIDARG, set.GetValue(99, value.Put()));
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(E_INVALIDARG, set.GetType(99, &type));
    EXPECT_EQ(E_INVALIDARG, set.GetName(99, name.Put()));
    EXPECT_FALSE(name);
    EXPECT_THROW(set.SetValue(99, Variant()), Error);
    EXPECT_EQ(E_POINTER, set.GetValue(0, nullptr));
    EXPECT_EQ(E_POINTER, set.GetRange(0, value.Put(), nullptr));
    EXPECT_EQ(E_POINTER, set.get_Count(nullptr));
}

} // namespace
} // namespace kv
