#include "UndoSupport.h"

#include "KVProjectData/Engine.h"
#include "platform/automation/SafeArray.h"
#include "platform/system/ErrorReporter.h"

namespace kv::test {
namespace {

class StoryboardUndoTest : public UndoTest {
protected:
    void SetUp() override
    {
        UndoTest::SetUp();
        ASSERT_EQ(S_OK, title->GetProduction(production.Put()));
        data = Query<IZXEProductionData>(production);
    }

    void AddSource(const char16_t* name) { AddSource(production.Get(), name); }
    static void AddSource(IUnknown* storyboard, const char16_t* name)
    {
        EXPECT_EQ(S_OK, Query<IEditData>(storyboard)->AddSourceFile(0, Str(name).Get(), 0.0, 0.0, -1, nullptr));
    }
    LONG Panels() { return ValueOf(*data.Get(), &IZXEProductionData::GetPanelCount); }

    ComPtr<IUnknown> production;
    ComPtr<IZXEProductionData> data;
};

TEST_F(StoryboardUndoTest, ItsEditsAreUndoneWithTheStep)
{
    EXPECT_EQ(S_FALSE, project->BeginStoryboardUndo(production.Get(), 1)) << "no step is open";
    Begin();
    EXPECT_EQ(S_OK, project->BeginStoryboardUndo(production.Get(), 1));
    EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, project->BeginStoryboardUndo(production.Get(), 2));
    SetLabel(u"x");
    AddSource(u"moniker:a");
    AddSource(u"moniker:b");
    End();
    EXPECT_EQ(u"105 ", UnitsOf(NewestStep().Get()).front()) << "over all that was recorded";
    VARIANT_BOOL can = VARIANT_FALSE;
    Bstr description;
    EXPECT_EQ(S_OK, data->CanUndo(&can, description.Put()));
    EXPECT_EQ(VARIANT_TRUE, can);
    EXPECT_EQ(u"Dummy", description.View());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(0, Panels());
        EXPECT_EQ(u"<null>", Label());
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(2, Panels());
        EXPECT_EQ(u"x", Label());
    }
}

/// What a menu plays in.
ComPtr<IZXEProductionData> ProductionOf(IKVMenu& menu, bool native = false)
{
    ComPtr<IUnknown> production;
    EXPECT_EQ(S_OK, native ? menu.GetBackgroundProduction(production.Put()) : menu.GetProduction(production.Put()));
    return Query<IZXEProductionData>(production);
}

TEST_F(StoryboardUndoTest, ThoseOfMenusTakePartInEveryStep)
{
    std::vector<ComPtr<IZXEProductionData>> boards;
    ComPtr<IKVMenu> menu;
    for (const bool native : {false, true}) {
        ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put()));
        if (native) {
            EXPECT_EQ(S_OK, menu->SetNative(VARIANT_TRUE));
        }
        boards.push_back(ProductionOf(*menu.Get(), native));
    }
    const auto expect = [&](LONG panels) {
        for (const auto& board : boards)
            EXPECT_EQ(panels, ValueOf(*board.Get(), &IZXEProductionData::GetPanelCount));
    };
    for (const bool commit : {false, true}) {
        Begin();
        for (const auto& board : boards) {
            EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, board->OpenUndoBlock());
            AddSource(board.Get(), u"moniker:a");
        }
        EXPECT_EQ(S_OK, project->EndUndoEx(commit ? VARIANT_TRUE : VARIANT_FALSE, VARIANT_TRUE));
        expect(commit ? 1 : 0);
    }
    EXPECT_EQ(S_OK, project->UndoOperation());
    expect(0);
    EXPECT_EQ(S_OK, project->RedoOperation());
    expect(1);
    // The step is open although one refuses, and those before that one take part.
    boards[1]->Close();
    EXPECT_EQ(ZXE_E_NOT_OPEN, Begin());
    EXPECT_EQ(KV_E_UNDO_STEP_OPEN, Begin());
    EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, boards[0]->OpenUndoBlock());
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(S_OK, boards[0]->OpenUndoBlock());
    EXPECT_EQ(S_OK, boards[0]->CloseUndoBlock(VARIANT_FALSE));
}

