#include "SbdUtils/SbdUtils.h"

#include "SbdUtils/ProductionObject.h"
#include "engine/storyboard/StoryboardSupport.h"
#include "support/FakeEngine.h"

#include <gmock/gmock.h>

#include <limits>

namespace kv::test {
namespace {

using sbd::SoundOf;
using testing::ElementsAre;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(FrameClock, FindsTheMiddleOfAFrame)
{
    // Rate, time, middle.
    const std::tuple<double, double, double> cases[]{{25, 1, 1.02},       {25, 0, 0.02},        {25, 0.0399, 0.02},
                                                     {25, 0.04, 0.06},    {29.97, 0, 0.016683}, {0, 0, 0.016683},
                                                     {kNaN, 0, 0.016683}, {-1, 0.1, 0.083417}};
    for (const auto& [rate, time, middle] : cases)
        EXPECT_NEAR(middle, FrameClock(rate).FrameMid(time), 1e-6) << rate << " " << time;
    EXPECT_NEAR(0.98, FrameClock(25).LastFrameMid(1.0), 1e-9);
    EXPECT_NEAR(0.98, FrameClock(25).LastFrameMid(1.039), 1e-9) << "the frame at the end is not whole";
}

class SbdUtilsTest : public StoryboardTest {
protected:
    IUnknown* Board() { return production.Get(); }
    Bstr Clip() { return Clips().File("pal.mpg"); }
    Bstr Still() { return Clips().File("still.png"); }

