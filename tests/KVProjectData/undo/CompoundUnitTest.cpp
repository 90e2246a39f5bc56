#include "UndoSupport.h"

namespace kv::test {
namespace {

class CompoundUnitTest : public UndoTest {
protected:
    /// A step without records, as the stack holds it.
    ComPtr<IOleParentUndoUnit> NewCompound()
    {
        Begin(u"compound");
        End();
        return Query<IOleParentUndoUnit>(NewestStep());
    }
    ComPtr<IOleUndoUnit> Unit(int name) { return Make<HostUnit>(name, &log); }
    std::vector<int> Log() { return std::exchange(log, {}); }

    std::vector<int> log;
};

TEST_F(CompoundUnitTest, RunsItsUnitsBackAndForthInTurn)
{
    const auto compound = NewCompound();
    for (int name : {1, 2, 3})
        EXPECT_EQ(S_OK, compound->Add(Unit(name).Get()));
    for (const auto& order : {std::vector{3, 2, 1}, {1, 2, 3}, {3, 2, 1}}) {
        EXPECT_EQ(S_OK, compound->Do(nullptr)) << "whatever the units return";
        EXPECT_EQ(order, Log());
    }
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ((std::vector{1, 2, 3}), Log());
    EXPECT_EQ(S_OK, project->RedoOperation());
    EXPECT_EQ((std::vector{3, 2, 1}), Log());
    ComPtr<IEnumOleUndoUnits> units;
    EXPECT_EQ(S_OK, Query<ICPSUndoParentEnum>(compound)->EnumChildren(units.Put()));
    EXPECT_EQ(S_OK, units->Skip(3));
    EXPECT_EQ(S_FALSE, units->Skip(1)) << "none was added while they ran";
}

TEST_F(CompoundUnitTest, ClosesWhatWasOpenedLast)
{
    const auto outer = NewCompound();
    const auto inner = NewCompound();
    const auto innermost = NewCompound();
    EXPECT_EQ(S_FALSE, outer->Close(outer.Get(), true)) << "for its manager to close";
    EXPECT_EQ(S_OK, outer->Open(inner.Get()));
    EXPECT_EQ(S_OK, outer->Open(innermost.Get()));
    const auto unit = Unit(1);
    EXPECT_EQ(S_OK, outer->Add(unit.Get()));
    EXPECT_EQ(S_OK, innermost->FindUnit(unit.Get())) << "it went to the innermost";
    EXPECT_EQ(S_FALSE, outer->FindUnit(unit.Get()));
    EXPECT_EQ(E_INVALIDARG, outer->Close(outer.Get(), true)) << "others are open within it";
    EXPECT_EQ(S_OK, outer->Close(innermost.Get(), true));
    EXPECT_EQ(S_OK, outer->Close(inner.Get(), true));
    EXPECT_EQ(S_OK, outer->FindUnit(unit.Get())) << "within the units within";
    EXPECT_EQ(S_OK, outer->FindUnit(inner.Get()));
    EXPECT_EQ(S_FALSE, inner->FindUnit(outer.Get()));
    EXPECT_EQ(S_FALSE, inner->FindUnit(nullptr));
    EXPECT_EQ(S_OK, outer->Do(nullptr));
    EXPECT_EQ((std::vector{1}), Log());
}

TEST_F(CompoundUnitTest, RollsBackWhatIsNotCommitted)
{
    const auto outer = NewCompound();
    const auto inner = NewCompound();
    outer->Add(Unit(1).Get());
    outer->Open(inner.Get());
    outer->Add(Unit(2).Get());
    outer->Add(Unit(3).Get());
    EXPECT_EQ(S_OK, outer->Close(inner.Get(), false));
    EXPECT_EQ((std::vector{3, 2}), Log());
    EXPECT_EQ(S_FALSE, outer->FindUnit(inner.Get()));
    EXPECT_EQ(S_OK, outer->Close(outer.Get(), false));
    EXPECT_EQ((std::vector{1}), Log());
}

TEST_F(CompoundUnitTest, AStrangerClosesNoStep)
{
    const auto stranger = NewCompound();
    stranger->Add(Unit(1).Get());
    EXPECT_EQ(S_FALSE, stranger->Close(nullptr, true)) << "is no step any more";
    EXPECT_EQ(S_OK, stranger->Close(nullptr, false));
    EXPECT_EQ((std::vector{1}), Log()) << "rolls itself back for anybody";
    manager->DiscardFrom(nullptr);
    Begin();
    SetLabel(u"x");
    for (IOleParentUndoUnit* parent : {stranger.Get(), static_cast<IOleParentUndoUnit*>(nullptr)}) {
        for (const BOOL commit : {0, 1})
            EXPECT_EQ(E_INVALIDARG, manager->Close(parent, commit));
    }
    EXPECT_EQ(u"x", Label());
    End();
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(u"<null>", Label());
}

TEST_F(CompoundUnitTest, AUnitWithinAStepIsDiscardedWithIt)
{
    Begin();
    End();
    Begin();
    const auto unit = Unit(1);
    manager->Add(unit.Get());
    End();
    Begin(u"newest");
    End();
    EXPECT_EQ(E_INVALIDARG, manager->DiscardFrom(Unit(2).Get()));
    EXPECT_EQ(S_OK, manager->DiscardFrom(unit.Get()));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_FALSE(CanUndo()) << "the newest alone was left";
    EXPECT_TRUE(Log().empty());
}

TEST_F(CompoundUnitTest, TakesAHostsUnitsIntoTheStep)
{
    const auto nested = NewCompound();
    manager->DiscardFrom(nullptr);
    Begin();
    SetLabel(u"x");
    EXPECT_EQ(S_OK, manager->Open(nested.Get()));
    EXPECT_EQ(S_OK, manager->Add(Unit(7).Get()));
    DWORD state = 9;
    EXPECT_EQ(S_OK, manager->GetOpenParentState(&state));
    EXPECT_EQ(UAS_NORMAL, state);
    End();
    EXPECT_EQ(S_FALSE, manager->GetOpenParentState(&state)) << "what the host left open is closed with the step";
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ((std::vector{7}), Log());
    EXPECT_EQ(u"<null>", Label());
}

TEST_F(CompoundUnitTest, AnswersForWhatItIs)
{
    const auto compound = NewCompound();
    EXPECT_TRUE(Query<IOleUndoUnit>(compound) && Query<ICPSUndoParentEnum>(compound));
    EXPECT_FALSE(Query<IKVProjectData>(compound));
    EXPECT_EQ(E_INVALIDARG, compound->QueryInterface(IUnknown::IID, nullptr));
    CLSID clsid = {};
    LONG type = -1;
    EXPECT_EQ(S_OK, compound->GetUnitType(&clsid, &type));
    EXPECT_EQ(std::pair(LONG{0}, IID_NULL), std::pair(type, clsid));
    EXPECT_EQ(u"compound", Text(*compound.Get(), &IOleParentUndoUnit::GetDescription));
    for (const HRESULT result :
         {compound->GetUnitType(nullptr, &type), compound->GetDescription(nullptr), compound->GetParentState(nullptr),
          Query<ICPSUndoParentEnum>(compound)->EnumChildren(nullptr)})
        EXPECT_EQ(E_POINTER, result);
    EXPECT_EQ(S_OK, compound->OnNextAdd());
}

} // namespace
} // namespace kv::test