TEST_F(StoryboardUndoTest, ThoseOfMenusThatNobodyTouchesKeepNothing)
{
    std::vector<ComPtr<IKVMenu>> menus(3);
    std::vector<ComPtr<IZXEProductionData>> boards;
    for (auto& menu : menus) {
        ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put()));
        boards.push_back(ProductionOf(*menu.Get()));
    }
    const auto expect = [&](std::vector<LONG> panels) {
        std::vector<LONG> found;
        for (const auto& board : boards)
            found.push_back(ValueOf(*board.Get(), &IZXEProductionData::GetPanelCount));
        EXPECT_EQ(panels, found);
    };
    const auto step = [&](const std::vector<std::size_t>& edited) {
        Begin();
        for (const std::size_t at : edited)
            AddSource(boards[at].Get(), u"moniker:a");
        EXPECT_EQ(S_OK, project->EndUndoEx(VARIANT_TRUE, VARIANT_TRUE));
    };
    const auto can = [&](std::size_t at) {
        VARIANT_BOOL undo = VARIANT_FALSE;
        VARIANT_BOOL redo = VARIANT_FALSE;
        EXPECT_EQ(S_OK, boards[at]->CanUndo(&undo, nullptr));
        EXPECT_EQ(S_OK, boards[at]->CanRedo(&redo, nullptr));
        return std::pair(undo == VARIANT_TRUE, redo == VARIANT_TRUE);
    };
    step({0});
    step({});
    step({2, 0});
    EXPECT_EQ(std::pair(false, false), can(1));
    expect({2, 0, 1});
    for (const auto& panels : {std::vector<LONG>{1, 0, 0}, {1, 0, 0}, {0, 0, 0}}) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        expect(panels);
    }
    for (const auto& panels : {std::vector<LONG>{1, 0, 0}, {1, 0, 0}, {2, 0, 1}}) {
        EXPECT_EQ(S_OK, project->RedoOperation());
        expect(panels);
    }
    EXPECT_EQ(S_OK, project->UndoOperation());
    step({1});
    EXPECT_EQ(std::pair(true, false), can(0));
    EXPECT_EQ(std::pair(false, false), can(2)) << "the step that it could redo is gone";

    // A menu that comes within a step takes part from the next one on; one that goes, to the end of this one.
    Begin();
    ComPtr<IKVMenu> late;
    ASSERT_EQ(S_OK, project->AddMenu(0, late.Put()));
    EXPECT_EQ(S_OK, menus[1]->SetNative(VARIANT_TRUE));
    EXPECT_EQ(S_OK, project->RemoveMenu(ValueOf(*menus[2].Get(), &IKVMenu::get_ID), nullptr));
    const auto background = ProductionOf(*menus[1].Get(), true);
    for (const auto& outside : {ProductionOf(*late.Get()), background}) {
        EXPECT_EQ(S_OK, outside->OpenUndoBlock());
        EXPECT_EQ(S_OK, outside->CloseUndoBlock(VARIANT_TRUE));
    }
    for (const auto& board : boards)
        EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, board->OpenUndoBlock());
    AddSource(boards[2].Get(), u"moniker:a");
    EXPECT_EQ(S_OK, End());
    expect({1, 1, 1});
    Begin();
    for (const auto& inside : {ProductionOf(*late.Get()), background})
        EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, inside->OpenUndoBlock());
    EXPECT_EQ(S_OK, boards[2]->OpenUndoBlock()) << "its menu is gone";
    EXPECT_EQ(S_OK, boards[2]->CloseUndoBlock(VARIANT_TRUE));
    EXPECT_EQ(S_OK, End());
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(S_OK, project->UndoOperation());
    expect({1, 1, 0});
}

TEST_F(StoryboardUndoTest, ThoseOfMenusBelongToASnapshot)
{
    ComPtr<IKVMenu> menu;
    ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put()));
    const auto board = ProductionOf(*menu.Get());
    const auto panels = [&] { return ValueOf(*board.Get(), &IZXEProductionData::GetPanelCount); };
    for (const bool commit : {false, true}) {
        EXPECT_EQ(S_OK, project->TakeUndoSnapshot(nullptr));
        AddSource(board.Get(), u"moniker:a");
        menu->put_Label(Str(u"x").Get());
        EXPECT_EQ(S_OK, End(commit));
        if (commit) {
            EXPECT_EQ(1, panels());
            EXPECT_EQ(S_OK, project->UndoOperation());
        }
        EXPECT_EQ(0, panels());
        EXPECT_EQ(u"<null>", Text(*menu.Get(), &IKVMenu::get_Label));
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(1, panels());
        EXPECT_EQ(u"x", Text(*menu.Get(), &IKVMenu::get_Label));
        EXPECT_EQ(S_OK, project->UndoOperation());
    }
}

TEST_F(StoryboardUndoTest, ItsEditsAreTakenBackWhenTheStepIsCancelled)
{
    Begin();
    project->BeginStoryboardUndo(production.Get(), 1);
    AddSource(u"moniker:a");
    End(false);
    EXPECT_EQ(0, Panels());
    EXPECT_FALSE(CanUndo());
    EXPECT_EQ(S_OK, data->OpenUndoBlock()) << "the step's block is closed";
    EXPECT_EQ(S_OK, data->CloseUndoBlock(VARIANT_FALSE));
}

TEST_F(StoryboardUndoTest, ABlockWithoutEditsKeepsTheTurns)
{
    for (const char16_t* source : {u"moniker:a", static_cast<const char16_t*>(nullptr), u"moniker:c"}) {
        Begin();
        project->BeginStoryboardUndo(production.Get(), 1);
        if (source) AddSource(source);
        End();
    }
    EXPECT_EQ(2, Panels());
    for (LONG panels : {1, 1, 0}) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(panels, Panels());
    }
    for (LONG panels : {1, 1, 2}) {
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(panels, Panels());
    }
}

