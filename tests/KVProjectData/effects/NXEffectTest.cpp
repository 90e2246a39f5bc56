#include "KVProjectData/effects/NXEffect.h"

#include "KVProjectData/effects/EffectState.h"
#include "KVProjectData/effects/ZXPPlugInHelper.h"
#include "engine/storyboard/StoryboardSupport.h"
#include "support/FakeEngine.h"
#include "support/Markup.h"

#include <gmock/gmock.h>

#include <limits>

namespace kv::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr LONG kLayer = 7;

std::string MarkupOf(const CNXEffect& effect)
{
    XmlElement pluginData;
    EXPECT_EQ(S_OK, effect.getPluginData(pluginData));
    return Plain(pluginData.Markup());
}

class NXEffectTest : public StoryboardTest {
protected:
    ~NXEffectTest() override { SharedEffectState().saveThemeMode = 0; }

    HRESULT Create(const std::string& pluginData = {}, LONG type = ZXE_EFFECT_OVERLAY)
    {
        return effect.Create(production.Get(), type, kLayer, Document(pluginData).Get());
    }

    static std::pair<double, double> Span(CNXEffect& of)
    {
        double from = kNaN, to = kNaN;
        EXPECT_EQ(S_OK, of.getStartOffset(from));
        EXPECT_EQ(S_OK, of.getEndOffset(to));
        return {from, to};
    }

    /// The effect that a layer shows at the start, as others find it.
    ComPtr<IUnknown> Found(LONG layer = kLayer)
    {
        ComPtr<IUnknown> found;
        objects->GetEffect(layer, 0.02, found.Put());
        return found;
    }

    CNXEffect effect;
};

TEST_F(NXEffectTest, AnEffectSpansTheFramesOfItsProduction)
{
    // The panel that it has, and for how long; the start and end of the effect.
    const std::tuple<const char*, double, double, double> cases[]{{"", 0, 0.016683, 0},
                                                                  {"still.png", 1, 0.016683, 0.984318},
                                                                  {"pal.mpg", 0, 0.02, 1.02},
                                                                  {"fast.mkv", 0, 0.01, 1.01}};
    for (const auto& [panel, duration, start, end] : cases) {
        const auto board = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
        board->Initialise();
        if (*panel) AddSource(board.Get(), Clips().File(panel));
        ComPtr<IUnknown> first;
        if (duration > 0) {
            board->GetPanelBaseObject(0, first.Put());
            EXPECT_EQ(S_OK, Call(first, &IBaseObject::put_Duration, duration));
        }
        CNXEffect added;
        EXPECT_EQ(S_OK, added.Create(board.Get(), ZXE_EFFECT_TEXT, kLayer, nullptr));
        const auto [from, to] = Span(added);
        EXPECT_NEAR(start, from, 1e-6);
        EXPECT_NEAR(end, to, 1e-6);
    }
}

TEST_F(NXEffectTest, IsCreatedFoundAndRemovedOnce)
{
    CNXEffect other, third;
    double ratio = 0;
    EXPECT_EQ(S_FALSE, effect.getAspectRatio(ratio));
    EXPECT_EQ(4.0 / 3.0, ratio);
    EXPECT_FALSE(effect);
    EXPECT_EQ(S_FALSE, effect.Remove());
    EXPECT_EQ(S_FALSE, effect.Attach(production.Get(), kLayer)) << "there is none";
    EXPECT_EQ(S_OK, Create());
    EXPECT_EQ(S_FALSE, Create());
    EXPECT_EQ(S_FALSE, effect.Create(nullptr, 0, 1, nullptr));
    EXPECT_EQ(S_FALSE, effect.Attach(nullptr, kLayer));
    EXPECT_THAT(TakeHeard(), ElementsAre(Heard{12, {kLayer, 1}}));
    EXPECT_EQ(S_OK, other.Attach(production.Get(), kLayer));
    EXPECT_EQ(S_FALSE, third.Attach(production.Get(), kLayer + 1));
    LONG id = 7;
    EXPECT_EQ(S_OK, other.getEffectID(id));
    EXPECT_EQ(1, id);
    EXPECT_EQ(S_OK, other.setGroupID(33));
    EXPECT_EQ(33, Get(Found(), &IEffectInfo::get_GroupID));
    EXPECT_EQ(S_OK, other.setStartOffset(0.5));
    EXPECT_EQ(S_OK, other.setEndOffset(2.5));
    EXPECT_EQ(std::pair(0.5, 2.5), Span(effect)) << "both hold the same effect";
    EXPECT_EQ(S_OK, Query<IProductionInfo>(production)->put_AspectRatio(16.0 / 9.0));
    EXPECT_EQ(S_OK, effect.getAspectRatio(ratio));
    EXPECT_EQ(16.0 / 9.0, ratio);
    other.Detach();
    EXPECT_FALSE(other);
    EXPECT_EQ(S_OK, effect.Remove());
    EXPECT_FALSE(effect);
    EXPECT_FALSE(Found());
}

