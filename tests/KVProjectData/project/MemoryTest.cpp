// What a project does when memory runs out, allocation by allocation.

#include "support/Memory.h"
#include "support/Contents.h"

namespace kv::test {
namespace {

/// Tries with more and more memory, until nothing fails any more.
template <class Try>
void Sweep(Try&& attempt)
{
    constexpr int kEnough = 2000;
    for (int left = 0; left < kEnough; ++left) {
        if (attempt(left)) return;
        if (testing::Test::HasFailure()) break;
    }
    FAIL() << "there is never enough";
}

TEST(MemoryTest, AProjectIsCreatedOrNot)
{
    NewProject();
    Sweep([](int left) {
        ComPtr<IKVProjectData> project;
        HRESULT created = S_OK;
        bool failed = false;
        {
            const LittleMemory memory(left);
            created = CreateInstance(CLSID_KVProjectData, project);
            failed = LittleMemory::HasFailed();
        }
        EXPECT_TRUE(created == S_OK || created == E_OUTOFMEMORY) << left << ": " << std::hex << created;
        EXPECT_EQ(created == S_OK, static_cast<bool>(project));
        EXPECT_TRUE(failed || project);
        return !failed;
    });
}

TEST(MemoryTest, AnEditIsMadeAndRecordedOrNot)
{
    struct Edit {
        const char* name;
        std::function<HRESULT(IKVProjectData&)> make;
    };
    const Bstr text(u"a text that is long enough for the heap");
    const Edit edits[]{
        {"set", [&](IKVProjectData& project) { return project.put_Label(text.Get()); }},
        {"add a title", [](IKVProjectData& project) { return project.AddTitle(1, nullptr); }},
        {"move a title", [](IKVProjectData& project) { return project.MoveTitle(1, 3); }},
        {"remove a data file", [](IKVProjectData& project) { return project.RemoveDataFile(1, nullptr); }},
        {"by its source", [](IKVProjectData& project) { return project.RemoveDataFileBySource(nullptr, nullptr); }},
    };
    for (const auto& [name, make] : edits) {
        const auto project = NewProject();
        for (int i = 0; i < 3; ++i)
            ASSERT_EQ(S_OK, project->AddTitle(0, nullptr));
        const auto file = AddDataFile(*project.Get());
        file->IncrementUseCount();
        const auto document = [&] { return XmlOf(*SaveToDocument(*project.Get())); };
        const std::u16string before = document();
        Sweep([&, make = make, name = name](int left) {
            EXPECT_EQ(S_OK, project->BeginUndo(nullptr)) << name;
            HRESULT made = S_OK;
            bool failed = false;
            {
                const LittleMemory memory(left);
                made = make(*project.Get());
                failed = LittleMemory::HasFailed();
            }
            EXPECT_TRUE(failed || made == S_OK) << name;
            EXPECT_EQ(made == S_OK, document() != before) << name << ' ' << left << ": " << std::hex << made;
            EXPECT_EQ(S_OK, project->EndUndo(VARIANT_FALSE)) << name;
            EXPECT_EQ(before, document()) << name << ' ' << left;
            file->IncrementUseCount();
            EXPECT_EQ(S_FALSE, project->RemoveDataFileBySource(nullptr, nullptr)) << "of two users one remains";
            return !failed;
        });
    }
}

TEST(MemoryTest, ASnapshotIsTakenBackOrNot)
{
    const auto project = NewProject();
    const auto document = [&] { return XmlOf(*SaveToDocument(*project.Get())); };
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(S_OK, project->AddTitle(0, nullptr));
    const std::u16string before = document();
    ASSERT_EQ(S_OK, project->TakeUndoSnapshot(nullptr));
    project->put_Label(Str(u"a text that is long enough for the heap").Get());
    project->MoveTitle(1, 3);
    project->AddTitle(1, nullptr);
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    const std::u16string after = document();
    Sweep([&](int left) {
        HRESULT undone = S_OK;
        bool failed = false;
        {
            const LittleMemory memory(left);
            undone = project->UndoOperation();
            failed = LittleMemory::HasFailed();
        }
        const std::u16string is = document();
        EXPECT_TRUE(is == before || (failed && is == after)) << left;
        EXPECT_EQ(SUCCEEDED(undone), SUCCEEDED(project->RedoOperation())) << "the step is on one of the stacks";
        EXPECT_EQ(after, document()) << left;
        return !failed;
    });
}

} // namespace
} // namespace kv::test
