#include "UndoSupport.h"

#include "platform/com/TaskMemory.h"

namespace kv::test {
namespace {

using UndoStepTest = UndoTest;

TEST_F(UndoStepTest, OneStepTakesBackAllOfItsEdits)
{
    EXPECT_FALSE(CanUndo());
    EXPECT_EQ(S_OK, Begin(u"rename"));
    SetLabel(u"one");
    SetLabel(u"two");
    EXPECT_EQ(S_OK, title->put_Flags(4));
    EXPECT_EQ(S_OK, project->put_Label(Str(u"P").Get()));
    EXPECT_EQ(S_OK, End());
    Bstr description;
    EXPECT_EQ(S_OK, manager->GetLastUndoDescription(description.Put()));
    EXPECT_EQ(u"rename", description.View());
    EXPECT_TRUE(CanUndo());
    EXPECT_FALSE(CanRedo());
    const LONG id = ValueOf(*title.Get(), &IKVTitle::get_ID);
    EXPECT_EQ(
        (std::vector<std::u16string>{u"102 typeProject[0]", u"102 typeTitle[" + ToUtf16(std::to_string(id)) + u"]"}),
        UnitsOf(NewestStep().Get()))
        << "each object once";

    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(u"<null>", Label());
        EXPECT_EQ(0u, ValueOf(*title.Get(), &IKVTitle::get_Flags));
        EXPECT_EQ(u"", Text(*project.Get(), &IKVProjectData::get_Label));
        EXPECT_FALSE(CanUndo());
        EXPECT_TRUE(CanRedo());
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(u"two", Label());
        EXPECT_EQ(4u, ValueOf(*title.Get(), &IKVTitle::get_Flags));
    }
}

TEST_F(UndoStepTest, RecordsNothingOutsideOfASteps)
{
    SetLabel(u"before");
    EXPECT_EQ(S_OK, End()) << "no step is open";
    EXPECT_EQ(S_OK, End(false));
    EXPECT_FALSE(CanUndo());
    EXPECT_TRUE(FAILED(project->UndoOperation()));
    EXPECT_TRUE(FAILED(project->RedoOperation()));
    EXPECT_EQ(u"before", Label());
}

TEST_F(UndoStepTest, OpensOneStepAtATimeInTheProcess)
{
    const auto other = NewProject();
    EXPECT_EQ(S_OK, Begin());
    EXPECT_EQ(KV_E_UNDO_STEP_OPEN, Begin());
    EXPECT_EQ(KV_E_UNDO_STEP_OPEN, project->TakeUndoSnapshot(nullptr));
    EXPECT_EQ(KV_E_UNDO_STEP_OPEN, other->BeginUndo(nullptr));
    EXPECT_EQ(S_OK, other->EndUndo(VARIANT_TRUE)) << "has no step of its own";
    SetLabel(u"x");
    EXPECT_TRUE(FAILED(project->UndoOperation())) << "the step is open";
    EXPECT_EQ(u"x", Label());
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(S_OK, other->BeginUndo(nullptr)) << "a step needs no description";
    EXPECT_EQ(S_OK, other->EndUndo(VARIANT_FALSE));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"<null>", Label());
}

TEST_F(UndoStepTest, CancellingTakesEverythingBackAtOnce)
{
    SetLabel(u"kept");
    EXPECT_EQ(S_OK, Begin());
    SetLabel(u"dropped");
    project->AddTitle(1, nullptr);
    project->MoveTitle(1, 2);
    EXPECT_EQ(S_OK, End(false));
    EXPECT_EQ(u"kept", Label());
    EXPECT_EQ(1, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
    EXPECT_FALSE(CanUndo());
    EXPECT_EQ(S_OK, Begin());
    SetLabel(u"recorded again");
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"kept", Label());
}