TEST_F(NXEffectTest, LivesOnBehindTheBackOfItsHolder)
{
    production->OpenUndoBlock();
    EXPECT_EQ(S_OK, Create("<mark/>"));
    production->CloseUndoBlock(VARIANT_TRUE);
    EXPECT_EQ(S_OK, production->Undo());
    EXPECT_TRUE(effect);
    EXPECT_THAT(MarkupOf(effect), HasSubstr("<mark/>")) << "it can be read";
    EXPECT_EQ(ZXE_E_NOT_OPEN, effect.setChannel(ZXP_ROTATION, 0, ZXP_FROM_START, {0, 0, 45}));
    EXPECT_EQ(ZXE_E_NOT_OPEN, effect.setMaskFile(Bstr(u"mask.png").Get()));
    EXPECT_THAT(MarkupOf(effect), Not(HasSubstr("Mask"))) << "nothing is half done";
    EXPECT_EQ(E_INVALIDARG, effect.Remove());
    EXPECT_TRUE(effect);
    EXPECT_EQ(S_OK, production->Redo());
    EXPECT_EQ(S_OK, effect.setChannel(ZXP_ROTATION, 0, ZXP_FROM_START, {0, 0, 45}));
    EXPECT_EQ(S_OK, production->Close());
    EXPECT_EQ(ZXE_E_NOT_OPEN, effect.Remove());
    sink.Reset();
    edit.Reset();
    objects.Reset();
    production.Reset();
    EXPECT_EQ(ZXE_E_NOT_OPEN, effect.Remove()) << "there is no production any more";
    EXPECT_THAT(Reported("NXEffect"),
                ElementsAre(ResultText(ZXE_E_NOT_OPEN) + " = spParentProd->get_ParentProduction(&spSbd)"));
}

// The parameter document

TEST_F(NXEffectTest, AnEditReplacesTheDocumentAndKeepsTheOldOne)
{
    EXPECT_EQ(S_OK, Create());
    EXPECT_EQ(S_OK, effect.setDocument(
                        XmlElement::Parse("<effect><plugin_data><a/></plugin_data><uuid>u</uuid></effect>").Get()));
    ComPtr<IXMLDOMNode> before, after;
    EXPECT_EQ(S_OK, effect.getDocument(before));
    EXPECT_EQ(S_OK, effect.Edit([](XmlElement& pluginData) {
        pluginData.Add("b");
        return true;
    }));
    EXPECT_EQ(S_OK, effect.getDocument(after));
    EXPECT_EQ("<effect><plugin_data><a/></plugin_data><uuid>u</uuid></effect>",
              Plain(XmlElement(before.Get()).Markup()));
    EXPECT_EQ("<effect><uuid>u</uuid><plugin_data><a/><b/></plugin_data></effect>",
              Plain(XmlElement(after.Get()).Markup()));

    EXPECT_EQ(S_FALSE, effect.Edit([](XmlElement& pluginData) {
        pluginData.Add("c");
        return false;
    }));
    EXPECT_EQ(E_OUTOFMEMORY, effect.Edit([](XmlElement&) -> bool { throw std::bad_alloc(); }));
    EXPECT_EQ(E_FAIL, effect.Edit([](XmlElement& pluginData) -> bool {
        pluginData.Add("d");
        throw Error(E_FAIL);
    }));
    ComPtr<IXMLDOMNode> last;
    EXPECT_EQ(S_OK, effect.getDocument(last));
    EXPECT_EQ(after, last);
}

