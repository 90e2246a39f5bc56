#include "engine/storyboard/StoryboardSupport.h"

namespace kv::test {
namespace {

/// Writes down when it runs; may fail, or do something else.
class RecordingUnit final : public Object<IOleUndoUnit> {
public:
    RecordingUnit(std::u16string name, std::u16string& log) : m_name(std::move(name)), m_log(log) {}

    HRESULT result = S_OK;
    std::function<void()> hook;

    HRESULT Do(IOleUndoManager* manager) override
    {
        EXPECT_EQ(nullptr, manager);
        m_log += m_name;
        if (hook) hook();
        return result;
    }

    HRESULT GetDescription(BSTR* description) override
    {
        *description = Bstr(m_name).Detach();
        return S_OK;
    }

    HRESULT GetUnitType(CLSID*, LONG*) override { return E_NOTIMPL; }
    HRESULT OnNextAdd() override { return S_OK; }

private:
    const std::u16string m_name;
    std::u16string& m_log;
};

class ProductionUndoTest : public StoryboardTest {
protected:
    void Add(const char16_t* source) { ASSERT_EQ(S_OK, AddSource(production.Get(), Bstr(source))); }

    ComPtr<RecordingUnit> AddUnit(const char16_t* name)
    {
        auto unit = Make<RecordingUnit>(name, log);
        EXPECT_EQ(S_OK, production->AddUndoUnit(unit.Get()));
        return unit;
    }

    std::u16string Sources()
    {
        std::u16string all;
        for (const auto& source : SourcesOf(production.Get()))
            all += source;
        return all;
    }

    double Aspect() { return Get(production, &IProductionInfo::get_AspectRatio); }

    bool Can(HRESULT (IZXEProductionData::*method)(VARIANT_BOOL*, BSTR*))
    {
        VARIANT_BOOL can = 1;
        EXPECT_EQ(S_OK, (production.Get()->*method)(&can, nullptr));
        return can == VARIANT_TRUE;
    }
    bool CanUndo() { return Can(&IZXEProductionData::CanUndo); }
    bool CanRedo() { return Can(&IZXEProductionData::CanRedo); }

    ComPtr<IProductionInfo> info = Query<IProductionInfo>(production);
    std::u16string log;
};

TEST_F(ProductionUndoTest, TakesBackAndBringsBackWholeBlocks)
{
    Add(u"a");
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    Add(u"b");
    ASSERT_EQ(S_OK, info->put_AspectRatio(2.0));
    AddUnit(u"1");
    ASSERT_EQ(S_OK, production->DeletePanel(0));
    AddUnit(u"2");
    EXPECT_FALSE(CanUndo());
    EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, production->Undo());
    ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    EXPECT_EQ(u"", log);

    VARIANT_BOOL can = VARIANT_FALSE;
    Bstr description;
    EXPECT_EQ(S_OK, production->CanUndo(&can, description.Put()));
    EXPECT_EQ(VARIANT_TRUE, can);
    EXPECT_EQ(u"2", description.View());
    EXPECT_EQ(S_OK, production->CanRedo(&can, description.Put()));
    EXPECT_EQ(VARIANT_FALSE, can);
    EXPECT_FALSE(description);

    for (int round = 0; round < 2; ++round) {
        log.clear();
        ASSERT_EQ(S_OK, production->Undo());
        EXPECT_EQ(u"a", Sources());
        EXPECT_EQ(4.0 / 3.0, Aspect());
        EXPECT_EQ(u"21", log);
        EXPECT_FALSE(CanUndo());
        EXPECT_EQ(ZXE_E_NOTHING_TO_UNDO, production->Undo());

        log.clear();
        ASSERT_EQ(S_OK, production->Redo());
        EXPECT_EQ(u"b", Sources());
        EXPECT_EQ(2.0, Aspect());
        EXPECT_EQ(u"12", log);
        EXPECT_FALSE(CanRedo());
        EXPECT_EQ(ZXE_E_NOTHING_TO_UNDO, production->Redo());
    }
}

TEST_F(ProductionUndoTest, RunsABlockBackThatIsNotKept)
{
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    Add(u"a");
    AddUnit(u"1");
    ASSERT_EQ(S_OK, info->put_AspectRatio(2.0));
    AddUnit(u"2")->result = E_FAIL;
    EXPECT_EQ(E_FAIL, production->CloseUndoBlock(VARIANT_FALSE));
    EXPECT_EQ(u"", Sources());
    EXPECT_EQ(4.0 / 3.0, Aspect());
    EXPECT_EQ(u"21", log);
    EXPECT_FALSE(CanUndo());
    EXPECT_FALSE(CanRedo());
    EXPECT_EQ(S_OK, production->OpenUndoBlock());
}

TEST_F(ProductionUndoTest, BlocksDoNotNestAndEmptyOnesLeaveNoTrace)
{
    EXPECT_EQ(ZXE_E_NO_UNDO_BLOCK, production->CloseUndoBlock(VARIANT_TRUE));
    EXPECT_EQ(ZXE_E_NO_UNDO_BLOCK, production->AddUndoUnit(Make<RecordingUnit>(u"1", log).Get()));
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, production->OpenUndoBlock());
    EXPECT_EQ(E_POINTER, production->AddUndoUnit(nullptr));
    EXPECT_EQ(E_NOINTERFACE, production->AddUndoUnit(production.Get()));
    Add(u"a");
    EXPECT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    ASSERT_EQ(S_OK, production->Undo());

    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    EXPECT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    EXPECT_FALSE(CanUndo());
    EXPECT_TRUE(CanRedo());