TEST_F(UndoStepTest, CommittingWithEndUndoExMarksTheProjectAsChanged)
{
    project->ClearDirtyFlag();
    EXPECT_EQ(S_OK, Begin());
    EXPECT_EQ(S_OK, project->EndUndoEx(VARIANT_FALSE, VARIANT_FALSE));
    EXPECT_EQ(VARIANT_FALSE, ValueOf(*project.Get(), &IKVProjectData::get_IsDirty));
    EXPECT_EQ(S_OK, Begin());
    EXPECT_EQ(S_OK, project->EndUndoEx(VARIANT_TRUE, VARIANT_TRUE));
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*project.Get(), &IKVProjectData::get_IsDirty));
    EXPECT_EQ((std::vector<std::u16string>{u"105 "}), UnitsOf(NewestStep().Get())) << "the storyboards' part";
}

TEST_F(UndoStepTest, WhatTheHeaderTellsHosts)
{
    const auto other = NewProject();
    const auto isDirty = [&] { return ValueOf(*project.Get(), &IKVProjectData::get_IsDirty) == VARIANT_TRUE; };
    Begin();
    SetLabel(u"one");
    EXPECT_FALSE(CanUndo()) << "the open step is on no stack yet";
    other->put_Label(Str(u"joins").Get());
    EXPECT_EQ(S_OK, End());
    Begin();
    EXPECT_TRUE(CanUndo()) << "what was committed before";
    EXPECT_EQ(E_UNEXPECTED, project->UndoOperation());
    EXPECT_EQ(S_OK, End(false));
    EXPECT_EQ(S_OK, other->UndoOperation()) << "the last step, whichever project it is of";
    EXPECT_EQ(u"<null>", Label());
    EXPECT_EQ(u"", Text(*other.Get(), &IKVProjectData::get_Label));

    Begin();
    EXPECT_EQ(S_OK, End(false));
    EXPECT_TRUE(CanRedo()) << "a cancelled step ends nothing";
    Begin();
    EXPECT_TRUE(CanRedo()) << "nor does an open one";
    EXPECT_EQ(S_OK, End());
    EXPECT_FALSE(CanRedo()) << "an empty one that is committed does";
    EXPECT_TRUE(CanUndo()) << "and can be undone";

    project->TakeUndoSnapshot(nullptr);
    SetLabel(u"cancelled");
    EXPECT_EQ(S_OK, End(false));
    EXPECT_EQ(u"<null>", Label());
    EXPECT_EQ(S_OK, project->RedoOperation()) << "the cancel of a snapshot is an undo";
    EXPECT_EQ(u"cancelled", Label());

    project->ClearDirtyFlag();
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_FALSE(isDirty()) << "although the document says something else";
}

TEST_F(UndoStepTest, ASnapshotBringsEverythingBackAndSaysSo)
{
    const auto sink = Make<RecordingSink>();
    const Connection connection(*project, *sink);
    SetLabel(u"before");
    const std::u16string before = XmlOf(*SaveToDocument(*project.Get()).Get());
    for (bool commit : {true, false}) {
        EXPECT_EQ(S_OK, project->TakeUndoSnapshot(Str(u"import").Get()));
        EXPECT_EQ(KV_E_UNDO_STEP_OPEN, Begin()) << "until the snapshot's step is ended";
        project->put_DiscSize(SZ_BD50);
        project->put_Label(Str(u"after").Get());
        project->RemoveTitle(ValueOf(*title.Get(), &IKVTitle::get_ID), nullptr);
        const std::u16string after = XmlOf(*SaveToDocument(*project.Get()).Get());
        Delivered(*project.Get(), *sink);
        EXPECT_EQ(S_OK, End(commit));
        if (commit) {
            EXPECT_EQ((std::vector<std::u16string>{u"101 Project Snapshot"}), UnitsOf(NewestStep().Get()));
            EXPECT_EQ(after, XmlOf(*SaveToDocument(*project.Get()).Get()));
            EXPECT_EQ(S_OK, project->UndoOperation());
        }
        EXPECT_EQ(before, XmlOf(*SaveToDocument(*project.Get()).Get()));
        EXPECT_EQ((std::vector{Event(EVENT_MessageBroadcast, {2, 0, 0})}), Delivered(*project.Get(), *sink));
        if (commit) {
            EXPECT_EQ(S_OK, project->RedoOperation());
            EXPECT_EQ(after, XmlOf(*SaveToDocument(*project.Get()).Get()));
            EXPECT_EQ(S_OK, project->UndoOperation());
        }
    }
}