TEST_F(NXEffectTest, FindsPluginDataInEveryKindOfDocument)
{
    const auto change = [](XmlElement& pluginData) {
        pluginData.Add("b");
        return true;
    };
    const XmlElement bare = XmlElement::Parse("<plugin_data><a/></plugin_data>");
    ComPtr<IXMLDOMDocument> document;
    Document("<a/>")->get_ownerDocument(document.Put());
    ComPtr<IXMLDOMNode> root(Document("<a/>"));
    EXPECT_EQ(S_OK, document->appendChild(root.Get(), nullptr));
    EXPECT_EQ(S_OK, Create());
    for (IXMLDOMNode* each : {bare.Get(), static_cast<IXMLDOMNode*>(document.Get())}) {
        EXPECT_EQ(S_OK, effect.setDocument(each));
        EXPECT_EQ(S_OK, effect.Edit(change));
        EXPECT_EQ("<plugin_data><a/><b/></plugin_data>", MarkupOf(effect));
        ComPtr<IXMLDOMNode> now;
        EXPECT_EQ(S_OK, effect.getDocument(now));
        EXPECT_EQ(static_cast<bool>(Query<IXMLDOMDocument>(each)), static_cast<bool>(Query<IXMLDOMDocument>(now)));
    }

    CNXEffect without;
    EXPECT_EQ(S_OK, without.Create(production.Get(), ZXE_EFFECT_TEXT, 9, nullptr));
    XmlElement pluginData;
    ComPtr<IXMLDOMNode> none;
    ZXPVector value{};
    for (const bool strange : {false, true}) {
        if (strange) {
            EXPECT_EQ(S_OK, without.setDocument(XmlElement::Parse("<effect><other/></effect>").Get()));
        }
        EXPECT_EQ(strange ? S_OK : S_FALSE, without.getDocument(none));
        EXPECT_EQ(E_FAIL, without.getPluginData(pluginData));
        EXPECT_EQ(E_FAIL, without.Edit(change));
        EXPECT_EQ(E_FAIL, without.getChannel(ZXP_SCALING, 0, ZXP_FROM_START, value));
    }
    EXPECT_EQ(E_POINTER, without.setDocument(nullptr));
}

TEST_F(NXEffectTest, DocumentsArePushedWithoutRefreshInSaveThemeMode)
{
    const auto engine = Make<FakeEngine>();
    CNXEffect faked;
    EXPECT_EQ(S_OK, faked.Create(engine->Controlling(), 0, 1, nullptr));
    engine->document = Document("");
    for (const LONG mode : {0, 1, -5, 0}) {
        SharedEffectState().saveThemeMode = mode;
        engine->pushes.clear();
        EXPECT_EQ(S_OK, faked.setMaskSize(1, mode + 9));
        EXPECT_EQ(S_OK, faked.setDocument(Document("").Get()));
        const VARIANT_BOOL refresh = mode == 0 ? VARIANT_TRUE : VARIANT_FALSE;
        EXPECT_THAT(engine->pushes, ElementsAre(refresh, refresh));
    }
}

// The transform

TEST_F(NXEffectTest, ChannelsAnswerWhatWasSet)
{
    EXPECT_EQ(S_OK, Create("<html>text</html><Opacity><StartOffsetElements><KeyFrame><Time>0</Time>"
                           "<Value>9</Value></KeyFrame></StartOffsetElements></Opacity>"));
    const auto get = [&](ULONG channel, double time = 0, ULONG list = ZXP_FROM_START) {
        ZXPVector value{7, 7, 7};
        const HRESULT result = effect.getChannel(channel, time, list, value);
        return std::tuple(result, value.x, value.y, value.z);
    };
    EXPECT_EQ(std::tuple(S_OK, 0.f, 0.f, 0.f), get(ZXP_TRANSLATION));
    EXPECT_EQ(std::tuple(S_OK, 0.f, 0.f, 0.f), get(ZXP_ROTATION));
    EXPECT_EQ(std::tuple(S_OK, 1.f, 1.f, 1.f), get(ZXP_SCALING));
    EXPECT_EQ(std::tuple(S_OK, 9.f, 0.f, 0.f), get(ZXP_OPACITY));
    EXPECT_EQ(std::tuple(TYPE_E_ELEMENTNOTFOUND, 0.f, 0.f, 0.f), get(ZXP_HANDLES));
    EXPECT_THAT(Reported("NXEffect"), ElementsAre(ResultText(TYPE_E_ELEMENTNOTFOUND)));
    EXPECT_EQ(std::tuple(E_INVALIDARG, 0.f, 0.f, 0.f), get(0x000E));
    EXPECT_THAT(Reported("NXEffect"), ElementsAre("0x80070057"));

    float number = 0.25;
    for (const ULONG channel : {ZXP_TRANSLATION, ZXP_ROTATION, ZXP_SCALING, ZXP_HANDLES}) {
        for (const ULONG list : {ZXP_FROM_START, ZXP_FROM_END, ZXP_PERCENT}) {
            number *= -1.5f;
            EXPECT_EQ(S_OK, effect.setChannel(channel, 0, list, {number, number, number}));
            EXPECT_EQ(S_OK, effect.setChannel(channel, 0, list, {number, 2 * number, 3 * number}));
            EXPECT_EQ(std::tuple(S_OK, number, 2 * number, 3 * number), get(channel, 0, list));
        }
    }
    EXPECT_EQ(std::tuple(S_OK, 1.f, 1.f, 1.f), get(ZXP_SCALING, 0.1)) << "no key at exactly that time";
    EXPECT_EQ(std::tuple(S_OK, 9.f, 0.f, 0.f), get(ZXP_OPACITY));
    const std::string markup = MarkupOf(effect);
    EXPECT_THAT(markup, HasSubstr("<html>text</html>"));
    EXPECT_THAT(markup, HasSubstr(">462847</Caps>"));
    for (const auto& [channel, list, value] : {std::tuple(0x000EU, ZXP_FROM_START, 1.f),
                                               {ZXP_SCALING, 3U, 1.f},
                                               {ZXP_SCALING, ZXP_FROM_START, std::numeric_limits<float>::infinity()}})
        EXPECT_EQ(E_INVALIDARG, effect.setChannel(channel, 0, list, {value, 1, 1}));
    EXPECT_EQ(E_INVALIDARG, effect.setChannel(ZXP_SCALING, kNaN, ZXP_FROM_START, {1, 1, 1}));
    EXPECT_EQ(markup, MarkupOf(effect));

    std::array<ZXPVector, 4> handles{};
    EXPECT_EQ(S_OK, effect.getHandles(handles));
    EXPECT_EQ((ZXPVector{1, -1, 0}), handles[2]);
}

