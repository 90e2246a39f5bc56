#include "support/Contents.h"

namespace kv::test {
namespace {

class LockingTest : public testing::Test {
protected:
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVLocking> locking = Query<IKVLocking>(project);
};

TEST_F(LockingTest, LockedProjectRefusesEveryChangeAndTellsNothing)
{
    const auto sink = Make<RecordingSink>();
    ASSERT_EQ(S_OK, project->put_Label(Str(u"before").Get()));
    const auto title = AddTitle(*project.Get());
    ASSERT_EQ(S_OK, locking->LockObject(VARIANT_FALSE));
    const Connection connection(*project, *sink);
    Delivered(*project, *sink);

    IKVTitle* none = title.Get();
    double rate = 0;
    const std::vector<std::pair<const char*, HRESULT>> refused{
        {"Label", project->put_Label(Str(u"after").Get())},
        {"DiscFormat", project->put_DiscFormat(AVCHD)},
        {"TVStandard", project->put_TVStandard(PAL)},
        {"ProjectDirectory", project->put_ProjectDirectory(Str(u"x").Get())},
        {"MenuLess", project->put_MenuLess(VARIANT_TRUE)},
        {"FrameRate put", project->put_FrameRate(30.0)},
        {"FrameRate get", project->get_FrameRate(&rate)},
        {"ClearDirtyFlag", project->ClearDirtyFlag()},
        {"Clear", project->Clear()},
        {"AddTitle", project->AddTitle(0, &none)},
        {"RemoveTitle", project->RemoveTitle(IdOf(title), nullptr)},
        {"MoveTitle", project->MoveTitle(1, 1)},
        {"AddDataFile", project->AddDataFile(0, nullptr)},
        {"RemoveDataFile", project->RemoveDataFile(1, nullptr)},
        {"RemoveDataFileBySource", project->RemoveDataFileBySource(Str(u"x").Get(), nullptr)},
        {"loadXML", project->loadXML(ParseXml(u"<Root><Project/></Root>").Get())},
    };
    for (const auto& [name, result] : refused)
        EXPECT_EQ(KV_E_LOCKED, result) << name;
    EXPECT_EQ(nullptr, none);

    EXPECT_EQ(u"before", Text(*project.Get(), &IKVProjectData::get_Label));
    EXPECT_EQ(1, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
    EXPECT_TRUE(IsDirty(*project.Get()));
    EXPECT_TRUE(Delivered(*project, *sink).empty());
}

TEST_F(LockingTest, OnlyVariantTrueReachesWhatIsBelow)
{
    const auto title = AddTitle(*project.Get());
    const auto below = [&] {
        return std::vector{title->put_Tag(1), Query<IKVEncodingParams>(title)->put_AspectRatio(AspectRatio_4x3),
                           Query<IKVCommandList>(title)->SetCommandList(0, nullptr)};
    };
    for (VARIANT_BOOL notTrue : {VARIANT_FALSE, VARIANT_BOOL{1}}) {
        ASSERT_EQ(S_OK, locking->LockObject(notTrue));
        EXPECT_EQ((std::vector{S_OK, S_OK, S_OK}), below());
        ASSERT_EQ(S_OK, locking->UnlockObject(notTrue));
    }
    ASSERT_EQ(S_OK, locking->LockObject(VARIANT_TRUE));
    EXPECT_EQ((std::vector{KV_E_LOCKED, KV_E_LOCKED, KV_E_LOCKED}), below());
    ASSERT_EQ(S_OK, locking->UnlockObject(VARIANT_TRUE));
    EXPECT_EQ((std::vector{S_OK, S_OK, S_OK}), below());
}

TEST_F(LockingTest, LocksCountAndNeverFallBelowZero)
{
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(S_OK, locking->LockObject(VARIANT_FALSE));
    for (const HRESULT result : {KV_E_LOCKED, S_OK, S_OK, S_OK}) {
        locking->UnlockObject(VARIANT_FALSE);
        EXPECT_EQ(result, project->put_Options(1));
    }
    ASSERT_EQ(S_OK, locking->LockObject(VARIANT_FALSE));
    EXPECT_EQ(KV_E_LOCKED, project->put_Options(2));
}

} // namespace
} // namespace kv::test
