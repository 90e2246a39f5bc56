#include "platform/automation/ErrorInfo.h"
#include "platform/system/Window.h"
#include "support/Contents.h"
#include "support/Script.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <future>
#include <iterator>
#include <map>
#include <thread>

namespace kv::test {
namespace {

/// Whether a condition comes true in time.
template <class Condition>
bool Eventually(Condition&& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class EventsTest : public testing::Test {
protected:
    std::vector<ReceivedEvent> Events() { return Delivered(*project, *sink); }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<RecordingSink> sink = Make<RecordingSink>();
    Connection connection{*project, *sink};
};

TEST_F(EventsTest, SettersTellTheirPropertyOnceAndInOrder)
{
    ScriptHost script(project.Get());
    std::vector<ReceivedEvent> expected;
    struct Setter {
        const char16_t *name, *value;
        LONG propId;
    };
    constexpr Setter kSetters[]{
        {u"IsOnDisc", u"true", 27},       {u"ProjectSize", u"5", 34}, {u"OnDiscSize", u"5", 36},
        {u"RemainingCaptures", u"5", 37}, {u"DiscSize", u"8", 66},    {u"FrameRate", u"24", 0},
        {u"ThemeSource", u"t", 0},        {u"MenuLess", u"true", 0},  {u"Label", u"l", 4},
        {u"DiscFormat", u"11", 20},       {u"VolumeName", u"v", 21},  {u"TargetType", u"2", 24},
        {u"ImagePath", u"i", 25},         {u"TargetDrive", u"d", 26}, {u"Options", u"2", 28},
        {u"FitToDisc", u"true", 33},      {u"DisplayName", u"n", 35}, {u"DoCompression", u"false", 68},
        {u"DiscVideoType", u"3", 69}};
    for (const auto& [name, value, propId] : kSetters) {
        script.Put(name, Variant(value));
        // The first recorded change makes the project dirty.
        if (propId == 4) expected.push_back(Event(EVENT_VolumePropChanged, {11}));
        if (propId != 0) expected.push_back(Event(EVENT_VolumePropChanged, {propId}));
    }
    for (const HRESULT result :
         {project->put_TVStandard(PAL), project->put_ProjectDirectory(Str(u"/d").Get()), project->ClearDirtyFlag(),
          project->ClearDirtyFlag(), project->BroadcastMessage(4, 1, 2), project->BroadcastMessage(5, -1, 2),
          project->Clear()})
        EXPECT_EQ(S_OK, result);
    for (const auto& event : {Event(EVENT_TVStandardChanged, {2}), Event(EVENT_ProjectDirectoryChanged, {}, u"/d"),
                              Event(EVENT_VolumePropChanged, {11}), Event(EVENT_MajorProjectChange),
                              Event(EVENT_MessageBroadcast, {5, -1, 2})})
        expected.push_back(event);
    EXPECT_EQ(expected, Events());
}

TEST_F(EventsTest, ListsTellPositionsAsTheyWerePassed)
{
    const LONG a = IdOf(AddTitle(*project.Get(), -1));
    const LONG b = IdOf(AddTitle(*project.Get(), 1));
    ASSERT_EQ(S_OK, project->MoveTitle(1, 1));
    ASSERT_EQ(S_OK, project->MoveTitle(1, 2));
    ASSERT_EQ(S_OK, project->RemoveTitle(a, nullptr));
    const LONG c = IdOf(AddDataFile(*project.Get()));
    ASSERT_EQ(S_OK, project->MoveDataFile(1, 1));
    ASSERT_EQ(S_OK, project->RemoveDataFile(1, nullptr));
    EXPECT_EQ(KV_E_BAD_POSITION, project->MoveDataFile(1, 1));
    ComPtr<IKVMenu> menu;
    ASSERT_EQ(S_OK, project->AddMenu(-4, menu.Put()));
    const LONG d = ValueOf(*menu.Get(), &IKVMenu::get_ID);
    ASSERT_EQ(S_OK, project->MoveMenu(1, 1));
    ASSERT_EQ(S_OK, project->RemoveMenu(d, nullptr));
    ASSERT_EQ(KV_E_BAD_POSITION, project->InsertMenuW(2, menu.Get()));
    ASSERT_EQ(S_OK, project->InsertMenuW(1, menu.Get()));
    ASSERT_EQ(S_OK, Query<IKVEncodingParams>(menu)->put_AspectRatio(AspectRatio_16x9));
    ASSERT_EQ(S_OK, Query<IKVCommandList>(menu)->SetCommandList(0, nullptr));

    std::vector<ReceivedEvent> events = Events();
    std::erase_if(events, [](const ReceivedEvent& event) {
        return event.id == EVENT_TitleEncodingParamChanged || event.id == EVENT_VolumePropChanged;
    });
    EXPECT_EQ((std::vector{Event(EVENT_TitleAdded, {a, -1}), Event(EVENT_TitleAdded, {b, 1}),
                           Event(EVENT_TitleMoved, {b, 1, 1}), Event(EVENT_TitleMoved, {b, 1, 2}),
                           Event(EVENT_TitleRemoved, {a}), Event(EVENT_DataFileAdded, {c, 0}),
                           Event(EVENT_DataFileMoved, {c, 1, 1}), Event(EVENT_DataFileRemoved, {c}),
                           Event(EVENT_MenuEncodingParamChanged, {d, 109}), Event(EVENT_MenuAdded, {d, -4}),
                           Event(EVENT_MenuMoved, {d, 1, 1}), Event(EVENT_MenuRemoved, {d}),
                           Event(EVENT_MenuInserted, {d, 1}), Event(EVENT_MenuEncodingParamChanged, {d, 101}),
                           Event(EVENT_CommandListChanged, {d})}),
              events);
}

TEST_F(EventsTest, SinksMayFailAndEditTheProject)
{
    HRESULT taken = E_FAIL;
    EXCEPINFO info{};
    const auto failing = Make<RecordingSink>([&](const ReceivedEvent& event) {
        if (event.id == EVENT_TVStandardChanged) return E_ABORT;
        // On the worker thread, after the failure.
        if (event.id == EVENT_MajorProjectChange) {
            taken = TakeThreadErrorInfo(&info);
            return project->put_Label(Str(u"from the sink").Get());
        }
        return S_OK;
    });
    const Connection failingConnection(*project, *failing);
    const auto later = Make<RecordingSink>();
    const Connection laterConnection(*project, *later);
    project->put_TVStandard(PAL);
    project->BroadcastMessage(4, 0, 0);
    Delivered(*project, *later);
    EXPECT_EQ(S_OK, taken);
    EXPECT_EQ(E_ABORT, info.scode);
    const auto heard = Events();
    EXPECT_NE(heard.end(), std::ranges::find(heard, Event(EVENT_TVStandardChanged, {2})))
        << "the sink before the failing one";
    EXPECT_FALSE(later->WaitFor(EVENT_TVStandardChanged, std::chrono::milliseconds(10))) << "kept from the later one";
    EXPECT_EQ(u"from the sink", Text(*project.Get(), &IKVProjectData::get_Label));
}

TEST_F(EventsTest, ThreadsMayPostTogether)
{
    constexpr LONG kMessages = 2000;
    const auto post = [&](LONG sender) {
        for (LONG i = 0; i < kMessages; ++i)
            project->BroadcastMessage(100, sender, i);
    };
    std::thread first(post, 1);
    std::thread second(post, 2);
    first.join();
    second.join();
    std::map<LONG, LONG> next;
    for (const ReceivedEvent& event : Events())
        EXPECT_EQ(next[event.arguments.at(1)]++, event.arguments.at(2));
    EXPECT_EQ((std::map<LONG, LONG>{{1, kMessages}, {2, kMessages}}), next);
}

TEST_F(EventsTest, TheHeartbeatReportsChangedObjectsInFifties)
{
    constexpr LONG kObjects = 120;
    project->EnableHeartBeatEvent(VARIANT_FALSE);
    std::vector<LONG> ids;
    for (LONG i = 0; i < kObjects; ++i) {
        const auto file = AddDataFile(*project.Get(), 1);
        ids.push_back(IdOf(file));
        file->put_Tag(1);
    }
    project->BroadcastMessage(100000, 0, 0);
    project->put_OnDiscSize(1);
    Events();
    std::this_thread::sleep_for(std::chrono::milliseconds(3300));
    EXPECT_FALSE(sink->WaitFor(EVENT_EmptyQueue, std::chrono::milliseconds(1))) << "the heartbeat is off";

    project->EnableHeartBeatEvent(VARIANT_TRUE);
    std::vector<std::vector<LONG>> reports;
    for (int tick = 0; tick < 4; ++tick) {
        ASSERT_TRUE(sink->WaitFor(EVENT_EmptyQueue));
        if (tick < 3) {
            ASSERT_TRUE(sink->WaitFor(EVENT_ProjectChangeList));
        }
        for (const ReceivedEvent& event : sink->Take()) {
            if (event.id == EVENT_ProjectChangeList) reports.push_back(event.arguments);
        }
    }
    const auto fifties = ids.begin();
    EXPECT_EQ(
        (std::vector{std::vector(fifties, fifties + 50), {fifties + 50, fifties + 100}, {fifties + 100, ids.end()}}),
        reports)
        << "an empty set is not reported";

    project->EnableHeartBeatEvent(VARIANT_FALSE);
    project->Clear();
    Events();
    EXPECT_TRUE(sink->WaitFor(EVENT_EmptyQueue)) << "a cleared project has its heartbeat again";
}

TEST(EventLifetimeTest, ReleasingAProjectDeliversNothingMore)
{
    auto project = NewProject();
    std::promise<void> inside;
    std::promise<void> go;
    const auto sink = Make<RecordingSink>([&, first = true](const ReceivedEvent&) mutable {
        if (std::exchange(first, false)) {
            inside.set_value();
            go.get_future().wait();
        }
        return S_OK;
    });
    auto connection = std::make_unique<Connection>(*project, *sink);
    for (LONG i = 0; i < 10; ++i)
        project->BroadcastMessage(1, i, 0);
    inside.get_future().wait();
    // The worker is held in its first delivery while the last reference goes.
    std::thread release([&] {
        connection.reset();
        project.Reset();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    go.set_value();
    release.join();
    EXPECT_EQ(1u, sink->Take().size());
    EXPECT_EQ(0u, FindWindow(u"KoKVProjectDataWndClass", u"KVProjectDataWnd")) << "its window is gone";
}

TEST(EventLifetimeTest, ASinkMayHoldTheLastReference)
{
    auto project = NewProject();
    std::promise<IKVProjectData*> last;
    const auto sink = Make<RecordingSink>([&, first = true](const ReceivedEvent&) mutable {
        if (std::exchange(first, false)) last.get_future().get()->Release();
        return S_OK;
    });
    DWORD cookie = 0;
    Connection(*project, *Make<RecordingSink>()).Point().Advise(sink->Controlling(), &cookie);
    project->BroadcastMessage(1, 0, 0);
    project->BroadcastMessage(2, 0, 0);
    last.set_value(project.Detach());
    EXPECT_TRUE(Eventually([&] {
        sink->AddRef();
        return sink->Release() == 1;
    })) << "the project has not let go of its sink";
    EXPECT_EQ((std::vector{Event(EVENT_MessageBroadcast, {1, 0, 0})}), sink->Take());
}

TEST(EventLifetimeTest, AProjectWithoutItsWindowIsNotCreated)
{
    RegisterServers();
    SetWindowCreationHook([](const WindowClass& windowClass) {
        EXPECT_EQ(u"KoKVProjectDataWndClass", windowClass.name);
        return false;
    });
    ComPtr<IKVProjectData> project;
    EXPECT_EQ(KV_E_NO_EVENT_WINDOW, CreateInstance(CLSID_KVProjectData, project));
    EXPECT_FALSE(project);
    SetWindowCreationHook(nullptr);
}

/// Measuring the clip of the first title.
class FirstTitleTest : public EventsTest {
protected:
    std::string Clip(const std::string& name, const std::string& size, const std::string& rate)
    {
        const std::string path = (folder.Path() / name).string();
        const std::string command =
            "ffmpeg -v error -y -f lavfi -i testsrc=size=" + size + ":rate=" + rate + " -t 0.4 -c:v mpeg4 " + path;
        EXPECT_EQ(0, std::system(command.c_str()));
        return path;
    }

    /// Adds a title that has its source before anyone is told of it.
    void AddTitleOf(const std::string& source)
    {
        std::promise<void> ready;
        const auto gate = Make<RecordingSink>([&, waited = false](const ReceivedEvent& event) mutable {
            if (event.id == EVENT_TitleAdded && !std::exchange(waited, true)) ready.get_future().wait();
            return S_OK;
        });
        const Connection gateConnection(*project, *gate);
        EXPECT_EQ(S_OK, AddTitle(*project.Get())->put_Source(Bstr(ToUtf16(source)).Get()));
        ready.set_value();
        Delivered(*project, *gate);
    }

    TemporaryFolder folder;
};

TEST_F(FirstTitleTest, ItsSizeOrRateGivesTheStandard)
{
    struct Case {
        const char* size;
        const char* rate;
        TVStandard before;
        TVStandard after;
        double frameRate;
    };
    for (const Case& clip :
         {Case{"720x576", "25", NTSC, PAL, 25.0}, Case{"720x480", "30000/1001", PAL, NTSC, 30000.0 / 1001},
          Case{"320x240", "50", NTSC, PAL, 50.0}, Case{"320x240", "24", PAL, NTSC, 24.0},
          Case{"720x480", "25", PAL, NTSC, 25.0}}) {
        project->Clear();
        project->put_TVStandard(clip.before);
        Events();
        AddTitleOf(Clip("clip.avi", clip.size, clip.rate));
        auto events = Events();
        // What measuring changes is told after all that was posted before it.
        std::ranges::copy(Events(), std::back_inserter(events));
        EXPECT_EQ(clip.after, ValueOf(*project.Get(), &IKVProjectData::get_TVStandard))
            << clip.size << '@' << clip.rate;
        EXPECT_NEAR(clip.frameRate, ValueOf(*project.Get(), &IKVProjectData::get_FrameRate), 0.01);
        const auto added = std::ranges::find(events, EVENT_TitleAdded, &ReceivedEvent::id);
        EXPECT_NE(events.end(), std::find(added, events.end(), Event(EVENT_TVStandardChanged, {clip.after})));
    }
}

TEST_F(FirstTitleTest, OtherTitlesAndUnreadableSourcesChangeNothing)
{
    AddTitleOf((folder.Path() / "missing.avi").string());
    EXPECT_EQ(NTSC, ValueOf(*project.Get(), &IKVProjectData::get_TVStandard));
    AddTitleOf(Clip("second.avi", "720x576", "25"));
    EXPECT_EQ(NTSC, ValueOf(*project.Get(), &IKVProjectData::get_TVStandard)) << "not the first title";
    EXPECT_EQ(29.97, ValueOf(*project.Get(), &IKVProjectData::get_FrameRate));
}

} // namespace
} // namespace kv::test
