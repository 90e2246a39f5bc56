#include "UndoSupport.h"

#include "platform/com/TaskMemory.h"

namespace kv::test {
namespace {

class RecordsTest : public UndoTest {
protected:
    std::vector<LONG> Titles()
    {
        std::vector<LONG> ids;
        ComPtr<IKVTitle> each;
        for (LONG i = 1; SUCCEEDED(project->GetTitle(i, each.Put())); ++i)
            ids.push_back(ValueOf(*each.Get(), &IKVTitle::get_ID));
        return ids;
    }

    /// The codes of the title's commands, with the XML of each.
    std::vector<std::u16string> Commands()
    {
        LONG count = 0;
        DiscCommandParams* records = nullptr;
        EXPECT_EQ(S_OK, Query<IKVCommandList>(title)->GetCommandList(&count, &records));
        const UniqueTaskMem<DiscCommandParams> owned(records);
        std::vector<std::u16string> texts;
        for (LONG i = 0; i < count; ++i) {
            const auto xml = ComPtr<IXMLDOMNode>::Attach(records[i].pXMLData);
            texts.push_back(ToUtf16(std::to_string(records[i].cmd)) + (xml ? XmlOf(*xml) : u""));
        }
        return texts;
    }

    void SetCommand(DiscCommand code, IXMLDOMNode* xml = nullptr)
    {
        DiscCommandParams record{code, 0, 0, xml};
        EXPECT_EQ(S_OK, Query<IKVCommandList>(title)->SetCommandList(1, &record));
    }
};

TEST_F(RecordsTest, TitlesComeAndGoAtTheirPlacesWithTheirIds)
{
    std::vector<std::vector<LONG>> states{Titles()};
    const auto step = [&](auto edit) {
        Begin();
        EXPECT_EQ(S_OK, edit());
        End();
        states.push_back(Titles());
    };
    step([&] { return project->AddTitle(1, nullptr); });
    step([&] { return project->AddTitle(0, nullptr); });
    step([&] { return project->AddTitle(2, nullptr); });
    step([&] { return project->MoveTitle(1, 4); });
    step([&] { return project->MoveTitle(3, 2); });
    step([&] { return project->RemoveTitle(states.back()[1], nullptr); });
    step([&] { return project->RemoveTitle(states.back()[0], nullptr); });
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = states.size() - 1; i-- > 0;) {
            EXPECT_EQ(S_OK, project->UndoOperation());
            EXPECT_EQ(states[i], Titles());
        }
        for (std::size_t i = 1; i < states.size(); ++i) {
            EXPECT_EQ(S_OK, project->RedoOperation());
            EXPECT_EQ(states[i], Titles());
        }
    }
}

TEST_F(RecordsTest, AChildThatWasTakenBackIsTheSameObject)
{
    SetLabel(u"mine");
    const LONG id = ValueOf(*title.Get(), &IKVTitle::get_ID);
    Begin();
    EXPECT_EQ(S_OK, project->RemoveTitle(id, nullptr));
    SetLabel(u"edited while removed");
    End();
    EXPECT_EQ(S_OK, project->UndoOperation());
    ComPtr<IKVTitle> again;
    ASSERT_EQ(S_OK, project->GetTitle(1, again.Put()));
    EXPECT_EQ(title, again);
    EXPECT_EQ(u"mine", Label());
    EXPECT_EQ(S_OK, project->RedoOperation());
    EXPECT_EQ(u"edited while removed", Label());
    EXPECT_TRUE(Titles().empty());
}

TEST_F(RecordsTest, ARecordLetsItsChildGoWhenItIsDiscarded)
{
    const LONG id = ValueOf(*title.Get(), &IKVTitle::get_ID);
    Begin();
    project->RemoveTitle(id, nullptr);
    End();
    title->AddRef();
    EXPECT_EQ(2u, title->Release()) << "the test's and the record's";
    manager->DiscardFrom(nullptr);
    title->AddRef();
    EXPECT_EQ(1u, title->Release());
}

