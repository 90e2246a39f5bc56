#include "UndoSupport.h"

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

TEST_F(UndoStepTest, ANewStepEndsWhatCouldBeRedone)
{
    for (const char16_t* label : {u"a", u"b"}) {
        Begin();
        SetLabel(label);
        End();
    }
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_TRUE(CanRedo());
    Begin();
    EXPECT_TRUE(CanRedo()) << "until the step is committed";
    SetLabel(u"c");
    End();
    EXPECT_FALSE(CanRedo());
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"a", Label());
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"<null>", Label());
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
        ASSERT_EQ(S_OK, project->GetTitle(1, title.Put()));
    }
}

TEST_F(UndoStepTest, RecordsFindObjectsThatASnapshotMadeAnew)
{
    const auto encoding = Query<IKVEncodingParams>(title);
    encoding->put_SyncToProject(VARIANT_FALSE);
    Begin();
    SetLabel(u"labelled");
    encoding->put_VideoBitrate(1000);
    project->AddTitle(0, nullptr);
    End();
    project->TakeUndoSnapshot(nullptr);
    project->put_Label(Str(u"x").Get());
    End();
    EXPECT_EQ(S_OK, project->UndoOperation());
    ComPtr<IKVTitle> anew;
    ASSERT_EQ(S_OK, project->GetTitle(1, anew.Put()));
    ASSERT_NE(title, anew);
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"<null>", Text(*anew.Get(), &IKVTitle::get_Label));
    EXPECT_EQ(8000000, ValueOf(*Query<IKVEncodingParams>(anew).Get(), &IKVEncodingParams::get_VideoBitrate));
    EXPECT_EQ(u"labelled", Label()) << "no part of the project any more";
    EXPECT_EQ(1, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
    EXPECT_EQ(S_OK, project->RedoOperation());
    EXPECT_EQ(u"labelled", Text(*anew.Get(), &IKVTitle::get_Label));
    EXPECT_EQ(2, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
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
    ASSERT_EQ(S_OK, project->GetTitle(1, title.Put()));
    EXPECT_EQ(u"before", Label());
}

TEST_F(UndoStepTest, ClearForgetsAllSteps)
{
    Begin();
    SetLabel(u"x");
    End();
    Begin();
    SetLabel(u"y");
    EXPECT_EQ(S_OK, project->Clear());
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(S_OK, project->UndoOperation()) << "the step that was open meanwhile";
    EXPECT_TRUE(FAILED(project->UndoOperation()));
    EXPECT_EQ(0, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
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