TEST_F(UndoStepTest, SettingsThatNoDocumentHoldsAreTakenBackToo)
{
    using Setter = HRESULT (IKVProjectData::*)(BSTR);
    using Getter = HRESULT (IKVProjectData::*)(BSTR*);
    const std::pair<Setter, Getter> texts[] = {
        {&IKVProjectData::put_VolumeName, &IKVProjectData::get_VolumeName},
        {&IKVProjectData::put_ProjectDirectory, &IKVProjectData::get_ProjectDirectory},
        {&IKVProjectData::put_ImagePath, &IKVProjectData::get_ImagePath},
        {&IKVProjectData::put_TargetDrive, &IKVProjectData::get_TargetDrive}};
    const auto set = [&](std::u16string_view value, ULONG target) {
        for (const auto& [put, get] : texts)
            EXPECT_EQ(S_OK, (project.Get()->*put)(Bstr(value).Get()));
        EXPECT_EQ(S_OK, project->put_TargetType(target));
    };
    const auto expect = [&](std::u16string_view value, ULONG target) {
        for (const auto& [put, get] : texts)
            EXPECT_EQ(value, Text(*project.Get(), get));
        EXPECT_EQ(target, ValueOf(*project.Get(), &IKVProjectData::get_TargetType));
    };
    set(u"before", 2);
    for (const bool snapshot : {false, true}) {
        ASSERT_EQ(S_OK, snapshot ? project->TakeUndoSnapshot(nullptr) : Begin());
        set(u"after", 4);
        End();
        EXPECT_EQ(S_OK, project->UndoOperation());
        expect(u"before", 2);
        EXPECT_EQ(S_OK, project->RedoOperation());
        expect(u"after", 4);
        EXPECT_EQ(S_OK, project->UndoOperation());
    }
}

TEST_F(UndoStepTest, ASnapshotBringsBackTheObjectsThemselves)
{
    const auto encoding = Query<IKVEncodingParams>(title);
    ComPtr<IKVDataFile> file;
    ComPtr<IUnknown> production;
    project->AddDataFile(0, file.Put());
    file->put_DestPath(Str(u"before").Get());
    title->put_Source(Str(u"clip.mpg").Get());
    title->GetProduction(production.Put());
    project->put_FrameRate(30.0);
    project->put_ProjectSize(7);
    Begin();
    SetLabel(u"labelled");
    End();
    ComPtr<IKVTitle> added;
    project->TakeUndoSnapshot(nullptr);
    SetLabel(u"after");
    file->put_DestPath(Str(u"after").Get());
    project->RemoveDataFile(1, nullptr);
    project->RemoveTitle(ValueOf(*title.Get(), &IKVTitle::get_ID), nullptr);
    project->AddTitle(0, added.Put());
    End();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        ComPtr<IKVTitle> back;
        ComPtr<IKVDataFile> fileBack;
        ASSERT_EQ(S_OK, project->GetTitle(1, back.Put()));
        ASSERT_EQ(S_OK, project->GetDataFile(1, fileBack.Put()));
        EXPECT_EQ(title, back);
        EXPECT_EQ(file, fileBack);
        EXPECT_EQ(1, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
        EXPECT_EQ(u"labelled", Label());
        EXPECT_EQ(u"before", Text(*file.Get(), &IKVDataFile::get_DestPath));
        EXPECT_EQ(u"clip.mpg", Text(*title.Get(), &IKVTitle::get_Source));
        ComPtr<IUnknown> same;
        EXPECT_EQ(S_OK, title->GetProduction(same.Put()));
        EXPECT_EQ(production, same);
        EXPECT_EQ(30.0, ValueOf(*project.Get(), &IKVProjectData::get_FrameRate));
        EXPECT_EQ(7, ValueOf(*project.Get(), &IKVProjectData::get_ProjectSize));
        EXPECT_EQ(VARIANT_TRUE, ValueOf(*project.Get(), &IKVProjectData::get_IsDirty));
        EXPECT_EQ(S_OK, project->RedoOperation());
        ASSERT_EQ(S_OK, project->GetTitle(1, back.Put()));
        EXPECT_EQ(added, back);
        EXPECT_EQ(0, ValueOf(*project.Get(), &IKVProjectData::get_DataFileCount));
    }
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(S_OK, project->UndoOperation()) << "a record from before finds its object";
    EXPECT_EQ(u"<null>", Label());
    manager->DiscardFrom(nullptr);
    added->AddRef();
    EXPECT_EQ(1u, added->Release()) << "the snapshot has let go of it";
}