TEST_F(RecordsTest, EditsThatWereNotRecordedLoseNothing)
{
    const LONG id = ValueOf(*title.Get(), &IKVTitle::get_ID);
    for (int i = 0; i < 3; ++i)
        project->AddTitle(1, nullptr);
    Begin();
    EXPECT_EQ(S_OK, project->RemoveTitle(id, nullptr));
    End();
    while (!Titles().empty())
        project->RemoveTitle(Titles()[0], nullptr);
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ((std::vector{id}), Titles()) << "its place is gone, and so it is the last";
    project->RemoveTitle(id, nullptr);
    EXPECT_EQ(S_OK, project->RedoOperation()) << "there is nothing to remove";
    EXPECT_EQ(S_OK, project->UndoOperation()) << "nor to bring back";
    EXPECT_TRUE(Titles().empty());
}

TEST_F(RecordsTest, CommandsComeBackWithTheirXmlAndWithoutEvents)
{
    const auto sink = Make<RecordingSink>();
    const auto document = ParseXml(u"<file name='a.mpg'/>");
    ComPtr<IXMLDOMElement> file;
    document->get_documentElement(file.Put());
    SetCommand(PlayClip, file.Get());
    Begin();
    SetCommand(StopPlayback);
    SetCommand(PlayAllTitles);
    SetLabel(u"x");
    End();
    EXPECT_EQ(2u, UnitsOf(NewestStep().Get()).size());
    const Connection connection(*project, *sink);
    Delivered(*project.Get(), *sink);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ((std::vector<std::u16string>{u"6<file name=\"a.mpg\"/>"}), Commands());
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ((std::vector<std::u16string>{u"7"}), Commands());
    }
    EXPECT_TRUE(Delivered(*project.Get(), *sink).empty());
}

TEST_F(RecordsTest, OnlyTheFirstRecordOfACommandListCounts)
{
    Begin();
    EXPECT_EQ(S_OK, Query<IKVCommandList>(title)->SetCommandList(0, nullptr));
    SetCommand(StopPlayback);
    End();
    EXPECT_EQ(1u, UnitsOf(NewestStep().Get()).size());
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_TRUE(Commands().empty());
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
    EXPECT_EQ((std::vector<std::u16string>{u"3"}), Commands());
    locking->UnlockObject(VARIANT_TRUE);
    project->RedoOperation();
    EXPECT_EQ((std::vector<std::u16string>{u"3"}), Commands());
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ((std::vector<std::u16string>{u"6"}), Commands());
}

TEST_F(RecordsTest, EncodingParametersAndDataFilesAreRecordedToo)
{
    const auto encoding = Query<IKVEncodingParams>(title);
    ComPtr<IKVDataFile> file;
    Begin();
    EXPECT_EQ(S_OK, encoding->put_SyncToProject(VARIANT_FALSE));
    EXPECT_EQ(S_OK, encoding->put_AudioChannels(6));
    EXPECT_EQ(S_OK, project->AddDataFile(0, file.Put()));
    EXPECT_EQ(S_OK, file->put_Tag(5));
    EXPECT_EQ(S_OK, file->put_SourcePath(Str(u"/").Get()));
    End();
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*encoding.Get(), &IKVEncodingParams::get_SyncToProject));
    EXPECT_EQ(0, ValueOf(*project.Get(), &IKVProjectData::get_DataFileCount));
    EXPECT_EQ(u"<null>", Text(*file.Get(), &IKVDataFile::get_SourcePath));
    EXPECT_EQ(S_OK, project->RedoOperation());
    EXPECT_EQ(6, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AudioChannels));
    EXPECT_EQ(u"/", Text(*file.Get(), &IKVDataFile::get_SourcePath));
    EXPECT_EQ(5u, ValueOf(*file.Get(), &IKVDataFile::get_Tag));
}

} // namespace
} // namespace kv::test