TEST_F(NXEffectTest, WhatCannotBeReadIsNotOverwritten)
{
    EXPECT_EQ(S_OK, Create("<Scaling><StartOffsetElements><KeyFrame><Time>soon</Time></KeyFrame></StartOffsetElements>"
                           "</Scaling><ParameterSet><Parameter><ParamID>x</ParamID></Parameter></ParameterSet>"));
    const std::string markup = MarkupOf(effect);
    ZXPVector value{};
    EXPECT_EQ(S_OK, effect.getChannel(ZXP_ROTATION, 0, ZXP_FROM_START, value)) << "of the others nothing is read";
    EXPECT_EQ(DISP_E_TYPEMISMATCH, effect.getChannel(ZXP_SCALING, 0, ZXP_FROM_START, value));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, effect.setChannel(ZXP_SCALING, 0, ZXP_FROM_START, {0, 0, 1}));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, effect.setMaskFile(Bstr(u"a.png").Get()));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, effect.setMaskSize(1, 1));
    EXPECT_THAT(Reported("NXEffect"), ElementsAre(ResultText(DISP_E_TYPEMISMATCH)));
    EXPECT_EQ(markup, MarkupOf(effect));
    Bstr mask;
    EXPECT_EQ(S_FALSE, effect.getMaskFile(mask));
    EXPECT_EQ(S_OK, effect.setChannel(ZXP_ROTATION, 0, ZXP_FROM_START, {0, 0, 1}));
    EXPECT_THAT(MarkupOf(effect), HasSubstr("<Time>soon</Time>"));
}

TEST_F(NXEffectTest, AChannelIsSetAsByAWholeTransform)
{
    const auto set = [](IZXPTransform& transform) {
        return transform.SetKeyValue(ZXP_ROTATION, 0, ZXP_FROM_START, 1, 2, 3, ZXP_ALL_CAPS);
    };
    const auto document = [&](bool crop, bool others) {
        XmlElement pluginData = XmlElement::New("plugin_data");
        CZXPTransformImpl transform;
        for (const ULONG channel : {ZXP_SCALING, ZXP_OPACITY, ZXP_TRANSLATION})
            transform.SetKeyValue(channel, 0.5, ZXP_PERCENT, 1, 2, 3, 4);
        transform.put_Speed(2);
        transform.put_PathID(ZXP_FROM_END, 3);
        if (others) set(transform);
        transform.Save(pluginData);
        pluginData.Remove("Caps");
        pluginData.Add("html").AddText("b", "text");
        if (others) pluginData.MoveLast("Translation");
        if (crop) pluginData.Add("Crop").Add("EditMode", ULONG{3});
        return pluginData;
    };
    EXPECT_EQ(S_OK, Create());
    for (const bool crop : {false, true}) {
        for (const bool others : {false, true}) {
            XmlElement expected = document(crop, others);
            EXPECT_EQ(S_OK, effect.setDocument(expected.Copy().Get()));
            EXPECT_EQ(S_OK, effect.setChannel(ZXP_ROTATION, 0, ZXP_FROM_START, {1, 2, 3}));
            CZXPTransformImpl transform;
            transform.Load(expected);
            EXPECT_EQ(S_OK, set(transform));
            transform.Save(expected);
            if (!crop) {
                EXPECT_EQ(Plain(expected.Markup()), MarkupOf(effect));
                continue;
            }
            XmlElement pluginData;
            EXPECT_EQ(S_OK, effect.getPluginData(pluginData));
            for (const char* channel : {"Scaling", "Translation", "Rotation", "Opacity"})
                EXPECT_EQ(3U, pluginData.Child(channel).Typed<ULONG>("EditMode")) << channel;
        }
    }
}