    std::u16string Source(HRESULT (*get)(IUnknown*, BSTR*))
    {
        Bstr source;
        EXPECT_EQ(S_OK, get(Board(), source.Put()));
        EXPECT_TRUE(source);
        return std::u16string(source.View());
    }
    std::u16string Video() { return Source(&sbd::GetVideoSource); }
    std::u16string Sound() { return Source(&sbd::GetBackgroundAudio); }
    double Duration()
    {
        double duration = kNaN;
        EXPECT_EQ(S_OK, sbd::GetDuration(Board(), &duration));
        return duration;
    }
    /// Mute, level and fades.
    auto SoundState(SoundOf kind)
    {
        VARIANT_BOOL mute = 7, fades = 7;
        double level = kNaN;
        EXPECT_EQ(S_OK, sbd::GetMute(Board(), kind, &mute));
        EXPECT_EQ(S_OK, sbd::GetLevel(Board(), kind, &level));
        EXPECT_EQ(S_OK, sbd::GetFadeEnable(Board(), kind, &fades));
        return std::tuple(mute, level, fades);
    }
    ComPtr<IUnknown> Panel(LONG index)
    {
        ComPtr<IUnknown> panel;
        EXPECT_EQ(S_OK, production->GetPanelBaseObject(index, panel.Put()));
        return panel;
    }
    ComPtr<IUnknown> PanelSound(LONG index)
    {
        ComPtr<IUnknown> sound;
        EXPECT_EQ(S_OK, Query<INativeInfo>(Panel(index))->GetNativeAudio(sound.Put()));
        return sound;
    }
    bool UsesNativeAudio(LONG index) { return Get(Panel(index), &INativeInfo::get_UseNativeAudio) == VARIANT_TRUE; }
    ComPtr<IUnknown> Audio(LONG index)
    {
        ComPtr<IUnknown> audio;
        objects->GetObject(ZXE_KIND_BACKGROUND_AUDIO, index, audio.Put());
        return audio;
    }
};

TEST_F(SbdUtilsTest, AnEmptyStoryboardHasNothing)
{
    EXPECT_EQ(0.0, Duration());
    EXPECT_EQ(u"", Video());
    EXPECT_EQ(u"", Sound());
    for (const SoundOf kind : {SoundOf::Panels, SoundOf::BackgroundAudio}) {
        EXPECT_EQ(std::tuple(VARIANT_FALSE, 0.0, VARIANT_FALSE), SoundState(kind));
        EXPECT_EQ(S_FALSE, sbd::PutMute(Board(), kind, VARIANT_TRUE));
        EXPECT_EQ(S_FALSE, sbd::PutLevel(Board(), kind, 0.5));
        EXPECT_EQ(S_FALSE, sbd::PutFadeEnable(Board(), kind, true));
    }
    EXPECT_EQ(S_OK, sbd::SetBackgroundAudio(Board(), nullptr, false));
    EXPECT_EQ(E_INVALIDARG, sbd::PutMute(Board(), SoundOf(2), VARIANT_TRUE));
    const auto audio = AddAudio(Bstr(u"title:3"));
    EXPECT_EQ(S_OK, sbd::SetDuration(Board(), 12.5));
    EXPECT_EQ(12.5, Duration());
    EXPECT_EQ(12.5, Get(audio, &ISubObject::get_EndOffset));
    EXPECT_EQ(u"", Video());
}

TEST_F(SbdUtilsTest, TheVideoSourceTakesThePlaceOfAllPanels)
{
    AddPanel(Clip());
    AddPanel(Still());
    AddPanel(Clip());
    sink->heard.clear();
    for (const Bstr& empty : {Bstr(), Bstr(u"")})
        EXPECT_EQ(S_FALSE, sbd::SetVideoSource(Board(), empty.Get(), true, 0, 0, true));
    EXPECT_THAT(sink->heard, ElementsAre());

    EXPECT_EQ(S_OK, sbd::SetVideoSource(Board(), Clip().Get(), true, 0.2, 0.6, false));
    EXPECT_EQ(SourcesOf(production.Get()), std::vector{std::u16string(Clip().View())});
    EXPECT_EQ(Video(), Clip().View());
    EXPECT_NEAR(0.4, Duration(), 1e-9);
    EXPECT_EQ(VARIANT_TRUE, Get(ComPtr<IUnknown>(production), &IZXEProductionData::get_UseSourceAspectRatio));
    EXPECT_TRUE(UsesNativeAudio(0)) << "nothing else is to be heard";

    const auto audio = AddAudio(Clips().File("sound.wav"));
    EXPECT_EQ(S_OK, sbd::SetVideoSource(Board(), Bstr(u"moniker:title").Get(), false, 0, 3, false));
    EXPECT_EQ(VARIANT_FALSE, Get(ComPtr<IUnknown>(production), &IZXEProductionData::get_UseSourceAspectRatio));
    EXPECT_FALSE(UsesNativeAudio(0));
    EXPECT_EQ(3.0, Get(audio, &ISubObject::get_EndOffset));
    EXPECT_EQ(VARIANT_TRUE, Get(audio, &ISourceFile::get_Repeat));
    EXPECT_EQ(S_OK, sbd::SetVideoSource(Board(), Clip().Get(), false, 0, 0, true));
    EXPECT_TRUE(UsesNativeAudio(0));
    EXPECT_EQ(1.0, Get(audio, &ISubObject::get_EndOffset));
    EXPECT_EQ(E_INVALIDARG, sbd::SetVideoSource(Board(), Clip().Get(), false, 2, 1, true));
    EXPECT_THAT(Reported("SbdUtils"),
                ElementsAre("0x80070057 = spEditSbd->AddSourceFile(0, bstrSource, dinPoint, dOoutPoint, VARIANT_TRUE, "
                            "&spUnkPanel)"));
    EXPECT_EQ(Video(), Clip().View()) << "what was there stays";
}

TEST_F(SbdUtilsTest, TheDurationIsThatOfThePanelToItsLastFrame)
{
    const auto audio = AddAudio(Bstr(u"title:3"));
    struct Case {
        Bstr source;
        double duration;
        HRESULT result;
        double after;
    };
    const Bstr none = Clips().File("none.mpg");
    for (const auto& [source, duration, result, after] :
         {Case{Still(), 12.5, S_OK, 12.5}, Case{Still(), 0, E_INVALIDARG, 0}, Case{Still(), kNaN, E_INVALIDARG, 0},
          Case{none, 4, S_OK, 4}, Case{Clip(), 0.5, S_OK, 0.5}, Case{Clip(), 7, S_OK, 0.98},
          Case{Clip(), -1, E_INVALIDARG, 1}}) {
        ASSERT_EQ(S_OK, sbd::SetVideoSource(Board(), source.Get(), false, 0, 0, true));
        EXPECT_EQ(result, sbd::SetDuration(Board(), duration)) << duration;
        EXPECT_NEAR(after, Duration(), 1e-9) << duration;
        EXPECT_NEAR(after, Get(audio, &ISubObject::get_EndOffset), 1e-9) << "as long as the production";
    }
}

TEST_F(SbdUtilsTest, BackgroundAudioTakesThePlaceOfAny)
{
    AddPanel(Clip());
    AddAudio(Bstr(u"title:1"));
    AddAudio(Bstr(u"title:2"));
    EXPECT_EQ(u"title:1", Sound());
    EXPECT_EQ(S_OK, sbd::SetBackgroundAudio(Board(), Clips().File("sound.wav").Get(), false));
    EXPECT_EQ(Clips().File("sound.wav").View(), Sound());
    EXPECT_FALSE(Audio(1));
    EXPECT_EQ(1.0, Get(Audio(0), &ISubObject::get_EndOffset));
    EXPECT_FALSE(UsesNativeAudio(0));
    EXPECT_EQ(S_OK, sbd::SetBackgroundAudio(Board(), Bstr(u"").Get(), true));
    EXPECT_EQ(u"", Sound());
    EXPECT_FALSE(UsesNativeAudio(0)) << "kept as it is";
    EXPECT_EQ(S_OK, sbd::SetBackgroundAudio(Board(), nullptr, false));
    EXPECT_TRUE(UsesNativeAudio(0));
    EXPECT_EQ(S_OK, sbd::SetBackgroundAudio(Board(), Bstr(u"title:3").Get(), true));
    EXPECT_EQ(u"title:3", Sound());
    EXPECT_TRUE(UsesNativeAudio(0));
}

TEST_F(SbdUtilsTest, SoundsAreReadOfTheFirstAndSetOfAll)
{
    AddPanel(Clip());
    AddPanel(Still());
    EXPECT_EQ(S_OK, sbd::SetDuration(Board(), 0.5));
    const auto audio = AddAudio(Bstr(u"title:1"));
    EXPECT_EQ(S_OK, Call(audio, &ISubObject::put_EndOffset, 20.0));
    const auto all = [&](SoundOf kind) {
        return kind == SoundOf::Panels ? std::vector{PanelSound(0), PanelSound(1)} : std::vector{audio};
    };
    for (const SoundOf kind : {SoundOf::Panels, SoundOf::BackgroundAudio}) {
        EXPECT_EQ(std::tuple(VARIANT_FALSE, 1.0, VARIANT_FALSE), SoundState(kind));
        EXPECT_EQ(S_OK, sbd::PutMute(Board(), kind, VARIANT_TRUE));
        EXPECT_EQ(S_OK, sbd::PutLevel(Board(), kind, 0.25));
        for (const auto& sound : all(kind)) {
            EXPECT_EQ(VARIANT_TRUE, Get(sound, &ISubObject::get_Mute));
            EXPECT_EQ(0.25, Get(sound, &IAudioProps::get_Level));
            EXPECT_EQ(S_OK, Call(sound, &IAudioProps::put_FadeInGain, 0.5));
            EXPECT_EQ(S_OK, Call(sound, &IAudioProps::put_FadeOutGain, 0.5));
        }
        EXPECT_EQ(S_OK, sbd::PutFadeEnable(Board(), kind, true));
        EXPECT_EQ(std::tuple(VARIANT_TRUE, 0.25, VARIANT_TRUE), SoundState(kind));
        for (const auto& sound : all(kind)) {
            const double length = Get(sound, &ISubObject::get_EndOffset) - Get(sound, &ISubObject::get_StartOffset);
            const double fade = length > 6 ? 3 : length / 2;
            EXPECT_NEAR(fade, Get(sound, &IAudioProps::get_FadeIn), 1e-9);
            EXPECT_NEAR(fade, Get(sound, &IAudioProps::get_FadeOut), 1e-9);
            EXPECT_EQ(1.0, Get(sound, &IAudioProps::get_FadeInGain));
            EXPECT_EQ(1.0, Get(sound, &IAudioProps::get_FadeOutGain));
        }
        EXPECT_EQ(S_OK, sbd::PutFadeEnable(Board(), kind, false));
        EXPECT_EQ(std::tuple(VARIANT_TRUE, 0.25, VARIANT_FALSE), SoundState(kind));
        EXPECT_EQ(E_INVALIDARG, sbd::PutLevel(Board(), kind, -1));
    }
    EXPECT_EQ(S_OK, Call(audio, &IAudioProps::put_FadeIn, 0.1 + 5e-9));
    EXPECT_EQ(VARIANT_FALSE, std::get<2>(SoundState(SoundOf::BackgroundAudio)));
}

TEST_F(SbdUtilsTest, UndoTakesAnOperationBackWhole)
{
    AddPanel(Still());
    AddAudio(Bstr(u"title:1"));
    EXPECT_EQ(S_OK, sbd::SetDuration(Board(), 5));
    InBlock([&] {
        EXPECT_EQ(S_OK, sbd::SetVideoSource(Board(), Clip().Get(), false, 0, 0, false));
        EXPECT_EQ(S_OK, sbd::SetBackgroundAudio(Board(), Bstr(u"title:2").Get(), false));
    });
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(S_OK, production->Undo());
        EXPECT_EQ(std::tuple(std::u16string(Still().View()), std::u16string(u"title:1"), 5.0),
                  std::tuple(Video(), Sound(), Duration()));
        EXPECT_EQ(S_OK, production->Redo());
        EXPECT_EQ(std::tuple(std::u16string(Clip().View()), std::u16string(u"title:2"), 1.0),
                  std::tuple(Video(), Sound(), Duration()));
    }
}

TEST_F(SbdUtilsTest, ASinkMayLetGoOfTheStoryboard)
{
    AddPanel(Clip());
    AddAudio(Bstr(u"title:1"));
    IUnknown* board = production.Get();
    sink->hook = [this] {
        production.Reset();
        edit.Reset();
        objects.Reset();
    };
    EXPECT_EQ(S_OK, sbd::SetVideoSource(board, Clip().Get(), false, 0, 0, false));
}

/// One operation of each kind, on a storyboard.
const std::map<std::string, std::function<HRESULT(IUnknown*)>> kOperations{
    {"get duration", [v = double()](IUnknown* board) mutable { return sbd::GetDuration(board, &v); }},
    {"set duration", [](IUnknown* board) { return sbd::SetDuration(board, 5); }},
    {"get video", [v = Bstr()](IUnknown* board) mutable { return sbd::GetVideoSource(board, v.Put()); }},
    {"set video", [](IUnknown* board) { return sbd::SetVideoSource(board, Bstr(u"a").Get(), false, 0, 0, false); }},
    {"get audio", [v = Bstr()](IUnknown* board) mutable { return sbd::GetBackgroundAudio(board, v.Put()); }},
    {"set audio", [](IUnknown* board) { return sbd::SetBackgroundAudio(board, Bstr(u"a").Get(), false); }},
    {"get mute", [v = VARIANT_BOOL()](IUnknown* board) mutable { return sbd::GetMute(board, SoundOf::Panels, &v); }},
    {"put mute", [](IUnknown* board) { return sbd::PutMute(board, SoundOf::Panels, 1); }},
    {"get level",
     [v = double()](IUnknown* board) mutable { return sbd::GetLevel(board, SoundOf::BackgroundAudio, &v); }},
    {"put level", [](IUnknown* board) { return sbd::PutLevel(board, SoundOf::BackgroundAudio, 1); }},
    {"get fades",
     [v = VARIANT_BOOL()](IUnknown* board) mutable { return sbd::GetFadeEnable(board, SoundOf::Panels, &v); }},
    {"put fades", [](IUnknown* board) { return sbd::PutFadeEnable(board, SoundOf::Panels, true); }},
};

TEST(SbdUtilsFailures, NullsAndStrangersAreNamed)
{
    const auto stranger = Make<RecordingProductionSink>();
    for (const auto& [name, run] : kOperations) {
        EXPECT_EQ(E_POINTER, run(nullptr)) << name;
        EXPECT_THAT(Reported("SbdUtils"), ElementsAre("NULL = pUnkSbd")) << name;
        EXPECT_EQ(E_POINTER, run(stranger.Get())) << name;
        EXPECT_THAT(Reported("SbdUtils"), ElementsAre("NULL = (IZXEProductionData*)spSbd")) << name;
    }
    const auto board = Make<FakeEngine>();
    EXPECT_EQ(E_POINTER, sbd::GetVideoSource(board->Controlling(), nullptr));
    EXPECT_THAT(Reported("SbdUtils"), ElementsAre("NULL = pbstrVideoSource"));
    EXPECT_EQ(E_POINTER, sbd::GetBackgroundAudio(board->Controlling(), nullptr));
    EXPECT_THAT(Reported("SbdUtils"), ElementsAre("NULL = pbstrAudioSource"));
    EXPECT_EQ(E_POINTER, sbd::GetDuration(board->Controlling(), nullptr));
    EXPECT_EQ(E_POINTER, sbd::GetLevel(board->Controlling(), SoundOf::Panels, nullptr));
}

TEST(SbdUtilsFailures, AFailingCallIsReportedByItsTextAndItsResultPassedOn)
{
    constexpr HRESULT kBad = MakeResult(0xC2000099);
    const auto expect = [](const char* operation, const std::map<std::string, HRESULT>& results, HRESULT result,
                           const std::string& reported) {
        const auto board = Make<FakeEngine>();
        board->results = results;
        EXPECT_EQ(result, kOperations.at(operation)(board->Controlling())) << operation;
        EXPECT_EQ(reported, CallsReported("SbdUtils", result)) << operation;
    };
    // Each without the result, and none where the operation does without the call.
    const std::tuple<const char*, const char*, const char*> calls[]{
        {"get duration", "get_Duration", ""},
        {"get duration", "GetProductionObj", ""},
        {"set duration", "GetProductionObj", "spSbd->GetProductionObj(&spUnkProdObj)"},
        {"set duration", "get_EditingFrameRate", "spProdInfo->get_EditingFrameRate(&dFrameRate)"},
        {"set duration", "GetPanelBaseObject", "spSbd->GetPanelBaseObject(0, &pUnkPanel)"},
        {"set duration", "put_Duration", "plain"},
        {"set duration", "get_Duration",
         "spProdInfo->get_Duration(&dDuration); _matchBkgndAudioDuration(spUnkProdObj)"},
        {"set duration", "put_Repeat",
         "spAudioSource->put_Repeat(VARIANT_TRUE); _matchBkgndAudioDuration(spUnkProdObj)"},
        {"set duration", "put_EndOffset",
         "spAudioSubObj->put_EndOffset(dDuration); _matchBkgndAudioDuration(spUnkProdObj)"},
        {"get video", "get_FileName", ""},
        {"get video", "GetPanelBaseObject", ""},
        {"set video", "GetPanelCount", "plain"},
        {"set video", "DeletePanel", "spSbd->DeletePanel(0)"},
        {"set video", "put_UseSourceAspectRatio",
         "spSbd->put_UseSourceAspectRatio(bUseSourceAspectRatio ? VARIANT_TRUE : VARIANT_FALSE)"},
        {"set video", "put_UseNativeAudio",
         "spNativeInfo->put_UseNativeAudio(bUseNativeAudio ? VARIANT_TRUE : VARIANT_FALSE)"},
        {"get audio", "GetObject", "plain"},
        {"get audio", "get_FileName", "spAudioSource->get_FileName(pbstrAudioSource)"},
        {"set audio", "DeleteProductionAudio", "spEditData->DeleteProductionAudio(lID)"},
        {"set audio", "AddProductionAudio",
         "spEditData->AddProductionAudio(bstrSource, enBackgroundAudio, 0.0, &spUnkAudio)"},
        {"set audio", "put_UseNativeAudio",
         "spPanelNativeInfo->put_UseNativeAudio(bstrSource.Length() > 0 ? VARIANT_FALSE : VARIANT_TRUE)"},
        {"get mute", "GetNativeAudio", "plain"},
        {"put fades", "put_FadeOutGain", "plain"}};
    for (const auto& [operation, method, reported] : calls)
        expect(operation, {{method, kBad}}, *reported ? kBad : S_OK, reported);
    for (const HRESULT result : {kBad, E_FAIL})
        expect("set duration", {{"put_Duration", E_NOTIMPL}, {"put_OutPoint", result}}, result, "plain");
}

TEST(SbdUtilsFailures, AMissingInterfaceIsNamedWhereItIsNeeded)
{
    struct Case {
        const char* operation;
        std::set<std::string> lacks;
        /// Null where the operation does without.
        const char* reported;
    };
    for (const auto& [operation, lacks, reported] : std::vector<Case>{
             {"get duration", {"IProductionInfo"}, nullptr},
             {"set duration", {"IProductionInfo"}, "(IProductionInfo*)spProdInfo"},
             {"set duration", {"IBaseObject"}, "(IBaseObject*)spBaseObj"},
             {"set duration", {"ISourceFile"}, nullptr},
             {"get video", {"ISourceFile"}, nullptr},
             {"set video", {"INativeInfo"}, "(INativeInfo*)spNativeInfo"},
             {"get audio", {"ISourceFile"}, nullptr},
             {"get audio", {"ISourceFile", "ISmartAudio"}, "(ISmartAudio*)pSmartAudio"},
             {"get level", {"IAudioProps"}, nullptr},
             {"put mute", {"INativeInfo"}, nullptr},
             {"put level", {"IAudioProps"}, "(IAudioProps*)spAudioProps"},
             {"put fades", {"ISubObject"}, "(ISubObject*)spAudioSubObj"},
         }) {
        const auto board = Make<FakeEngine>();
        board->lacks = lacks;
        const HRESULT result = kOperations.at(operation)(board->Controlling());
        EXPECT_EQ(reported ? E_POINTER : S_OK, FAILED(result) ? result : S_OK) << operation;
        EXPECT_EQ(reported ? std::vector{"NULL = " + std::string(reported)} : std::vector<std::string>(),
                  Reported("SbdUtils"))
            << operation;
    }
    const auto clip = Make<FakeEngine>();
    clip->lacks = {"ISourceFile"};
    clip->results = {{"put_Duration", E_NOTIMPL}};
    EXPECT_EQ(E_POINTER, sbd::SetDuration(clip->Controlling(), 5));
    EXPECT_THAT(Reported("SbdUtils"), ElementsAre("NULL = (ISourceFile*)spSrc"));
}

} // namespace
} // namespace kv::test
