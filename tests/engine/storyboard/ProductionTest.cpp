#include "engine/storyboard/StoryboardSupport.h"

#include <cmath>
#include <ctime>
#include <limits>
#include <thread>

namespace kv::test {
namespace {

class ProductionTest : public StoryboardTest {
protected:
    ComPtr<IProductionInfo> Info()
    {
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK, production->GetProductionObj(object.Put()));
        return Query<IProductionInfo>(object);
    }

    bool Modified() { return Get(production, &IZXEProductionData::get_Flags) == ZXE_PRODUCTION_MODIFIED; }

    /// Connects the sink and forgets what it heard.
    DWORD Connect(RecordingProductionSink& other)
    {
        DWORD cookie = 0;
        EXPECT_EQ(S_OK, EventsOf(production.Get())->Advise(&other, &cookie));
        other.heard.clear();
        return cookie;
    }
};

TEST_F(ProductionTest, IsEditedOnlyBetweenInitialiseAndClose)
{
    const auto fresh = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
    const Bstr source(u"moniker:clip");
    EXPECT_EQ(ZXE_E_NOT_OPEN, AddSource(fresh.Get(), source));
    EXPECT_EQ(ZXE_E_NOT_OPEN, fresh->OpenUndoBlock());
    EXPECT_EQ(S_FALSE, fresh->Close());

    EXPECT_EQ(S_FALSE, production->Initialise());
    EXPECT_EQ(S_OK, AddSource(production.Get(), source));
    EXPECT_EQ(S_OK, production->Close());
    EXPECT_EQ(S_FALSE, production->Close());
    EXPECT_EQ(ZXE_E_NOT_OPEN, AddSource(production.Get(), source));
    EXPECT_EQ(ZXE_E_NOT_OPEN, production->DeletePanel(0));
    EXPECT_EQ(std::vector<std::u16string>{u"moniker:clip"}, SourcesOf(production.Get()));

    EXPECT_EQ(S_OK, production->Initialise());
    EXPECT_EQ(S_OK, production->DeletePanel(0));
}

TEST_F(ProductionTest, KeepsItsSourcesInOrder)
{
    const auto add = [&](const char16_t* name, LONG position) {
        return edit->AddSourceFile(0, Bstr(name).Get(), 0.0, 0.0, position, nullptr);
    };
    EXPECT_TRUE(SourcesOf(production.Get()).empty());
    EXPECT_EQ(S_OK, add(u"b", -1));
    EXPECT_EQ(S_OK, add(u"d", 1));
    EXPECT_EQ(S_OK, add(u"a", 0));
    EXPECT_EQ(S_OK, add(u"c", 2));
    EXPECT_EQ((std::vector<std::u16string>{u"a", u"b", u"c", u"d"}), SourcesOf(production.Get()));
    EXPECT_EQ(S_OK, production->DeletePanel(1));
    EXPECT_EQ((std::vector<std::u16string>{u"a", u"c", u"d"}), SourcesOf(production.Get()));

    LONG count = 0;
    EXPECT_EQ(S_OK, production->GetPanelCount(&count));
    EXPECT_EQ(3, count);
    for (const LONG index : {-1, 3}) {
        ComPtr<IUnknown> panel;
        EXPECT_EQ(E_INVALIDARG, production->DeletePanel(index));
        EXPECT_EQ(E_INVALIDARG, production->GetPanelBaseObject(index, panel.Put()));
    }
    SafeArray sources;
    EXPECT_EQ(E_INVALIDARG, production->GetSourceList(0, 1, 0, sources.Put()));
    EXPECT_EQ(E_POINTER, production->GetSourceList(0, 0, 0, nullptr));
}

TEST_F(ProductionTest, RefusesBadSources)
{
    struct Case {
        LONG track;
        const char16_t* source;
        double in;
        double out;
        LONG position;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {1, u"a", 0, 0, -1},        {0, u"", 0, 0, -1},         {0, nullptr, 0, 0, -1}, {0, u"a", -1, 0, -1},
        {0, u"a", 2, 2, -1},        {0, u"a", 2, 1, -1},        {0, u"a", nan, 0, -1},  {0, u"a", 0, nan, -1},
        {0, u"a", 0, infinite, -1}, {0, u"a", infinite, 0, -1}, {0, u"a", 0, 0, -2},    {0, u"a", 0, 0, 1},
    };
    for (const Case& item : cases) {
        const Bstr source = item.source ? Bstr(item.source) : Bstr();
        ComPtr<IUnknown> panel;
        EXPECT_EQ(E_INVALIDARG,
                  edit->AddSourceFile(item.track, source.Get(), item.in, item.out, item.position, panel.Put()));
        EXPECT_FALSE(panel);
    }
    EXPECT_FALSE(Modified());
}

TEST_F(ProductionTest, PlaysAsLongAsItsPanels)
{
    const auto expect = [&](double duration, double frameRate) {
        EXPECT_NEAR(duration, Get(production, &IProductionInfo::get_Duration), 0.1);
        EXPECT_NEAR(frameRate, Get(production, &IProductionInfo::get_EditingFrameRate), 0.001);
    };
    expect(0.0, 0.0);
    ASSERT_EQ(S_OK, edit->AddSourceFile(0, Clips().File("still.png").Get(), 0.0, 5.0, -1, nullptr));
    expect(5.0, 0.0);
    ASSERT_EQ(S_OK, edit->AddSourceFile(0, Clips().File("ntsc.mp4").Get(), 0.0, 0.0, -1, nullptr));
    expect(6.0, 29.97);
    ASSERT_EQ(S_OK, edit->AddSourceFile(0, Clips().File("sound.wav").Get(), 0.5, 0.0, 0, nullptr));
    expect(7.5, 29.97);
    // The in point lies behind the end of a source of unknown length.
    ASSERT_EQ(S_OK, edit->AddSourceFile(0, Bstr(u"/no/such/file").Get(), 3.0, 0.0, 0, nullptr));
    expect(7.5, 29.97);
}

TEST_F(ProductionTest, HoldsItsSettings)
{
    const auto info = Info();
    double aspect = 0.0;
    EXPECT_EQ(S_OK, info->get_AspectRatio(&aspect));
    EXPECT_EQ(4.0 / 3.0, aspect);
    for (const double bad : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(E_INVALIDARG, info->put_AspectRatio(bad));
    }
    EXPECT_EQ(S_OK, info->get_AspectRatio(&aspect));
    EXPECT_EQ(4.0 / 3.0, aspect);
    EXPECT_EQ(S_OK, info->put_Stereoscopic(1));
    EXPECT_EQ(S_OK, production->put_UseSourceAspectRatio(VARIANT_TRUE));
    VARIANT_BOOL set = VARIANT_FALSE;
    EXPECT_EQ(S_OK, info->get_Stereoscopic(&set));
    EXPECT_EQ(VARIANT_TRUE, set);
    EXPECT_TRUE(Modified());
    EXPECT_EQ(S_OK, production->ClearModified());
    EXPECT_EQ(S_OK, info->put_Stereoscopic(VARIANT_TRUE));
    EXPECT_FALSE(Modified());
}

TEST_F(ProductionTest, LastsWithoutPanelsAsLongAsItIsTold)
{
    ComPtr<IUnknown> blank;
    ASSERT_EQ(S_OK, production->GetPanelBaseObject(0, blank.Put()));
    EXPECT_FALSE(Query<ISourceFile>(blank));
    for (const double bad : {0.0, -1.0, std::nan("")})
        EXPECT_EQ(E_INVALIDARG, Call(blank, &IBaseObject::put_Duration, bad));
    InBlock([&] { EXPECT_EQ(S_OK, Call(blank, &IBaseObject::put_Duration, 12.5)); });
    EXPECT_EQ((std::vector<Heard>{{9, {}}, {10, {}}}), TakeHeard());
    EXPECT_EQ(0, Get(production, &IZXEProductionData::GetPanelCount));
    EXPECT_EQ(E_INVALIDARG, production->DeletePanel(0));
    const auto effect = AddEffect(3);
    for (const double duration : {12.5, 0.0, 12.5}) {
        EXPECT_EQ(duration, Get(production, &IProductionInfo::get_Duration));
        EXPECT_EQ(duration, Get(effect, &ISubObject::get_EndOffset));
        EXPECT_EQ(S_OK, duration == 0.0 ? production->Redo() : production->Undo());
    }
    production->Redo();
    AddPanel(Bstr(u"title:1"), 0.0, 4.0);
    EXPECT_EQ(4.0, Get(production, &IProductionInfo::get_Duration));
    production->Close();
    EXPECT_EQ(ZXE_E_NOT_OPEN, Call(blank, &IBaseObject::put_Duration, 1.0));
    edit.Reset();
    objects.Reset();
    production.Reset();
    EXPECT_EQ(ZXE_E_NOT_OPEN, Call(blank, &IBaseObject::put_Duration, 1.0));
}

TEST_F(ProductionTest, BadSourcesCostNothingButTheirPictures)
{
    const TemporaryFolder folder;
    const auto cut = [](const char* clip) { return Clips().Read(clip).substr(0, Clips().Read(clip).size() / 2); };
    std::filesystem::create_directory(folder.Path() / "folder.mpg");
    folder.Write("noise.mpg", std::string(1 << 16, 'x'));
    folder.Write("cut.mp4", cut("ntsc.mp4"));
    folder.Write("cut.mpg", cut("pal.mpg"));
    for (const char* name : {"folder.mpg", "noise.mpg", "cut.mp4", "cut.mpg", "late.mpg"}) {
        const bool isRead = name == std::string("cut.mpg");
        const auto panel = AddPanel(folder.File(name), 0.0, 2.0);
        EXPECT_EQ(2.0, Get(production, &IProductionInfo::get_Duration)) << name;
        EXPECT_EQ(isRead ? 25.0 : 0.0, Get(production, &IProductionInfo::get_EditingFrameRate)) << name;
        EXPECT_EQ(isRead, Get(panel, &ISourceFile::get_Length) > 0.0) << name;
        for (const double time : {0.0, 1.9}) {
            ULONG width = 0, height = 0, stride = 0;
            SafeArray pixels;
            EXPECT_EQ(
                S_OK,
                Query<IZXEProductionFrames>(production)->GetFrame(time, 64, 64, &width, &height, &stride, pixels.Put()))
                << name;
        }
        if (name != std::string("late.mpg")) production->DeletePanel(0);
    }
    std::filesystem::copy_file(Clips().Path() / "pal.mpg", folder.Path() / "late.mpg");
    EXPECT_EQ(25.0, Get(production, &IProductionInfo::get_EditingFrameRate)) << "it is there now";

    std::string text = "<Production>";
    for (int i = 0; i < 100'000; ++i)
        text += "<Panel source=\"" + (folder.Path() / "noise.mpg").string() + "\"/>";
    const std::clock_t start = std::clock();
    ASSERT_EQ(S_OK, Call(production, &IZXEProductionPersist::Load,
                         XmlElement::Parse(text + "</Production>").Element().Get(), nullptr));
    EXPECT_EQ(0.0, Get(production, &IProductionInfo::get_Duration));
    EXPECT_LT(std::clock() - start, 20 * CLOCKS_PER_SEC) << "it is looked into once";
}

TEST_F(ProductionTest, TellsItsSinksOfEdits)
{
    const auto expect = [&](std::vector<Heard> heard) {
        EXPECT_EQ(heard, sink->heard);
        sink->heard.clear();
    };
    ASSERT_EQ(S_OK, AddSource(production.Get(), Bstr(u"moniker:clip")));
    EXPECT_TRUE(Modified());
    expect({{0, {0}}, {11, {1}}});
    ASSERT_EQ(S_OK, AddSource(production.Get(), Clips().File("sound.wav")));
    expect({{0, {1}}, {10, {}}});
    ASSERT_EQ(S_OK, production->DeletePanel(1));
    expect({{1, {1}}, {10, {}}});
    ASSERT_EQ(S_OK, Info()->put_AspectRatio(2.0));
    ASSERT_EQ(S_OK, Info()->put_AspectRatio(2.0));
    expect({{9, {}}});
    ASSERT_EQ(S_OK, production->ClearModified());
    ASSERT_EQ(S_OK, production->ClearModified());
    EXPECT_FALSE(Modified());
    expect({{11, {0}}});
    ASSERT_EQ(S_OK, production->Close());
    expect({{22, {}}});
}

TEST_F(ProductionTest, PassesEveryNotificationToItsMethod)
{
    const auto failing = Make<RecordingProductionSink>();
    failing->answer = E_FAIL;
    Connect(*failing);
    const auto notify = Query<IZXEProductionNotify>(production);
    std::vector<Heard> expected;
    for (ULONG position = 0; position < ZXE_EVENT_COUNT; ++position) {
        const LONG first = static_cast<LONG>(position) + 100;
        EXPECT_EQ(S_OK, notify->Notify(position, first, -first));
        const bool bare = (position >= 7 && position <= 10) || position == 22;
        const bool single = position <= 5 || position == 11 || position == 18;
        expected.push_back({position, bare     ? std::vector<LONG>{}
                                      : single ? std::vector<LONG>{first}
                                               : std::vector<LONG>{first, -first}});
    }
    EXPECT_EQ(expected, sink->heard);
    EXPECT_EQ(expected, failing->heard);
    EXPECT_EQ(E_INVALIDARG, notify->Notify(ZXE_EVENT_COUNT, 0, 0));
    EXPECT_EQ(E_INVALIDARG, notify->Notify(0xffffffffU, 0, 0));
}

TEST_F(ProductionTest, LetsASinkGiveUpTheReferenceOfItsConnection)
{
    const auto own = Make<RecordingProductionSink>();
    const DWORD cookie = Connect(*own);
    own->Release();
    ASSERT_EQ(S_OK, AddSource(production.Get(), Bstr(u"a")));
    EXPECT_FALSE(own->heard.empty());

    // Only the test's own reference is left, and it is enough to leave by.
    own->AddRef();
    EXPECT_EQ(S_OK, EventsOf(production.Get())->Unadvise(cookie));
    own->AddRef();
    EXPECT_EQ(1U, own->Release());
    own->heard.clear();
    ASSERT_EQ(S_OK, AddSource(production.Get(), Bstr(u"b")));
    EXPECT_TRUE(own->heard.empty());
    EXPECT_EQ(CONNECT_E_NOCONNECTION, EventsOf(production.Get())->Unadvise(cookie));
    DWORD other = 0;
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, EventsOf(production.Get())->Advise(production.Get(), &other));
}

TEST_F(ProductionTest, HoldsNoLockWhileItTellsASink)
{
    LONG seen = -1;
    sink->hook = [&] { std::thread([&] { production->GetPanelCount(&seen); }).join(); };
    ASSERT_EQ(S_OK, AddSource(production.Get(), Bstr(u"a")));
    EXPECT_EQ(1, seen);
}

TEST_F(ProductionTest, IsEditedByManyThreadsAtOnce)
{
    constexpr int kThreads = 4;
    constexpr int kEdits = 200;
    // Without a sink, which would be told on all threads.
    const auto board = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
    ASSERT_EQ(S_OK, board->Initialise());
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < kEdits; ++turn) {
                EXPECT_EQ(S_OK, AddSource(board.Get(), Bstr(u"moniker:clip")));
                board->OpenUndoBlock();
                if (turn % 2) {
                    EXPECT_EQ(S_OK, board->DeletePanel(0));
                }
                board->CloseUndoBlock(VARIANT_TRUE);
                SourcesOf(board.Get());
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::size_t{kThreads * kEdits / 2}, SourcesOf(board.Get()).size());
}

} // namespace
} // namespace kv::test