TEST_F(UndoStepTest, ASnapshotKeepsWhatNoDocumentHolds)
{
    const auto commands = Query<IKVCommandList>(title);
    const auto fragment = ParseXml(u"<neither><file/></neither>");
    ComPtr<IXMLDOMElement> xml;
    fragment->get_documentElement(xml.Put());
    const auto set = [&](BSTR label, LONG parameter, IXMLDOMNode* data) {
        DiscCommandParams command{static_cast<DiscCommand>(12), parameter, 0, data};
        EXPECT_EQ(S_OK, project->put_Label(label));
        EXPECT_EQ(S_OK, title->put_Label(label));
        EXPECT_EQ(S_OK, commands->SetCommandList(1, &command));
    };
    const auto expect = [&](std::u16string_view label, LONG parameter, std::u16string_view data) {
        LONG count = 0;
        DiscCommandParams* records = nullptr;
        EXPECT_EQ(label, Text(*project.Get(), &IKVProjectData::get_Label));
        EXPECT_EQ(label, Label());
        ASSERT_EQ(S_OK, commands->GetCommandList(&count, &records));
        const UniqueTaskMem<DiscCommandParams> owned(records);
        ASSERT_EQ(1, count);
        const auto copy = ComPtr<IXMLDOMNode>::Attach(records[0].pXMLData);
        EXPECT_EQ(12, records[0].cmd);
        EXPECT_EQ(parameter, records[0].lParam1);
        EXPECT_EQ(data, copy ? XmlOf(*copy) : u"");
    };
    const Bstr noXml(u"no XML \u0001");
    set(nullptr, 1, xml.Get());
    for (const bool commit : {true, false}) {
        project->TakeUndoSnapshot(nullptr);
        set(noXml.Get(), 2, nullptr);
        EXPECT_EQ(S_OK, End(commit));
        EXPECT_EQ(commit ? S_OK : E_FAIL, project->UndoOperation());
        expect(u"<null>", 1, u"<neither><file/></neither>");
        EXPECT_EQ(S_OK, project->RedoOperation()) << "also what was cancelled";
        expect(noXml.View(), 2, u"");
        EXPECT_EQ(S_OK, project->UndoOperation());
    }
}

TEST_F(UndoStepTest, ASnapshotThatCannotBeCancelledSaysSo)
{
    SetLabel(u"before");
    project->TakeUndoSnapshot(nullptr);
    SetLabel(u"after");
    const auto locking = Query<IKVLocking>(project);
    locking->LockObject(VARIANT_FALSE);
    EXPECT_EQ(KV_E_LOCKED, End(false));
    EXPECT_EQ(u"after", Label());
    locking->UnlockObject(VARIANT_FALSE);
    EXPECT_EQ(S_OK, End(false)) << "it can be tried again";
    EXPECT_EQ(u"before", Label());

    const auto other = NewProject();
    project->TakeUndoSnapshot(nullptr);
    EXPECT_EQ(S_OK, project->Clear());
    other->BeginUndo(nullptr);
    EXPECT_EQ(KV_E_UNDO_STEP_OPEN, other->BeginUndo(nullptr));
    EXPECT_EQ(E_UNEXPECTED, End(false)) << "what it would take back is forgotten";
    other->BeginUndo(nullptr);
    other->put_Label(Str(u"other").Get());
    other->EndUndo(VARIANT_TRUE);
    EXPECT_EQ(S_OK, End(false)) << "no step";
    EXPECT_EQ(u"other", Text(*other.Get(), &IKVProjectData::get_Label));
}

