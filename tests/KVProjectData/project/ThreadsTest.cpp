// What several threads may do at once with one project; the thread sanitizer looks on.

#include "KVProjectData/Engine.h"
#include "support/Contents.h"

#include <atomic>
#include <thread>

namespace kv::test {
namespace {

constexpr LONG kRounds = 200;

/// Runs both at once until each has made enough rounds; the first goes on during the last act.
template <class Meanwhile, class Round, class Last>
void Together(Meanwhile&& meanwhile, Round&& round, Last&& last, LONG rounds = kRounds)
{
    std::atomic<bool> done{false};
    std::atomic<LONG> others{0};
    std::thread other([&] {
        for (; !done; ++others)
            meanwhile();
    });
    for (LONG i = 0; i < rounds || others < rounds; ++i)
        round(i);
    last();
    done = true;
    other.join();
}

void NoLastAct() {}

class ThreadsTest : public testing::Test {
protected:
    /// A step that is undone and redone.
    void Step(LONG round)
    {
        project->BeginUndo(nullptr);
        title->put_Label(Str(u"x").Get());
        project->EndUndo(round % 3 ? VARIANT_TRUE : VARIANT_FALSE);
        project->UndoOperation();
        project->RedoOperation();
    }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title = AddTitle(*project.Get());
};

TEST_F(ThreadsTest, AnEngineTellsOfATitleThatComesAndGoes)
{
    const auto sink = Make<RecordingSink>();
    const Connection connection(*project, *sink);
    ComPtr<IUnknown> production;
    ASSERT_EQ(S_OK, title->GetProduction(production.Put()));
    const auto engine = Query<IZXEProductionNotify>(production);
    const LONG id = IdOf(title);
    Together([&] { engine->Notify(0, 1, 0); },
             [&](LONG round) {
                 if (round % 2) {
                     EXPECT_EQ(S_OK, project->UndoOperation());
                     engine->Notify(0, 2, 0);
                 } else {
                     project->BeginUndo(nullptr);
                     EXPECT_EQ(S_OK, project->RemoveTitle(id, nullptr));
                     project->EndUndo(VARIANT_TRUE);
                 }
             },
             [&] {
                 project->Clear();
                 title.Reset();
             });
    EXPECT_TRUE(sink->WaitFor(Event(EVENT_TitleProductionEvent, {id, 0, 2})));
}

TEST_F(ThreadsTest, AProductionIsReplacedWhileItIsAskedFor)
{
    const auto first = Create<IUnknown>(CLSID_ZXEProduction);
    const auto second = Create<IUnknown>(CLSID_ZXEProduction);
    const auto encoding = Query<IKVEncodingParams>(title);
    Together(
        [&] {
            ValueOf(*project.Get(), &IKVProjectData::get_IsDirty);
            ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio);
            Bstr source;
            title->GetSourceFromProd(source.Put());
        },
        [&](LONG round) { title->SetProduction((round % 2 ? first : second).Get()); }, NoLastAct);
}

TEST_F(ThreadsTest, AProjectIsSavedWhileItIsEdited)
{
    const auto commands = Query<IKVCommandList>(title);
    Together([&] { SaveToDocument(*project.Get()); },
             [&](LONG round) {
                 const std::u16string text(static_cast<std::size_t>(round % 100), u'x');
                 DiscCommandParams command{PlayMenu, round, 0, nullptr};
                 title->put_Label(Bstr(text).Get());
                 project->put_Label(Bstr(text).Get());
                 commands->SetCommandList(round % 2, &command);
                 project->AddDataFile(1, nullptr);
                 project->RemoveDataFile(1, nullptr);
             },
             NoLastAct);
}

TEST_F(ThreadsTest, OneThreadsEditsAreRecordedInTheStepOfAnother)
{
    const auto other = NewProject();
    Together([&] { other->put_TVStandard(PAL); },
             [&](LONG round) {
                 if (round % 8 == 0) {
                     project->TakeUndoSnapshot(nullptr);
                 } else {
                     project->BeginUndo(nullptr);
                 }
                 title->put_Label(Str(u"x").Get());
                 project->EndUndoEx(VARIANT_TRUE, round % 2 ? VARIANT_TRUE : VARIANT_FALSE);
                 project->UndoOperation();
             },
             NoLastAct);
}

TEST_F(ThreadsTest, ObjectsThatAStepRecordedComeAndGoElsewhere)
{
    const auto other = NewProject();
    Together(
        [&] {
            DiscCommandParams command{StopPlayback, 0, 0, nullptr};
            auto added = AddTitle(*other.Get(), 1);
            added->put_Label(Str(u"x").Get());
            AddDataFile(*other.Get(), 1)->put_Tag(1);
            Query<IKVEncodingParams>(added)->put_AudioChannels(6);
            Query<IKVCommandList>(added)->SetCommandList(1, &command);
            other->RemoveTitle(IdOf(added), nullptr);
            other->RemoveDataFile(1, nullptr);
            // What an undo has put back by now does not pile up.
            other->RemoveDataFile(1, nullptr);
            if ((added = TitleAt(*other.Get(), 1))) other->RemoveTitle(IdOf(added), nullptr);
        },
        [&](LONG round) { Step(round); }, NoLastAct);
}

TEST_F(ThreadsTest, ProjectsThatAStepRecordedEndElsewhere)
{
    Together(
        [&] {
            const auto other = NewProject();
            other->put_Label(Str(u"x").Get());
            AddTitle(*other.Get(), 1)->put_Label(Str(u"x").Get());
        },
        [&](LONG round) { Step(round); }, NoLastAct, 50);
}

} // namespace
} // namespace kv::test