// Masks and sources

TEST_F(NXEffectTest, TheMaskIsToldToTheEffectAndInItsParameters)
{
    const auto parameter = [&](ULONG id) {
        XmlElement pluginData;
        EXPECT_EQ(S_OK, effect.getPluginData(pluginData));
        std::vector<std::string> values;
        for (const XmlElement& each : pluginData.Child("ParameterSet").Children("Parameter")) {
            if (each.Typed<ULONG>("ParamID") == id) values.push_back(*each.Typed<std::string>("Value"));
        }
        return values;
    };
    EXPECT_EQ(S_OK, Create("<ParameterSet><Parameter><ParamID>5</ParamID><Value>kept</Value></Parameter><Parameter>"
                           "<ParamID>53</ParamID><Value>2.50</Value></Parameter></ParameterSet><last/>"));
    for (const Bstr& file :
         {Clips().File("still.png"), Clips().File("none.png"), Bstr(u""), Clips().File("still.png"), Bstr()}) {
        EXPECT_EQ(S_OK, effect.setMaskFile(file.Get()));
        Bstr answer;
        EXPECT_EQ(file.Empty() ? S_FALSE : S_OK, effect.getMaskFile(answer));
        EXPECT_EQ(file.View(), answer.View());
        EXPECT_THAT(parameter(0), ElementsAre(file.Empty() ? "1027" : "1028"));
        EXPECT_THAT(parameter(51), ElementsAre(ToUtf8(file.View())));
        EXPECT_THAT(parameter(5), ElementsAre("kept"));
        EXPECT_THAT(MarkupOf(effect), HasSubstr("<last/><ParameterSet>"));
    }
    EXPECT_THAT(MarkupOf(effect), HasSubstr("<Name>Effect ID</Name>"));
    EXPECT_THAT(MarkupOf(effect), HasSubstr("<Name>Mask File</Name>"));
    // As it is, and a width that is not told is 0; another; the same.
    for (const auto& [width, changes] : {std::pair{0.0, false}, {100.0, true}, {100.0, false}}) {
        ComPtr<IXMLDOMNode> before, after;
        EXPECT_EQ(S_OK, effect.getDocument(before));
        EXPECT_EQ(S_OK, effect.setMaskSize(width, 2.5));
        EXPECT_EQ(S_OK, effect.getDocument(after));
        EXPECT_EQ(changes, before.Get() != after.Get()) << width;
    }
    EXPECT_THAT(parameter(52), ElementsAre("100"));
    EXPECT_THAT(MarkupOf(effect), HasSubstr("<Name>Mask Width</Name>"));
    EXPECT_EQ(E_INVALIDARG, effect.setMaskSize(kNaN, 1));
}

