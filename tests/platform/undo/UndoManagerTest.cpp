#include "platform/com/Activation.h"
#include "platform/com/Object.h"
#include "platform/undo/OleUndo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::Make;

/// Writes down what it does, and adds itself for the way back.
class Unit : public kv::Object<IOleUndoUnit, IOwnedUndoUnit> {
public:
    Unit(std::string name, std::vector<std::string>& log) : m_name(std::move(name)), m_log(log) {}
    ~Unit() override { m_log.push_back("~" + m_name); }

    HRESULT Do(IOleUndoManager* manager) override
    {
        m_log.push_back(m_name);
        if (before) before(manager);
        if (FAILED(result)) return result;
        return manager ? manager->Add(this) : S_OK;
    }
    HRESULT GetDescription(BSTR* text) override { return *text = Bstr(kv::ToUtf16(m_name)).Detach(), S_OK; }
    HRESULT GetUnitType(CLSID*, LONG*) override { return E_NOTIMPL; }
    HRESULT OnNextAdd() override { return m_log.push_back(m_name + " followed"), S_OK; }
    HRESULT BelongsTo(const void* other) override { return other == owner ? S_OK : S_FALSE; }

    HRESULT result = S_OK;
    std::function<void(IOleUndoManager*)> before;
    const void* owner = nullptr;

private:
    const std::string m_name;
    std::vector<std::string>& m_log;
};

/// A parent without children of its own.
class Parent final : public kv::Object<IOleParentUndoUnit> {
public:
    HRESULT Do(IOleUndoManager* manager) override { return manager ? manager->Add(this) : S_OK; }
    HRESULT GetDescription(BSTR* text) override { return *text = Bstr(u"parent").Detach(), S_OK; }
    HRESULT GetUnitType(CLSID*, LONG*) override { return E_NOTIMPL; }
    HRESULT OnNextAdd() override { return S_OK; }
    HRESULT Open(IOleParentUndoUnit* parent) override { return inner = parent, S_OK; }
    HRESULT Close(IOleParentUndoUnit* parent, BOOL commit) override
    {
        if (inner && parent == inner.Get()) {
            inner.Reset();
            return S_OK;
        }
        return inner ? E_INVALIDARG : commit ? S_FALSE : S_OK;
    }
    HRESULT Add(IOleUndoUnit* unit) override { return units.emplace_back(unit), S_OK; }
    HRESULT FindUnit(IOleUndoUnit*) override { return S_FALSE; }
    HRESULT GetParentState(DWORD* state) override { return *state = UAS_BLOCKED, S_OK; }

    ComPtr<IOleParentUndoUnit> inner;
    std::vector<ComPtr<IOleUndoUnit>> units;
};

class UndoManagerTest : public testing::Test {
protected:
    using Names = std::vector<std::string>;

    void SetUp() override { ASSERT_EQ(S_OK, kv::CreateInstance(CLSID_OleUndoManager, manager)); }

    ComPtr<Unit> Add(const std::string& name)
    {
        auto unit = Make<Unit>(name, log);
        EXPECT_EQ(S_OK, manager->Add(unit.Get()));
        return unit;
    }
    Names Log() { return std::exchange(log, {}); }

    std::string Stack(HRESULT (IOleUndoManager::*enumerate)(IEnumOleUndoUnits**))
    {
        ComPtr<IEnumOleUndoUnits> units;
        EXPECT_EQ(S_OK, (manager.Get()->*enumerate)(units.Put()));
        std::string names;
        for (ComPtr<IOleUndoUnit> unit; units->Next(1, unit.Put(), nullptr) == S_OK;) {
            Bstr name;
            unit->GetDescription(name.Put());
            names += kv::ToUtf8(name.View()) + ' ';
        }
        return names;
    }
    std::string Undoable() { return Stack(&IOleUndoManager::EnumUndoable); }
    /// What can be undone, and behind the bar what can be redone.
    std::string Stacks() { return Undoable() + "| " + Stack(&IOleUndoManager::EnumRedoable); }

    Names log;
    ComPtr<IOleUndoManager> manager;
};