TEST_F(StoryboardUndoTest, StoryboardsOfOneIdAreAllClosed)
{
    ComPtr<IKVTitle> second;
    ComPtr<IUnknown> other;
    project->AddTitle(0, second.Put());
    second->GetProduction(other.Put());
    Begin();
    EXPECT_EQ(S_OK, project->BeginStoryboardUndo(production.Get(), 1));
    EXPECT_EQ(S_OK, project->BeginStoryboardUndo(other.Get(), 1));
    End();
    for (const auto& each : {production, other}) {
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(each)->OpenUndoBlock());
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(each)->CloseUndoBlock(VARIANT_FALSE));
    }
}

TEST_F(StoryboardUndoTest, TakesNoPartInAStepWhoseProjectWasCleared)
{
    Begin();
    project->BeginStoryboardUndo(production.Get(), 1);
    AddSource(u"moniker:a");
    EXPECT_EQ(S_OK, project->Clear());
    EXPECT_EQ(S_OK, End());
    EXPECT_TRUE(UnitsOf(NewestStep().Get()).empty());
}

TEST_F(StoryboardUndoTest, AStoryboardThatCannotUndoIsPassedOver)
{
    Begin();
    project->BeginStoryboardUndo(production.Get(), 1);
    SetLabel(u"x");
    End();
    data->Close();
    data->Initialise();
    ZXUClearErrorStack();
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_TRUE(ZXUErrorStack().empty());
    EXPECT_EQ(u"<null>", Label());
}

TEST_F(StoryboardUndoTest, AClosedStoryboardFailsAndIsReported)
{
    Begin();
    project->BeginStoryboardUndo(production.Get(), 1);
    SetLabel(u"x");
    // The block is still open when the title's production goes.
    data->Close();
    EXPECT_EQ(ZXE_E_NOT_OPEN, End());
    EXPECT_EQ((std::vector<std::string>{"KVProjectUndo(244): *** Error " + ResultText(ZXE_E_NOT_OPEN) + "\n"}),
              ZXUErrorStack());
    EXPECT_EQ(KV_E_UNDO_STEP_OPEN, Begin()) << "the step stays open";
    EXPECT_EQ(S_OK, End(false));
    EXPECT_EQ(u"<null>", Label());
    EXPECT_EQ(ZXE_E_NOT_OPEN, (Begin(), project->BeginStoryboardUndo(production.Get(), 1)));
    End(false);
}

TEST_F(StoryboardUndoTest, AStoryboardThatFailsToUndoIsReportedAndTheRestIsUndone)
{
    const auto stubborn = Make<HostUnit>();
    Begin();
    project->BeginStoryboardUndo(production.Get(), 1);
    SetLabel(u"x");
    EXPECT_EQ(S_OK, data->AddUndoUnit(Query<IUnknown>(stubborn).Get()));
    End();
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"<null>", Label());
    const std::string code = ResultText(E_ACCESSDENIED);
    EXPECT_EQ((std::vector<std::string>{"KVProjectUndo(197): *** Error " + code + "\n",
                                        "KVProjectUndo(212): *** Error " + code + "\n"}),
              ZXUErrorStack());
}

TEST_F(StoryboardUndoTest, StoryboardsStayTogetherWhenOneFails)
{
    ComPtr<IKVTitle> second;
    ComPtr<IUnknown> other;
    project->AddTitle(0, second.Put());
    second->GetProduction(other.Put());
    const auto stubborn = Make<HostUnit>();
    stubborn->result = S_OK;
    for (const char16_t* label : {u"one", u"two"}) {
        Begin();
        for (const auto& storyboard : {production, other}) {
            EXPECT_EQ(S_OK, project->BeginStoryboardUndo(storyboard.Get(), 1));
            AddSource(storyboard.Get(), u"moniker:a");
        }
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(other)->AddUndoUnit(Query<IUnknown>(stubborn).Get()));
        SetLabel(label);
        End();
    }
    const auto expect = [&](LONG panels, std::u16string_view label) {
        EXPECT_EQ(panels, Panels());
        EXPECT_EQ(panels, ValueOf(*Query<IZXEProductionData>(other).Get(), &IZXEProductionData::GetPanelCount));
        EXPECT_EQ(label, Label());
    };
    for (const bool undo : {true, false}) {
        stubborn->result = E_ACCESSDENIED;
        undo ? project->UndoOperation() : project->RedoOperation();
        expect(undo ? 2 : 1, undo ? u"one" : u"two");
        stubborn->result = S_OK;
        // The way back has nothing to do in the storyboards, and the next turn all of it.
        undo ? project->RedoOperation() : project->UndoOperation();
        expect(undo ? 2 : 1, undo ? u"two" : u"one");
        undo ? project->UndoOperation() : project->RedoOperation();
        expect(undo ? 1 : 2, undo ? u"one" : u"two");
    }
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(S_OK, project->UndoOperation());
    expect(0, u"<null>");
}

} // namespace
} // namespace kv::test