TEST_F(NXEffectTest, TheSourceOfAnOverlay)
{
    EXPECT_EQ(S_OK, Create());
    Bstr file;
    EXPECT_EQ(S_OK, effect.getSourceFile(file));
    EXPECT_FALSE(file);
    EXPECT_EQ(E_INVALIDARG, effect.setSourceFile(nullptr));
    EXPECT_EQ(S_OK, effect.setSourceFile(Clips().File("pal.mpg").Get()));
    EXPECT_EQ(S_OK, effect.getSourceFile(file));
    EXPECT_EQ(Clips().File("pal.mpg").View(), file.View());
    EXPECT_EQ(VARIANT_TRUE, Get(Found(), &ISourceFile::get_Repeat));
    EXPECT_EQ(VARIANT_FALSE, Get(Found(), &INativeInfo::get_UseNativeAudio));
    EXPECT_EQ(S_OK, effect.setInPoint(0.25));
    EXPECT_EQ(S_OK, effect.setOutPoint(0.75));
    EXPECT_EQ(E_FAIL, effect.setOutPoint(5)) << "past the end of the source";
    EXPECT_EQ(E_INVALIDARG, effect.setInPoint(-1));
    EXPECT_EQ(S_OK, effect.setSourceRotation(90));
    double in = 0, out = 0, aspect = 0;
    LONG rotation = 0;
    EXPECT_EQ(S_OK, effect.getInPoint(in));
    EXPECT_EQ(S_OK, effect.getOutPoint(out));
    EXPECT_EQ(S_OK, effect.getSourceRotation(rotation));
    EXPECT_EQ(S_OK, effect.getSourceAspectRatio(aspect));
    EXPECT_EQ(std::tuple(0.25, 0.75, 90), std::tuple(in, out, rotation));
    EXPECT_NEAR(720.0 / 576, aspect, 0.01);

    EXPECT_EQ(S_OK, effect.setSourceCrop(0.125, 0.25, 0.5, 0.75));
    ComPtr<IXMLDOMNode> panZoom;
    EXPECT_EQ(S_OK, Query<ISourceFile>(Found())->GetPanZoom(panZoom.Put()));
    EXPECT_EQ("ZXFPanZoom", XmlElement(panZoom.Get()).Name());
    CZXPPlugInHelper helper;
    ULONG mode = 0, caps = 0;
    VARIANT_BOOL cropped = VARIANT_FALSE;
    FloatRect rect{};
    EXPECT_EQ(S_OK, helper.Load(XmlElement(panZoom.Get())));
    helper.CropSource().get_EditMode(&mode);
    helper.CropSource().get_CropMode(&cropped);
    EXPECT_EQ(S_OK, helper.CropSource().GetKeyRect(0, ZXP_FROM_START, &rect, &caps));
    EXPECT_EQ(std::tuple(3U, VARIANT_TRUE), std::tuple(mode, cropped));
    EXPECT_EQ((FloatRect{0.125, 0.25, 0.5, 0.75}), rect);
    EXPECT_EQ(E_INVALIDARG, effect.setSourceCrop(kNaN, 0, 1, 1));
}

TEST_F(NXEffectTest, ATextHasNoSource)
{
    EXPECT_EQ(S_OK, Create({}, ZXE_EFFECT_TEXT));
    Bstr file(u"x");
    double number = 7;
    LONG degrees = 7;
    EXPECT_EQ(S_OK, effect.getSourceFile(file));
    EXPECT_FALSE(file);
    for (const HRESULT result :
         {effect.setSourceFile(Bstr(u"a").Get()), effect.getSourceAspectRatio(number), effect.getInPoint(number),
          effect.setInPoint(1), effect.getOutPoint(number), effect.setOutPoint(1), effect.getSourceRotation(degrees),
          effect.setSourceRotation(1), effect.setSourceCrop(0, 0, 1, 1)})
        EXPECT_EQ(S_FALSE, result);
    EXPECT_EQ(std::tuple(0.0, 0), std::tuple(number, degrees));
}

TEST_F(NXEffectTest, ASinkMayLetGoOfEverything)
{
    IUnknown* board = production.Get();
    sink->hook = [&] {
        effect.Detach();
        production.Reset();
        edit.Reset();
        objects.Reset();
    };
    EXPECT_EQ(S_OK, effect.Create(board, ZXE_EFFECT_OVERLAY, kLayer, nullptr));
    EXPECT_TRUE(effect) << "it is held when the call that added it returns";
    EXPECT_EQ(ZXE_E_NOT_OPEN, effect.setDocument(Document("").Get()));
}

// Failures