TEST_F(UndoStepTest, ALockedProjectKeepsItsSnapshotForLater)
{
    SetLabel(u"before");
    project->TakeUndoSnapshot(nullptr);
    SetLabel(u"after");
    End();
    const auto locking = Query<IKVLocking>(project);
    locking->LockObject(VARIANT_FALSE);
    project->UndoOperation();
    EXPECT_EQ(u"after", Label());
    project->RedoOperation();
    EXPECT_EQ(u"after", Label()) << "nothing was undone that could be redone";
    locking->UnlockObject(VARIANT_FALSE);
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"before", Label());
}

TEST_F(UndoStepTest, AStepKeepsNothingOfContentsThatWereReplacedInIt)
{
    const auto other = NewProject();
    const auto saved = [&] { return XmlOf(*SaveToDocument(*project.Get())); };
    const auto otherLabel = [&] { return Text(*other.Get(), &IKVProjectData::get_Label); };
    ComPtr<IXMLDOMElement> root;
    const auto document = ParseXml(u"<Root><Project label='loaded'><Titles><Title/></Titles></Project></Root>");
    document->get_documentElement(root.Put());
    for (const bool load : {false, true}) {
        for (const bool commit : {false, true}) {
            ComPtr<IKVTitle> removed;
            ComPtr<IUnknown> production;
            const auto edit = [&](const char16_t* label, LONG channels) {
                DiscCommandParams command{StopPlayback, channels, 0, nullptr};
                project->put_Label(Str(label).Get());
                project->AddDataFile(0, nullptr);
                Query<IKVCommandList>(project)->SetCommandList(1, &command);
                Query<IKVEncodingParams>(project)->put_AudioChannels(channels);
            };
            project->AddTitle(1, removed.Put());
            removed->GetProduction(production.Put());
            Begin();
            End();
            Begin();
            EXPECT_EQ(S_OK, project->BeginStoryboardUndo(production.Get(), 1));
            edit(u"old", 4);
            removed->put_Label(Str(u"edited").Get());
            project->RemoveTitle(ValueOf(*removed.Get(), &IKVTitle::get_ID), nullptr);
            project->AddTitle(0, nullptr);
            other->put_Label(Str(u"other").Get());
            EXPECT_EQ(S_OK, load ? project->loadXML(root.Get()) : project->Clear());
            EXPECT_FALSE(CanUndo()) << "what was committed before";
            removed->AddRef();
            EXPECT_EQ(1u, removed->Release()) << "the step has let go of it";
            const std::u16string before = saved();
            edit(u"new", 6);
            project->AddTitle(0, nullptr);
            const std::u16string after = saved();
            other->put_Options(3);
            EXPECT_EQ(S_OK, End(commit));
            if (commit) {
                EXPECT_EQ(after, saved());
                EXPECT_EQ(u"other", otherLabel());
                EXPECT_EQ(S_OK, project->UndoOperation());
            }
            EXPECT_EQ(before, saved());
            EXPECT_EQ(u"", otherLabel()) << "its records stay";
            EXPECT_EQ(0u, ValueOf(*other.Get(), &IKVProjectData::get_Options));
            EXPECT_EQ(commit, SUCCEEDED(project->RedoOperation()));
            EXPECT_EQ(commit ? after : before, saved());
            EXPECT_EQ(commit, SUCCEEDED(project->UndoOperation()));
            EXPECT_FALSE(CanUndo());
        }
    }
}