    InBlock([&] { AddUnit(u"1"); });
    EXPECT_TRUE(CanUndo());
    EXPECT_FALSE(CanRedo());
}

TEST_F(ProductionUndoTest, AFailedUnitLeavesEverythingInItsPlace)
{
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    const auto first = AddUnit(u"1");
    Add(u"a");
    AddUnit(u"2");
    ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));

    first->result = E_ACCESSDENIED;
    EXPECT_EQ(E_ACCESSDENIED, production->Undo());
    EXPECT_EQ(u"212", log);
    EXPECT_EQ(u"a", Sources());
    EXPECT_TRUE(CanUndo());
    EXPECT_FALSE(CanRedo());

    first->result = S_OK;
    EXPECT_EQ(S_OK, production->Undo());
    EXPECT_EQ(u"", Sources());
}

TEST_F(ProductionUndoTest, EditsOutsideOfBlocksStand)
{
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    Add(u"b");
    ASSERT_EQ(S_OK, info->put_AspectRatio(2.0));
    ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    ASSERT_EQ(S_OK, Query<IEditData>(production)->AddSourceFile(0, Bstr(u"a").Get(), 0.0, 0.0, 0, nullptr));
    ASSERT_EQ(S_OK, info->put_Stereoscopic(VARIANT_TRUE));
    EXPECT_EQ(u"ab", Sources());
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ(u"a", Sources());
    ASSERT_EQ(S_OK, info->put_AspectRatio(3.0));
    ASSERT_EQ(S_OK, production->Redo());
    EXPECT_EQ(u"ab", Sources());
    EXPECT_EQ(2.0, Aspect());
    VARIANT_BOOL stereoscopic = VARIANT_FALSE;
    EXPECT_EQ(S_OK, info->get_Stereoscopic(&stereoscopic));
    EXPECT_EQ(VARIANT_TRUE, stereoscopic);

    // What was to go is gone already.
    ASSERT_EQ(S_OK, production->DeletePanel(1));
    EXPECT_EQ(S_OK, production->Undo());
    EXPECT_EQ(u"a", Sources());
    EXPECT_FALSE(CanUndo());
}

TEST_F(ProductionUndoTest, AUnitMayUseTheProduction)
{
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    const auto unit = AddUnit(u"1");
    ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    unit->hook = [&] {
        EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, production->OpenUndoBlock());
        EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, production->Undo());
        Add(u"a");
    };
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ(u"a", Sources());

    unit->hook = [&] { EXPECT_EQ(S_OK, production->Close()); };
    EXPECT_EQ(S_OK, production->Redo());
    EXPECT_FALSE(CanUndo());
    EXPECT_FALSE(CanRedo());
}

TEST_F(ProductionUndoTest, CloseDropsTheHistoryAndItsUnits)
{
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    const auto kept = AddUnit(u"1");
    ASSERT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    ASSERT_EQ(S_OK, production->OpenUndoBlock());
    Add(u"a");
    const auto open = AddUnit(u"2");
    ASSERT_EQ(S_OK, production->Close());
    for (const auto& unit : {kept, open}) {
        unit->AddRef();
        // The reference of the loop, and that of the variable.
        EXPECT_EQ(2U, unit->Release());
    }
    EXPECT_EQ(u"", log);
    EXPECT_EQ(u"a", Sources());
    ASSERT_EQ(S_OK, production->Initialise());
    EXPECT_FALSE(CanUndo());
    EXPECT_EQ(S_OK, production->OpenUndoBlock());
}

