#include "UndoSupport.h"

namespace kv::test {
namespace {

using Units = std::vector<std::u16string>;

class UndoStepTest : public UndoTest {
protected:
    std::u16string Saved() { return XmlOf(*SaveToDocument(*project.Get())); }
    static std::u16string LabelOf(const ComPtr<IKVProjectData>& owner)
    {
        return Text(*owner.Get(), &IKVProjectData::get_Label);
    }
};

TEST_F(UndoStepTest, AStepHoldsEachObjectOnceUnderItsDescription)
{
    EXPECT_EQ(S_OK, Begin(u"rename"));
    SetLabel(u"one");
    SetLabel(u"two");
    EXPECT_EQ(S_OK, project->put_Label(Str(u"P").Get()));
    EXPECT_EQ(S_OK, End());
    Bstr description;
    EXPECT_EQ(S_OK, manager->GetLastUndoDescription(description.Put()));
    EXPECT_EQ(u"rename", description.View());
    EXPECT_EQ((Units{u"102 typeProject[0]", u"102 typeTitle[" + ToUtf16(std::to_string(IdOf(title))) + u"]"}),
              UnitsOf(NewestStep().Get()));
}

TEST_F(UndoStepTest, RecordsNothingOutsideOfSteps)
{
    SetLabel(u"before");
    EXPECT_EQ(S_OK, End()) << "no step is open";
    EXPECT_EQ(S_OK, End(false));
    EXPECT_FALSE(CanUndo());
    EXPECT_TRUE(FAILED(project->UndoOperation()) && FAILED(project->RedoOperation()));
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

TEST_F(UndoStepTest, CommittingWithEndUndoExMarksTheProjectAsChanged)
{
    project->ClearDirtyFlag();
    for (const VARIANT_BOOL commit : {VARIANT_FALSE, VARIANT_TRUE}) {
        EXPECT_EQ(S_OK, Begin());
        EXPECT_EQ(S_OK, project->EndUndoEx(commit, commit));
        EXPECT_EQ(commit == VARIANT_TRUE, IsDirty(*project.Get()));
    }
    EXPECT_EQ((Units{u"105 "}), UnitsOf(NewestStep().Get())) << "the storyboards' part";
}

TEST_F(UndoStepTest, WhatTheHeaderTellsHosts)
{
    const auto other = NewProject();
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
    EXPECT_EQ(u"", LabelOf(other));

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
    EXPECT_FALSE(IsDirty(*project.Get())) << "although the document says something else";
}

TEST_F(UndoStepTest, ASnapshotSaysThatItBroughtEverythingBack)
{
    const auto sink = Make<RecordingSink>();
    const Connection connection(*project, *sink);
    for (bool commit : {true, false}) {
        EXPECT_EQ(S_OK, project->TakeUndoSnapshot(Str(u"import").Get()));
        EXPECT_EQ(KV_E_UNDO_STEP_OPEN, Begin()) << "until the snapshot's step is ended";
        project->put_Label(Str(u"after").Get());
        Delivered(*project.Get(), *sink);
        EXPECT_EQ(S_OK, End(commit));
        if (commit) {
            EXPECT_EQ((Units{u"101 Project Snapshot"}), UnitsOf(NewestStep().Get()));
            EXPECT_EQ(S_OK, project->UndoOperation());
        }
        EXPECT_EQ((std::vector{Event(EVENT_MessageBroadcast, {2, 0, 0})}), Delivered(*project.Get(), *sink));
    }
}

TEST_F(UndoStepTest, ASnapshotBringsBackTheObjectsThemselves)
{
    const auto file = AddDataFile(*project.Get());
    ComPtr<IUnknown> production, same;
    title->put_Source(Str(u"clip.mpg").Get());
    title->GetProduction(production.Put());
    project->put_FrameRate(30.0);
    project->put_ProjectSize(7);
    Begin();
    SetLabel(u"labelled");
    End();
    project->TakeUndoSnapshot(nullptr);
    project->RemoveDataFile(1, nullptr);
    project->RemoveTitle(IdOf(title), nullptr);
    const auto added = AddTitle(*project.Get());
    End();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        ComPtr<IKVDataFile> fileBack;
        ASSERT_EQ(S_OK, project->GetDataFile(1, fileBack.Put()));
        EXPECT_EQ(title, TitleAt(*project.Get(), 1));
        EXPECT_EQ(file, fileBack);
        EXPECT_EQ(u"clip.mpg", Text(*title.Get(), &IKVTitle::get_Source));
        EXPECT_EQ(S_OK, title->GetProduction(same.Put()));
        EXPECT_EQ(production, same);
        EXPECT_EQ(30.0, ValueOf(*project.Get(), &IKVProjectData::get_FrameRate));
        EXPECT_EQ(7, ValueOf(*project.Get(), &IKVProjectData::get_ProjectSize));
        EXPECT_TRUE(IsDirty(*project.Get()));
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(added, TitleAt(*project.Get(), 1));
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
    const auto xml = ParseElement(u"<neither><file/></neither>");
    const auto set = [&](BSTR label, LONG parameter, IXMLDOMNode* data) {
        DiscCommandParams command{static_cast<DiscCommand>(12), parameter, 0, data};
        EXPECT_EQ(S_OK, project->put_Label(label));
        EXPECT_EQ(S_OK, title->put_Label(label));
        EXPECT_EQ(S_OK, Query<IKVCommandList>(title)->SetCommandList(1, &command));
    };
    const auto expect = [&](std::u16string_view label, const char16_t* command) {
        EXPECT_EQ(label, LabelOf(project));
        EXPECT_EQ(label, Label());
        EXPECT_EQ((Units{command}), CommandsOf(title.Get()));
    };
    const Bstr noXml(u"no XML \u0001");
    set(nullptr, 1, xml.Get());
    for (const bool commit : {true, false}) {
        project->TakeUndoSnapshot(nullptr);
        set(noXml.Get(), 2, nullptr);
        EXPECT_EQ(S_OK, End(commit));
        EXPECT_EQ(commit ? S_OK : E_FAIL, project->UndoOperation());
        expect(u"<null>", u"12 1 0 <neither><file/></neither>");
        EXPECT_EQ(S_OK, project->RedoOperation()) << "also what was cancelled";
        expect(noXml.View(), u"12 2 0");
        EXPECT_EQ(S_OK, project->UndoOperation());
    }
}

TEST_F(UndoStepTest, ALockedProjectKeepsItsSnapshotForLater)
{
    const auto locking = Query<IKVLocking>(project);
    SetLabel(u"before");
    for (const bool commit : {true, false}) {
        project->TakeUndoSnapshot(nullptr);
        SetLabel(u"after");
        if (commit) End();
        locking->LockObject(VARIANT_FALSE);
        if (commit) {
            project->UndoOperation();
            project->RedoOperation(); // Nothing was undone that could be redone.
        } else {
            EXPECT_EQ(KV_E_LOCKED, End(false));
        }
        EXPECT_EQ(u"after", Label());
        locking->UnlockObject(VARIANT_FALSE);
        EXPECT_EQ(S_OK, commit ? project->UndoOperation() : End(false)) << "it can be tried again";
        EXPECT_EQ(u"before", Label());
    }
}

TEST_F(UndoStepTest, ASnapshotOfContentsThatAreGoneCannotBeCancelled)
{
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
    EXPECT_EQ(u"other", LabelOf(other));
}

TEST_F(UndoStepTest, AStepKeepsNothingOfContentsThatWereReplacedInIt)
{
    const auto other = NewProject();
    const auto root = ParseElement(u"<Root><Project label='loaded'><Titles><Title/></Titles></Project></Root>");
    for (const bool load : {false, true}) {
        for (const bool commit : {false, true}) {
            const auto removed = AddTitle(*project.Get(), 1);
            ComPtr<IUnknown> production;
            const auto edit = [&](const char16_t* label, LONG channels) {
                DiscCommandParams command{StopPlayback, channels, 0, nullptr};
                project->put_Label(Str(label).Get());
                project->AddDataFile(0, nullptr);
                Query<IKVCommandList>(project)->SetCommandList(1, &command);
                Query<IKVEncodingParams>(project)->put_AudioChannels(channels);
            };
            removed->GetProduction(production.Put());
            Begin();
            End();
            Begin();
            EXPECT_EQ(S_OK, project->BeginStoryboardUndo(production.Get(), 1));
            edit(u"old", 4);
            removed->put_Label(Str(u"edited").Get());
            project->RemoveTitle(IdOf(removed), nullptr);
            project->AddTitle(0, nullptr);
            other->put_Label(Str(u"other").Get());
            EXPECT_EQ(S_OK, load ? project->loadXML(root.Get()) : project->Clear());
            EXPECT_FALSE(CanUndo()) << "what was committed before";
            removed->AddRef();
            EXPECT_EQ(1u, removed->Release()) << "the step has let go of it";
            const std::u16string before = Saved();
            edit(u"new", 6);
            project->AddTitle(0, nullptr);
            const std::u16string after = Saved();
            other->put_Options(3);
            EXPECT_EQ(S_OK, End(commit));
            if (commit) {
                EXPECT_EQ(after, Saved());
                EXPECT_EQ(u"other", LabelOf(other));
                EXPECT_EQ(S_OK, project->UndoOperation());
            }
            EXPECT_EQ(before, Saved());
            EXPECT_EQ(u"", LabelOf(other)) << "its records stay";
            EXPECT_EQ(0u, ValueOf(*other.Get(), &IKVProjectData::get_Options));
            EXPECT_EQ(commit, SUCCEEDED(project->RedoOperation()));
            EXPECT_EQ(commit ? after : before, Saved());
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
    const auto stray = AddTitle(*other.Get());
    other->RemoveTitle(IdOf(stray), nullptr);
    other.Reset();
    EXPECT_EQ(S_OK, stray->put_Label(Str(u"alive").Get()));

    EXPECT_EQ(S_OK, Begin()) << "the other's step is closed";
    EXPECT_EQ(S_OK, End(false));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"one", LabelOf(project));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"", LabelOf(project));
    EXPECT_FALSE(CanUndo());
}

TEST_F(UndoStepTest, ProjectsShareTheManagerUntilItIsReset)
{
    ComPtr<IOleUndoManager> shared, next;
    EXPECT_EQ(S_OK, NewProject()->GetUndoManager(shared.Put()));
    EXPECT_EQ(manager, shared);
    EXPECT_EQ(S_OK, project->ResetStaticData());
    EXPECT_EQ(S_OK, NewProject()->GetUndoManager(next.Put()));
    EXPECT_NE(manager, next);
    Begin();
    SetLabel(u"x");
    End();
    EXPECT_EQ(S_OK, project->UndoOperation()) << "the project keeps its manager";
    EXPECT_EQ(u"<null>", Label());
    EXPECT_EQ(S_FALSE, project->get_UndoEnable(nullptr));
    EXPECT_EQ(S_FALSE, project->get_RedoEnable(nullptr));
    EXPECT_EQ(E_POINTER, project->GetUndoManager(nullptr));
}

/// A class object that creates nothing.
class NoFactory final : public Object<IClassFactory> {
public:
    HRESULT CreateInstance(IUnknown*, REFIID, void** object) override { return *object = nullptr, E_ACCESSDENIED; }
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
