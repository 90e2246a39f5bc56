#pragma once
// What the tests of undo share.

#include "KVProjectData/ICPSUndoParentEnum.h"
#include "KVProjectData/ResultCodes.h"
#include "support/Contents.h"

namespace kv::test {

/// A host's own unit. With a log it writes down its name and tries to come onto the other stack.
class HostUnit final : public Object<IOleUndoUnit> {
public:
    explicit HostUnit(int name = 0, std::vector<int>* log = nullptr) : m_name(name), m_log(log) {}

    HRESULT Do(IOleUndoManager* manager) override
    {
        if (m_log) m_log->push_back(m_name);
        // Ignored where the parent is running.
        if (m_log && manager) manager->Add(this);
        return result;
    }
    HRESULT GetDescription(BSTR* description) override { return *description = nullptr, S_OK; }
    HRESULT GetUnitType(CLSID*, LONG*) override { return E_NOTIMPL; }
    HRESULT OnNextAdd() override { return S_OK; }

    HRESULT result = E_ACCESSDENIED;

private:
    const int m_name;
    std::vector<int>* const m_log;
};

/// A project with one title, and short words for its steps.
class UndoTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, project->AddTitle(0, title.Put()));
        ASSERT_EQ(S_OK, project->GetUndoManager(manager.Put()));
        manager->DiscardFrom(nullptr);
    }

    HRESULT Begin(std::u16string_view description = u"step") { return project->BeginUndo(Bstr(description).Get()); }
    HRESULT End(bool commit = true) { return project->EndUndo(commit ? VARIANT_TRUE : VARIANT_FALSE); }
    void SetLabel(std::u16string_view label) { EXPECT_EQ(S_OK, title->put_Label(Bstr(label).Get())); }
    std::u16string Label() { return Text(*title.Get(), &IKVTitle::get_Label); }
    bool CanUndo() { return ValueOf(*project.Get(), &IKVProjectData::get_UndoEnable) == VARIANT_TRUE; }
    bool CanRedo() { return ValueOf(*project.Get(), &IKVProjectData::get_RedoEnable) == VARIANT_TRUE; }

    /// The unit that is undone next.
    ComPtr<IOleUndoUnit> NewestStep()
    {
        ComPtr<IEnumOleUndoUnits> units;
        ComPtr<IOleUndoUnit> unit;
        EXPECT_EQ(S_OK, manager->EnumUndoable(units.Put()));
        EXPECT_EQ(S_OK, units->Next(1, unit.Put(), nullptr));
        return unit;
    }

    /// "type description" of each unit of a step, the newest first.
    static std::vector<std::u16string> UnitsOf(IOleUndoUnit* step)
    {
        std::vector<std::u16string> texts;
        ComPtr<IEnumOleUndoUnits> units;
        EXPECT_EQ(S_OK, Query<ICPSUndoParentEnum>(step)->EnumChildren(units.Put()));
        for (ComPtr<IOleUndoUnit> unit; units->Next(1, unit.Put(), nullptr) == S_OK;) {
            CLSID clsid = {};
            LONG type = -1;
            Bstr description;
            EXPECT_EQ(S_OK, unit->GetUnitType(&clsid, &type));
            EXPECT_EQ(IID_NULL, clsid);
            EXPECT_EQ(S_OK, unit->GetDescription(description.Put()));
            texts.push_back(ToUtf16(std::to_string(type)).append(u" ").append(description.View()));
        }
        return texts;
    }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title;
    ComPtr<IOleUndoManager> manager;
};

} // namespace kv::test