TEST_F(UndoManagerTest, MovesUnitsBetweenItsStacks)
{
    const auto a = Add("a");
    const auto b = Add("b");
    const auto c = Add("c");
    EXPECT_EQ((Names{"a followed", "b followed"}), Log());
    EXPECT_EQ("c b a | ", Stacks());
    EXPECT_EQ(S_OK, manager->UndoTo(nullptr));
    EXPECT_EQ(S_OK, manager->UndoTo(a.Get()));
    EXPECT_EQ("| a b c ", Stacks());
    EXPECT_EQ(S_OK, manager->RedoTo(b.Get()));
    EXPECT_EQ("b a | c ", Stacks());
    Add("d");
    EXPECT_EQ("d b a | ", Stacks()) << "a new unit ends what could be redone";
    EXPECT_EQ(S_OK, manager->DiscardFrom(b.Get())) << "and what is older";
    Add("e");
    EXPECT_EQ(S_OK, manager->UndoTo(nullptr));
    EXPECT_EQ("d | e ", Stacks());
    EXPECT_EQ(S_OK, manager->DiscardFrom(nullptr)) << "both ways";
    EXPECT_EQ("| ", Stacks());
}

TEST_F(UndoManagerTest, SaysWhenThereIsNothingToDo)
{
    Bstr description;
    for (const HRESULT result :
         {manager->UndoTo(nullptr), manager->RedoTo(nullptr), manager->GetLastUndoDescription(description.Put()),
          manager->GetLastRedoDescription(description.Put())})
        EXPECT_EQ(E_FAIL, result);
    EXPECT_EQ(S_FALSE, manager->Close(nullptr, true));
    DWORD state = 7;
    EXPECT_EQ(S_FALSE, manager->GetOpenParentState(&state));
    EXPECT_EQ(UAS_NORMAL, state);
    const auto stranger = Make<Unit>("stranger", log);
    EXPECT_EQ(E_INVALIDARG, manager->UndoTo(stranger.Get()));
    EXPECT_EQ(E_INVALIDARG, manager->DiscardFrom(stranger.Get()));
    for (const HRESULT result : {manager->Add(nullptr), manager->Open(nullptr), manager->GetOpenParentState(nullptr),
                                 manager->EnumUndoable(nullptr), manager->GetLastUndoDescription(nullptr)})
        EXPECT_EQ(E_POINTER, result);
}

TEST_F(UndoManagerTest, GathersUnitsInAnOpenParent)
{
    const auto parent = Make<Parent>();
    const auto inner = Make<Parent>();
    EXPECT_EQ(S_OK, manager->Open(parent.Get()));
    Add("within");
    EXPECT_EQ(1u, parent->units.size());
    DWORD state = 0;
    EXPECT_EQ(S_OK, manager->GetOpenParentState(&state));
    EXPECT_EQ(UAS_BLOCKED, state) << "the parent's own";
    EXPECT_EQ(E_UNEXPECTED, manager->UndoTo(nullptr));
    EXPECT_EQ(E_UNEXPECTED, manager->Enable(false));
    EXPECT_EQ(S_OK, manager->Open(inner.Get()));
    EXPECT_EQ(inner.Get(), parent->inner.Get());
    EXPECT_EQ(E_INVALIDARG, manager->Close(parent.Get(), true)) << "the inner one is open";
    EXPECT_EQ(S_OK, manager->Close(inner.Get(), true));
    EXPECT_EQ(E_INVALIDARG, manager->Close(inner.Get(), true));
    EXPECT_EQ("| ", Stacks());
    EXPECT_EQ(S_OK, manager->Close(parent.Get(), true));
    EXPECT_EQ("parent | ", Stacks());

    EXPECT_EQ(S_OK, manager->UndoTo(nullptr));
    EXPECT_EQ(S_OK, manager->Open(inner.Get()));
    EXPECT_EQ(S_OK, manager->Close(inner.Get(), false));
    EXPECT_EQ(S_FALSE, manager->Close(inner.Get(), false));
    EXPECT_EQ("| parent ", Stacks()) << "what is not committed ends nothing";

    EXPECT_EQ(S_OK, manager->Open(Make<Parent>().Get()));
    EXPECT_EQ(S_OK, manager->GetOpenParentState(&state));
    const auto dropped = Make<Parent>();
    EXPECT_EQ(E_INVALIDARG, manager->Close(dropped.Get(), true)) << "not the one that is open";
}

TEST_F(UndoManagerTest, IsAsBeforeWhenAUnitFails)
{
    Add("a");
    const auto b = Add("b");
    Add("c");
    Add("d");
    Log();
    b->result = E_ACCESSDENIED;
    b->before = [this](IOleUndoManager* running) {
        running->Add(Make<Unit>("half", log).Get());
        EXPECT_EQ(E_UNEXPECTED, running->UndoTo(nullptr)) << "one at a time";
        EXPECT_EQ(E_UNEXPECTED, running->DiscardFrom(nullptr));
    };
    EXPECT_EQ(E_ACCESSDENIED, manager->UndoTo(b.Get()));
    EXPECT_EQ("d c b a | ", Stacks());
    const Names ran = Log();
    EXPECT_EQ(1, std::ranges::count(ran, "~half"));
    b->result = S_OK;
    b->before = {};
    EXPECT_EQ(S_OK, manager->UndoTo(b.Get()));
    EXPECT_EQ("a | b c d ", Stacks());
}