/// Every operation that needs an effect.
const std::map<std::string, std::function<HRESULT(CNXEffect&)>> kOperations{
    {"effect id", [v = LONG()](CNXEffect& e) mutable { return e.getEffectID(v); }},
    {"group id", [](CNXEffect& e) { return e.setGroupID(1); }},
    {"get start", [v = double()](CNXEffect& e) mutable { return e.getStartOffset(v); }},
    {"put start", [](CNXEffect& e) { return e.setStartOffset(1); }},
    {"get end", [v = double()](CNXEffect& e) mutable { return e.getEndOffset(v); }},
    {"put end", [](CNXEffect& e) { return e.setEndOffset(1); }},
    {"aspect", [v = double()](CNXEffect& e) mutable { return e.getAspectRatio(v); }},
    {"remove", [](CNXEffect& e) { return e.Remove(); }},
    {"get document", [v = ComPtr<IXMLDOMNode>()](CNXEffect& e) mutable { return e.getDocument(v); }},
    {"put document", [](CNXEffect& e) { return e.setDocument(XmlElement::New("plugin_data").Get()); }},
    {"get channel",
     [v = ZXPVector()](CNXEffect& e) mutable { return e.getChannel(ZXP_SCALING, 0, ZXP_FROM_START, v); }},
    {"put channel", [](CNXEffect& e) { return e.setChannel(ZXP_SCALING, 0, ZXP_FROM_START, {}); }},
    {"handles", [v = std::array<ZXPVector, 4>()](CNXEffect& e) mutable { return e.getHandles(v); }},
    {"get mask", [v = Bstr()](CNXEffect& e) mutable { return e.getMaskFile(v); }},
    {"put mask", [](CNXEffect& e) { return e.setMaskFile(Bstr(u"a").Get()); }},
    {"mask size", [](CNXEffect& e) { return e.setMaskSize(1, 1); }},
    {"get file", [v = Bstr()](CNXEffect& e) mutable { return e.getSourceFile(v); }},
    {"put file", [](CNXEffect& e) { return e.setSourceFile(Bstr(u"a").Get()); }},
    {"get in", [v = double()](CNXEffect& e) mutable { return e.getInPoint(v); }},
    {"put in", [](CNXEffect& e) { return e.setInPoint(1); }},
    {"get out", [v = double()](CNXEffect& e) mutable { return e.getOutPoint(v); }},
    {"put out", [](CNXEffect& e) { return e.setOutPoint(1); }},
    {"get rotation", [v = LONG()](CNXEffect& e) mutable { return e.getSourceRotation(v); }},
    {"put rotation", [](CNXEffect& e) { return e.setSourceRotation(1); }},
    {"crop", [](CNXEffect& e) { return e.setSourceCrop(0, 0, 1, 1); }},
};

TEST(NXEffectFailures, WithoutAnEffect)
{
    const std::set<std::string> reported{"get start", "put start", "get end", "put end",
                                         "get in",    "put in",    "get out", "put out"};
    const std::set<std::string> idle{"aspect", "remove"};
    for (const auto& [name, run] : kOperations) {
        CNXEffect effect;
        ZXUReportError("of an earlier operation");
        EXPECT_EQ(reported.contains(name) ? E_POINTER
                  : idle.contains(name)   ? S_FALSE
                                          : E_UNEXPECTED,
                  run(effect))
            << name;
        EXPECT_EQ(reported.contains(name) ? std::vector<std::string>{"NULL = (IUnknown*)m_pUnkEffect"}
                                          : std::vector<std::string>(),
                  Reported("NXEffect"))
            << name;
    }
    CNXEffect effect;
    EXPECT_EQ(E_POINTER, effect.Create(nullptr, 0, 1, nullptr));
    EXPECT_THAT(Reported("NXEffect"), ElementsAre());
    EXPECT_EQ(E_POINTER, effect.Attach(nullptr, 1));
    EXPECT_THAT(Reported("NXEffect"), ElementsAre("NULL = (IUnknown*)pUnkSbd"));
    EXPECT_EQ(E_POINTER, effect.Attach(Make<RecordingProductionSink>().Get(), 1)) << "no storyboard";
    EXPECT_THAT(Reported("NXEffect"), ElementsAre("NULL = (IZXEProductionData*)spSbd"));
    EXPECT_EQ(E_POINTER, effect.Create(Make<RecordingProductionSink>().Get(), 0, 1, nullptr));
    EXPECT_THAT(Reported("NXEffect"), ElementsAre("NULL = (IEditData*)spEditData"));
    EXPECT_FALSE(effect);
}