TEST_F(UndoStepTest, StepsOfAProjectGoWithIt)
{
    auto other = NewProject();
    const auto edit = [](IKVProjectData& owner, const char16_t* label) {
        owner.BeginUndo(nullptr);
        owner.put_Label(Str(label).Get());
        owner.EndUndo(VARIANT_TRUE);
    };
    edit(*project.Get(), u"one");
    edit(*other.Get(), u"other");
    edit(*project.Get(), u"two");
    other->TakeUndoSnapshot(nullptr);
    other->EndUndo(VARIANT_TRUE);
    other->BeginUndo(nullptr);
    ComPtr<IKVTitle> stray;
    other->AddTitle(0, stray.Put());
    other->RemoveTitle(ValueOf(*stray.Get(), &IKVTitle::get_ID), nullptr);
    other.Reset();
    EXPECT_EQ(S_OK, stray->put_Label(Str(u"alive").Get()));

    EXPECT_EQ(S_OK, Begin()) << "the other's step is closed";
    EXPECT_EQ(S_OK, End(false));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"one", Text(*project.Get(), &IKVProjectData::get_Label));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"", Text(*project.Get(), &IKVProjectData::get_Label));
    EXPECT_FALSE(CanUndo());
}

TEST_F(UndoStepTest, ProjectsShareTheManagerUntilItIsReset)
{
    const auto other = NewProject();
    ComPtr<IOleUndoManager> shared;
    EXPECT_EQ(S_OK, other->GetUndoManager(shared.Put()));
    EXPECT_EQ(manager, shared);
    EXPECT_EQ(S_OK, project->ResetStaticData());
    ComPtr<IOleUndoManager> next;
    EXPECT_EQ(S_OK, NewProject()->GetUndoManager(next.Put()));
    EXPECT_NE(manager, next);
    Begin();
    SetLabel(u"x");
    End();
    EXPECT_TRUE(CanUndo()) << "the project keeps its manager";
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"<null>", Label());
}

TEST_F(UndoStepTest, RefusesNullPointers)
{
    EXPECT_EQ(S_FALSE, project->get_UndoEnable(nullptr));
    EXPECT_EQ(S_FALSE, project->get_RedoEnable(nullptr));
    EXPECT_EQ(E_POINTER, project->GetUndoManager(nullptr));
    EXPECT_EQ(E_POINTER, project->BeginStoryboardUndo(nullptr, 1));
}

/// A class object that creates nothing.
class NoFactory final : public Object<IClassFactory> {
public:
    HRESULT CreateInstance(IUnknown*, REFIID, void** object) override
    {
        *object = nullptr;
        return E_ACCESSDENIED;
    }
    HRESULT LockServer(BOOL) override { return S_OK; }
};

TEST_F(UndoStepTest, AProjectWithoutAManagerSaysSo)
{
    project->ResetStaticData();
    DWORD cookie = 0;
    ASSERT_EQ(S_OK, CoRegisterClassObject(CLSID_OleUndoManager, Make<NoFactory>().Get(), CLSCTX_INPROC_SERVER,
                                          REGCLS_MULTIPLEUSE, &cookie));
    const auto plain = NewProject();
    ASSERT_EQ(S_OK, CoRevokeClassObject(cookie));
    IOleUndoManager* none = nullptr;
    VARIANT_BOOL can = VARIANT_TRUE;
    EXPECT_EQ(KV_E_NO_UNDO_MANAGER, plain->GetUndoManager(&none));
    EXPECT_EQ(KV_E_NO_UNDO_MANAGER, plain->BeginUndo(nullptr));
    EXPECT_EQ(KV_E_NO_UNDO_MANAGER, plain->TakeUndoSnapshot(nullptr));
    EXPECT_EQ(S_FALSE, plain->UndoOperation());
    EXPECT_EQ(S_FALSE, plain->RedoOperation());
    EXPECT_EQ(E_POINTER, plain->get_UndoEnable(&can));
    EXPECT_EQ(VARIANT_FALSE, can);
    EXPECT_EQ(S_OK, plain->EndUndo(VARIANT_TRUE));
    EXPECT_EQ(S_OK, plain->put_Label(Str(u"works").Get()));
    EXPECT_EQ(S_OK, plain->Clear());
}

} // namespace
} // namespace kv::test