TEST_F(ProductionUndoTest, TellsWhatCanBeUndone)
{
    InBlock([&] { Add(u"a"); });
    ASSERT_EQ(S_OK, production->ClearModified());
    sink->heard.clear();
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ((std::vector<Heard>{{1, {0}}, {11, {1}}, {18, {2}}}), sink->heard);
    sink->heard.clear();
    ASSERT_EQ(S_OK, production->Redo());
    EXPECT_EQ((std::vector<Heard>{{0, {0}}, {18, {1}}}), sink->heard);
}

TEST_F(ProductionUndoTest, BlocksOfAGroupOpenAndCloseTogether)
{
    const auto other = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
    const auto closed = CreateEngine<IZXEProductionData>(CLSID_ZXEProduction);
    ASSERT_EQ(S_OK, other->Initialise());
    auto group = CreateEngine<IZXEUndoGroup>(CLSID_ZXEUndoGroup);
    EXPECT_EQ(E_POINTER, group->AddProduction(nullptr));
    EXPECT_EQ(E_NOINTERFACE, group->AddProduction(group.Get()));
    for (const auto& each : {production, other, closed}) {
        EXPECT_EQ(S_OK, group->AddProduction(each.Get()));
        EXPECT_EQ(E_INVALIDARG, group->AddProduction(each.Get()));
    }
    EXPECT_EQ(ZXE_E_NO_UNDO_BLOCK, group->CloseUndoBlocks(VARIANT_TRUE));
    EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, group->OpenUndoBlocks()) << "one is not in use";
    closed->Initialise();
    InBlock([&] { EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, group->OpenUndoBlocks()) << "one has a block open"; });

    const auto touched = [&] {
        std::vector<IUnknown*> all;
        ComPtr<IUnknown> each;
        for (LONG i = 0; group->GetTouched(i, each.Put()) == S_OK; ++i)
            all.push_back(each.Get());
        return all;
    };
    const auto is = [](const ComPtr<IZXEProductionData>& each) { return Query<IUnknown>(each).Get(); };
    const auto inGroup = [&](bool commit, auto&& edits) {
        ASSERT_EQ(S_OK, group->OpenUndoBlocks());
        EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, group->OpenUndoBlocks());
        edits();
        EXPECT_EQ(S_OK, group->CloseUndoBlocks(commit ? VARIANT_TRUE : VARIANT_FALSE));
    };
    inGroup(true, [&] {
        EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, production->OpenUndoBlock());
        EXPECT_EQ(ZXE_E_UNDO_BLOCK_OPEN, production->Undo());
        EXPECT_FALSE(CanUndo());
        EXPECT_TRUE(touched().empty()) << "nothing was edited";
        Add(u"a");
        EXPECT_EQ(S_OK, AddSource(other.Get(), Bstr(u"b")));
        Add(u"c");
        EXPECT_EQ((std::vector<IUnknown*>{is(production), is(other)}), touched());
    });
    EXPECT_EQ(2U, touched().size());
    inGroup(false, [&] { AddUnit(u"1"), Add(u"d"); });
    EXPECT_EQ(u"ac", Sources());
    EXPECT_EQ(u"1", log);
    ASSERT_EQ(S_OK, production->Undo());
    EXPECT_EQ(u"", Sources());
    inGroup(true, [] {});
    EXPECT_TRUE(CanRedo());
    inGroup(true, [&] { EXPECT_EQ(S_OK, AddSource(closed.Get(), Bstr(u"b"))); });
    EXPECT_FALSE(CanRedo()) << "a block of the group counts for all of it";
    EXPECT_EQ(ZXE_E_NOTHING_TO_UNDO, production->Redo());

    // One that closes its block itself, and one that goes.
    ASSERT_EQ(S_OK, group->OpenUndoBlocks());
    EXPECT_EQ(S_OK, production->CloseUndoBlock(VARIANT_TRUE));
    EXPECT_EQ(S_OK, production->OpenUndoBlock());
    EXPECT_EQ(S_OK, closed->Close());
    EXPECT_EQ((std::vector<IUnknown*>{is(production), is(closed)}), touched());
    EXPECT_EQ(S_OK, AddSource(other.Get(), Bstr(u"d")));
    group.Reset();
    EXPECT_EQ(2U, SourcesOf(other.Get()).size());
    EXPECT_EQ(S_OK, other->Undo());
    EXPECT_EQ(1U, SourcesOf(other.Get()).size());
    EXPECT_EQ(S_OK, CreateEngine<IZXEUndoGroup>(CLSID_ZXEUndoGroup)->AddProduction(other.Get()));
}

} // namespace
} // namespace kv::test
