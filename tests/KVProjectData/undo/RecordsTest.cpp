#include "UndoSupport.h"

namespace kv::test {
namespace {

class RecordsTest : public UndoTest {
protected:
    void SetCommand(DiscCommand code)
    {
        DiscCommandParams record{code, 0, 0, nullptr};
        EXPECT_EQ(S_OK, Query<IKVCommandList>(title)->SetCommandList(1, &record));
    }

    const std::vector<std::u16string> m_playClip{u"6 0 0"};
};

TEST_F(RecordsTest, AChildThatWasTakenBackIsTheSameObjectUntilItsRecordIsDiscarded)
{
    SetLabel(u"mine");
    Begin();
    EXPECT_EQ(S_OK, project->RemoveTitle(IdOf(title), nullptr));
    SetLabel(u"edited while removed");
    End();
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(title, TitleAt(*project.Get(), 1));
    EXPECT_EQ(u"mine", Label());
    EXPECT_EQ(S_OK, project->RedoOperation());
    EXPECT_EQ(u"edited while removed", Label());
    EXPECT_TRUE(TitleIds(*project.Get()).empty());
    title->AddRef();
    EXPECT_EQ(2u, title->Release()) << "the test's and the record's";
    manager->DiscardFrom(nullptr);
    title->AddRef();
    EXPECT_EQ(1u, title->Release());
}

TEST_F(RecordsTest, EditsThatWereNotRecordedLoseNothing)
{
    const auto titles = [&] { return TitleIds(*project.Get()); };
    const LONG id = IdOf(title);
    for (int i = 0; i < 3; ++i)
        project->AddTitle(1, nullptr);
    Begin();
    EXPECT_EQ(S_OK, project->RemoveTitle(id, nullptr));
    End();
    while (!titles().empty())
        project->RemoveTitle(titles()[0], nullptr);
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ((std::vector{id}), titles()) << "its place is gone, and so it is the last";
    project->RemoveTitle(id, nullptr);
    EXPECT_EQ(S_OK, project->RedoOperation()) << "there is nothing to remove";
    EXPECT_EQ(S_OK, project->UndoOperation()) << "nor to bring back";
    EXPECT_TRUE(titles().empty());
}

TEST_F(RecordsTest, CommandsComeBackOnceAndWithoutEvents)
{
    const auto sink = Make<RecordingSink>();
    SetCommand(PlayClip);
    Begin();
    SetCommand(StopPlayback);
    SetCommand(PlayAllTitles);
    End();
    EXPECT_EQ(1u, UnitsOf(NewestStep().Get()).size());
    const Connection connection(*project, *sink);
    Delivered(*project.Get(), *sink);
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(m_playClip, CommandsOf(title.Get()));
    EXPECT_TRUE(Delivered(*project.Get(), *sink).empty());
}

TEST_F(RecordsTest, ALockedCommandListIsPassedOverBothWays)
{
    SetCommand(PlayClip);
    Begin();
    SetCommand(StopPlayback);
    End();
    const auto locking = Query<IKVLocking>(title);
    locking->LockObject(VARIANT_TRUE);
    project->UndoOperation();
    EXPECT_NE(m_playClip, CommandsOf(title.Get()));
    locking->UnlockObject(VARIANT_TRUE);
    project->RedoOperation();
    EXPECT_NE(m_playClip, CommandsOf(title.Get()));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(m_playClip, CommandsOf(title.Get()));
}

} // namespace
} // namespace kv::test