TEST_F(UndoManagerTest, GivesUpWhenNeitherWayWorks)
{
    const auto a = Add("a");
    const auto b = Add("b");
    a->result = E_ABORT;
    EXPECT_EQ(E_FAIL, manager->UndoTo(a.Get())) << "nothing was lost";
    EXPECT_EQ("b a ", Undoable());
    a->before = [&](IOleUndoManager*) { b->result = E_FAIL; };
    EXPECT_EQ(E_ABORT, manager->UndoTo(a.Get()));
    EXPECT_EQ("| ", Stacks());
}

TEST_F(UndoManagerTest, LetsGoOfTheUnitsOfAnOwner)
{
    const int owner = 0;
    const auto removal = kv::Query<IUndoUnitRemoval>(manager);
    for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
        const auto unit = Add(name);
        if (*name != 'b' && *name != 'd' && *name != 'f') continue;
        unit->owner = &owner;
        if (*name == 'd') {
            unit->before = [&](IOleUndoManager*) {
                EXPECT_EQ(S_OK, removal->RemoveUnitsOf(&owner));
                EXPECT_EQ("c b a ", Undoable()) << "until the run is over";
            };
        }
    }
    EXPECT_EQ(S_OK, manager->UndoTo(nullptr));
    EXPECT_EQ(S_OK, manager->UndoTo(nullptr));
    EXPECT_EQ(S_OK, manager->UndoTo(nullptr));
    EXPECT_EQ("c a | e ", Stacks());
    const auto g = Add("g");
    EXPECT_EQ(S_OK, removal->RemoveUnit(g.Get()));
    EXPECT_EQ(E_INVALIDARG, removal->RemoveUnit(g.Get()));
    EXPECT_EQ("c a ", Undoable());
    const Names gone = Log();
    EXPECT_EQ(1, std::ranges::count(gone, "~b"));
    EXPECT_EQ(1, std::ranges::count(gone, "~d"));
}

TEST_F(UndoManagerTest, KeepsNothingWhileDisabled)
{
    Add("a");
    EXPECT_EQ(S_OK, manager->Enable(false));
    EXPECT_EQ("", Undoable());
    Add("b");
    EXPECT_EQ(S_OK, manager->Open(Make<Parent>().Get()));
    EXPECT_EQ(S_OK, manager->Close(Make<Parent>().Get(), true));
    EXPECT_EQ(E_UNEXPECTED, manager->UndoTo(nullptr));
    EXPECT_EQ(E_UNEXPECTED, manager->DiscardFrom(nullptr));
    EXPECT_EQ(S_OK, manager->Enable(true));
    EXPECT_EQ("", Undoable());
    Add("c");
    EXPECT_EQ("c ", Undoable());
}

TEST_F(UndoManagerTest, EnumeratesWithSkipsAndCopies)
{
    for (const char* name : {"a", "b", "c"})
        Add(name);
    ComPtr<IEnumOleUndoUnits> units, copy;
    ASSERT_EQ(S_OK, manager->EnumUndoable(units.Put()));
    manager->DiscardFrom(nullptr);
    EXPECT_EQ(S_OK, units->Skip(1));
    EXPECT_EQ(S_OK, units->Clone(copy.Put()));
    EXPECT_EQ(E_POINTER, copy->Clone(nullptr));
    IOleUndoUnit* two[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(E_POINTER, units->Next(2, two, nullptr));
    EXPECT_EQ(E_POINTER, units->Next(1, nullptr, &fetched));
    EXPECT_EQ(S_OK, units->Next(2, two, &fetched));
    EXPECT_EQ(2u, fetched);
    for (IOleUndoUnit* unit : two)
        unit->Release();
    EXPECT_EQ(S_OK, units->Skip(0));
    EXPECT_EQ(S_FALSE, units->Skip(1));
    EXPECT_EQ(S_FALSE, units->Next(2, two, &fetched));
    EXPECT_EQ(0u, fetched);
    EXPECT_EQ(S_FALSE, copy->Skip(3)) << "where the copy was taken";
    EXPECT_EQ(S_OK, copy->Reset());
    EXPECT_EQ(S_OK, copy->Skip(3));
}

} // namespace