TEST(NXEffectFailures, AFailingCallIsReportedByItsTextAndItsResultPassedOn)
{
    constexpr HRESULT kBad = MakeResult(0xC2000099);
    // Operation, method, and what is reported: each without the result, and none for a call that has no text.
    const std::tuple<const char*, const char*, const char*> calls[]{
        {"create", "AddProductionEffect",
         "spEditData->AddProductionEffect(layer, eType, spXMLParams, NULL, 0, 0.0, &m_pUnkEffect)"},
        {"create", "GetProductionObj", "spSbd->GetProductionObj(&spUnkProdObj)"},
        {"create", "put_StartOffset", "spSubObject->put_StartOffset(startSecs); setStartOffset(ta.FrameMid(0.0))"},
        {"create", "put_EndOffset", "spSubObject->put_EndOffset(endSecs); setEndOffset(ta.FrameMid(dDuration))"},
        {"attach", "GetProductionObj", "spSbd->GetProductionObj(&spUnkProdObj)"},
        {"attach", "GetEffect", "plain"},
        {"effect id", "get_EffectID", "plain"},
        {"group id", "SetGroupID", "plain"},
        {"get start", "get_StartOffset", "spSubObject->get_StartOffset(&startSecs)"},
        {"put start", "put_StartOffset", "spSubObject->put_StartOffset(startSecs)"},
        {"get end", "get_EndOffset", "spSubObject->get_EndOffset(&endSecs)"},
        {"put end", "put_EndOffset", "spSubObject->put_EndOffset(endSecs)"},
        {"aspect", "get_ParentProduction", "spParentProd->get_ParentProduction(&spSbd)"},
        {"aspect", "GetProductionObj", "spSbd->GetProductionObj(&spUnkProdObj)"},
        {"aspect", "get_AspectRatio", "spProdInfo->get_AspectRatio(&dAspectRatio)"},
        {"remove", "get_EffectID", "plain"},
        {"remove", "get_ParentProduction", "spParentProd->get_ParentProduction(&spSbd)"},
        {"remove", "DeleteProductionEffect", "plain"},
        {"get document", "GetParameterDocument", "plain"},
        {"put document", "SetParameterDocument", "plain"},
        {"get channel", "GetParameterDocument", "plain"},
        {"put channel", "SetParameterDocument", "plain"},
        {"put mask", "SetMaskFile", "plain"},
        {"mask size", "SetParameterDocument", "plain"},
        {"get mask", "GetSourceObject", "plain"},
        {"get mask", "get_FileName", "plain"},
        {"put file", "put_FileName", "plain"},
        {"put file", "put_Repeat", "plain"},
        {"put file", "put_UseNativeAudio", "plain"},
        {"get in", "get_InPoint", "plain"},
        {"put rotation", "put_Rotation", "plain"},
        {"crop", "SetPanZoom", "plain"}};
    for (const auto& [operation, method, reported] : calls) {
        const auto engine = Make<FakeEngine>();
        engine->document = XmlElement::New("plugin_data").Get();
        CNXEffect effect;
        const bool creates = std::string_view(operation) == "create";
        const bool attaches = std::string_view(operation) == "attach";
        if (!creates && !attaches) {
            EXPECT_EQ(S_OK, effect.Create(engine->Controlling(), 0, 1, nullptr));
        }
        engine->results[method] = kBad;
        EXPECT_EQ(kBad, creates    ? effect.Create(engine->Controlling(), 0, 1, nullptr)
                        : attaches ? effect.Attach(engine->Controlling(), 1)
                                   : kOperations.at(operation)(effect))
            << operation;
        EXPECT_EQ(reported, CallsReported("NXEffect", kBad)) << operation << " " << method;
        const bool isHeld = !attaches && !(creates && std::string_view(method) == "AddProductionEffect");
        EXPECT_EQ(isHeld, static_cast<bool>(effect)) << operation << " " << method;
    }
    const auto engine = Make<FakeEngine>();
    engine->results["SetMaskFile"] = ZXE_E_MASK_NOT_READ;
    engine->document = XmlElement::New("plugin_data").Get();
    CNXEffect effect;
    EXPECT_EQ(S_OK, effect.Attach(engine->Controlling(), 1));
    EXPECT_EQ(S_OK, kOperations.at("put mask")(effect)) << "as good as set";
    EXPECT_THAT(engine->pushes, ElementsAre(VARIANT_TRUE));
    engine->lacks = {"ISubObject"};
    EXPECT_EQ(E_POINTER, kOperations.at("get start")(effect));
    EXPECT_THAT(Reported("NXEffect"), ElementsAre("NULL = (ISubObject*)spSubObject"));
    engine->lacks = {"IParentProduction"};
    double ratio = 0;
    EXPECT_EQ(S_FALSE, effect.getAspectRatio(ratio));
    EXPECT_EQ(4.0 / 3.0, ratio);
}

} // namespace
} // namespace kv::test
