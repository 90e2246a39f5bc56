#include "support/Contents.h"
#include "support/Script.h"

namespace kv::test {
namespace {

class ProjectTest : public testing::Test {
protected:
    /// The ID of a new title.
    LONG Added(LONG position = 0) { return IdOf(AddTitle(*project.Get(), position)); }

    ComPtr<IKVDataFile> AddFile(const Bstr& source, ULONG tag)
    {
        const auto file = AddDataFile(*project.Get());
        EXPECT_EQ(S_OK, file->put_SourcePath(source.Get()));
        EXPECT_EQ(S_OK, file->put_Tag(tag));
        return file;
    }

    std::vector<LONG> Titles() { return TitleIds(*project.Get()); }

    ComPtr<IKVProjectData> project = NewProject();
};

TEST_F(ProjectTest, StartsWithItsDefaultsAndClearBringsThemBack)
{
    ScriptHost script(project.Get());
    const auto properties = [&script] { return script.Properties<IKVProjectData>({"DoCompression"}); };
    const std::string defaults =
        "version=900 Label= DiscFormat=1 VolumeName= ThemeSource= TVStandard=1 FrameRate=29.97 ProjectDirectory=<null> "
        "TargetType=1 ImagePath=<null> TargetDrive=<null> DisplayName= IsOnDisc=0 TitleCount=0 MenuCount=0 "
        "DataFileCount=0 FitToDisc=0 Options=0 IsDirty=0 ProjectSize=0 OnDiscSize=0 RemainingCaptures=-1 DiscSize=4 "
        "DiscVideoType=1 MenuLess=0 UndoEnable=0 RedoEnable=0 ";
    EXPECT_EQ(defaults, properties());
    struct Value {
        const char16_t *name, *text;
    };
    constexpr Value kOthers[]{
        {u"Label", u"Trip"},    {u"DiscFormat", u"11"},       {u"VolumeName", u"V"}, {u"ThemeSource", u"T"},
        {u"TVStandard", u"2"},  {u"FrameRate", u"50"},        {u"TargetType", u"2"}, {u"DisplayName", u"D"},
        {u"IsOnDisc", u"true"}, {u"FitToDisc", u"true"},      {u"Options", u"3"},    {u"ProjectSize", u"1099511627776"},
        {u"OnDiscSize", u"7"},  {u"RemainingCaptures", u"2"}, {u"DiscSize", u"8"},   {u"DiscVideoType", u"3"},
        {u"MenuLess", u"true"}, {u"DoCompression", u"false"}};
    for (const auto& [name, text] : kOthers) {
        script.Put(name, Variant(text));
        EXPECT_NE(defaults, properties()) << ToUtf8(name);
    }
    Added();
    project->AddDataFile(0, nullptr);
    EXPECT_EQ(S_OK, project->Clear());
    EXPECT_EQ(defaults, properties());
    // What no document holds is kept.
    for (const auto* name : {u"ProjectDirectory", u"ImagePath", u"TargetDrive"})
        script.Put(name, Variant(u"kept"));
    project->Clear();
    for (const auto* name : {u"ProjectDirectory", u"ImagePath", u"TargetDrive"})
        EXPECT_EQ(u"kept", script.Get(name)) << ToUtf8(name);
    project->put_FitToDisc(VARIANT_TRUE);
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*project.Get(), &IKVProjectData::get_DoCompression));
}

TEST_F(ProjectTest, RefusesNullPointers)
{
    for (const HRESULT result :
         {project->get_version(nullptr), project->get_Label(nullptr), project->get_FrameRate(nullptr),
          project->get_DoCompression(nullptr), project->get_IsDirty(nullptr), project->get_TitleCount(nullptr),
          project->GetTitle(1, nullptr), project->GetMenu(1, nullptr), project->GetDataFile(1, nullptr),
          project->FindDataFile(nullptr, nullptr, 0, nullptr), project->FindByID(1, nullptr),
          project->SaveXML(nullptr)})
        EXPECT_EQ(E_POINTER, result);
    EXPECT_EQ(KV_E_NO_XML_NODE, project->loadXML(nullptr));
}

TEST_F(ProjectTest, ReadsSomePropertiesByRulesOfTheirOwn)
{
    project->put_TVStandard(PAL);
    for (const auto& [put, got] : {std::pair{0.0, 25.0}, {0.05, 25.0}, {30.0, 30.0}}) {
        project->put_FrameRate(put);
        EXPECT_EQ(got, ValueOf(*project.Get(), &IKVProjectData::get_FrameRate));
    }
    VARIANT_BOOL compression = 7;
    EXPECT_EQ(S_FALSE, project->get_DoCompression(&compression));
    EXPECT_EQ(7, compression);

    project->put_IsOnDisc(1);
    EXPECT_EQ(VARIANT_FALSE, ValueOf(*project.Get(), &IKVProjectData::get_IsOnDisc)) << "only -1 is true";
    project->put_MenuLess(1);
    EXPECT_EQ(VARIANT_FALSE, ValueOf(*project.Get(), &IKVProjectData::get_MenuLess)) << "only -1 is true";
    project->put_FitToDisc(1);
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*project.Get(), &IKVProjectData::get_FitToDisc)) << "any value but 0 is true";

    project->put_Label(nullptr);
    EXPECT_EQ(u"<null>", Text(*project.Get(), &IKVProjectData::get_Label));
}

TEST_F(ProjectTest, AddsTitlesAtOneBasedPositions)
{
    const LONG first = Added(0);
    const LONG last = Added(-1);
    const LONG front = Added(1);
    const LONG second = Added(2);
    const LONG end = Added(5);
    EXPECT_EQ((std::vector{front, second, first, last, end}), Titles());

    IKVTitle* none = AddTitle(*project.Get()).Get();
    EXPECT_EQ(KV_E_BAD_POSITION, project->AddTitle(8, &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(6, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
    for (LONG position : {0, -1, 7})
        EXPECT_EQ(KV_E_BAD_POSITION, project->GetTitle(position, &none)) << position;
    EXPECT_EQ(S_OK, project->AddTitle(0, nullptr));
}

TEST_F(ProjectTest, MovesAndRemovesTitles)
{
    const LONG a = Added();
    const LONG b = Added();
    const LONG c = Added();
    EXPECT_EQ(S_OK, project->MoveTitle(3, 1));
    EXPECT_EQ((std::vector{c, a, b}), Titles());
    EXPECT_EQ(S_OK, project->MoveTitle(1, 3));
    EXPECT_EQ(S_OK, project->MoveTitle(2, 2));
    EXPECT_EQ((std::vector{a, b, c}), Titles());
    for (auto [from, to] : {std::pair{0, 1}, {1, 0}, {4, 1}, {1, 4}, {-1, -1}, {9, 9}}) {
        EXPECT_EQ(KV_E_BAD_POSITION, project->MoveTitle(from, to)) << from << " to " << to;
    }

    ComPtr<IKVTitle> removed;
    EXPECT_EQ(S_OK, project->RemoveTitle(b, removed.Put()));
    EXPECT_EQ(b, IdOf(removed));
    EXPECT_EQ(KV_E_NO_SUCH_ID, project->RemoveTitle(b, removed.Put()));
    EXPECT_FALSE(removed);
    EXPECT_EQ((std::vector{a, c}), Titles());
}

TEST_F(ProjectTest, FindsObjectsByIdInTheListsAlone)
{
    const auto title = AddTitle(*project.Get());
    const auto file = AddDataFile(*project.Get());
    ComPtr<IUnknown> found;
    for (const auto& [id, object] :
         {std::pair{IdOf(title), Query<IUnknown>(title)}, {IdOf(file), Query<IUnknown>(file)}}) {
        EXPECT_EQ(S_OK, project->FindByID(id, found.Put()));
        EXPECT_EQ(object, found);
    }
    for (LONG absent : {0, -1, 1, 0x7fffffff}) {
        EXPECT_EQ(KV_E_NO_SUCH_ID, project->FindByID(absent, found.Put())) << absent;
        EXPECT_FALSE(found);
    }
}

TEST_F(ProjectTest, GivesIdsThatAreUniqueInTheProcess)
{
    const auto other = NewProject();
    std::vector<LONG> ids;
    for (int i = 0; i < 7; ++i) {
        ids.push_back(IdOf(AddTitle(i % 2 ? *other.Get() : *project.Get())));
        if (i == 4) project->Clear();
    }
    EXPECT_TRUE(std::ranges::is_sorted(ids, std::less_equal{}));
}

TEST_F(ProjectTest, FindsAndRemovesDataFilesByTheirSource)
{
    TemporaryFolder folder;
    for (const char* name : {"a.txt", "b.txt"})
        folder.Write(name, "x");
    IKVDataFile* none = nullptr;
    EXPECT_EQ(KV_E_DATA_FILE_NOT_FOUND, project->FindDataFile(nullptr, nullptr, 0, &none));
    EXPECT_EQ(KV_E_NO_SUCH_SOURCE, project->RemoveDataFileBySource(nullptr, nullptr));

    const auto shared = AddFile(folder.File("a.txt"), 1);
    const auto same = AddFile(folder.File("a.txt"), 2);
    const auto other = AddFile(folder.File("b.txt"), 3);
    other->put_DestPath(Str(u"docs/b.txt").Get());

    const auto find = [&](BSTR source, BSTR destination, ULONG tag) {
        ComPtr<IKVDataFile> found;
        EXPECT_EQ(S_OK, project->FindDataFile(source, destination, tag, found.Put()));
        return found;
    };
    EXPECT_EQ(shared, find(nullptr, nullptr, 0)) << "no criterion: the first";
    EXPECT_EQ(same, find(folder.File("a.txt").Get(), nullptr, 2));
    EXPECT_EQ(other, find(nullptr, Str(u"docs/b.txt").Get(), 0));
    EXPECT_EQ(KV_E_DATA_FILE_NOT_FOUND, project->FindDataFile(folder.File("A.TXT").Get(), nullptr, 0, &none))
        << "case matters";
    EXPECT_EQ(KV_E_DATA_FILE_NOT_FOUND, project->FindDataFile(folder.File("b.txt").Get(), nullptr, 1, &none));

    for (int i = 0; i < 3; ++i)
        shared->IncrementUseCount();
    ComPtr<IKVDataFile> removed;
    for (int users : {2, 1}) {
        EXPECT_EQ(S_FALSE, project->RemoveDataFileBySource(folder.File("a.txt").Get(), removed.Put())) << users;
        EXPECT_FALSE(removed);
        EXPECT_EQ(3, ValueOf(*project.Get(), &IKVProjectData::get_DataFileCount));
    }
    EXPECT_EQ(S_OK, project->RemoveDataFileBySource(folder.File("a.txt").Get(), removed.Put()));
    EXPECT_EQ(shared, removed);
    EXPECT_EQ(S_OK, project->RemoveDataFileBySource(folder.File("a.txt").Get(), nullptr)) << "never shared";
    EXPECT_EQ(KV_E_NO_SUCH_SOURCE, project->RemoveDataFileBySource(folder.File("a.txt").Get(), nullptr));

    for (LONG position : {0, 2, -1})
        EXPECT_EQ(KV_E_BAD_POSITION, project->RemoveDataFile(position, nullptr)) << position;
    EXPECT_EQ(S_OK, project->RemoveDataFile(1, removed.Put()));
    EXPECT_EQ(other, removed);
    EXPECT_EQ(S_OK, project->AddDataFile(0, nullptr));
    EXPECT_EQ(S_OK, project->RemoveDataFileBySource(nullptr, nullptr)) << "one without a source";
}

TEST_F(ProjectTest, BecomesDirtyByRecordedChangesAlone)
{
    project->put_ThemeSource(Str(u"theme").Get());
    project->put_DiscSize(SZ_BD25);
    project->put_IsOnDisc(VARIANT_TRUE);
    EXPECT_FALSE(IsDirty(*project.Get()));
    const auto title = AddTitle(*project.Get());
    ComPtr<IKVMenu> menu;
    project->AddMenu(0, menu.Put());
    project->ClearDirtyFlag();
    title->put_Source(Str(u"a.mpg").Get());
    title->put_DiscIndex(2);
    EXPECT_FALSE(IsDirty(*project.Get()));
    // Edits of lists are recorded, but keep no state.
    project->AddDataFile(0, nullptr);
    project->MoveDataFile(1, 1);
    project->RemoveDataFile(1, nullptr);
    menu->AddtoGroup(1, 0);
    EXPECT_FALSE(IsDirty(*project.Get()));
    title->put_VOBSize(1.5);
    EXPECT_TRUE(IsDirty(*project.Get()));
    project->ClearDirtyFlag();
    title->put_IsDirty(VARIANT_TRUE);
    EXPECT_TRUE(IsDirty(*project.Get()));
}

TEST_F(ProjectTest, MenusStandInOneProjectEach)
{
    IKVMenu* none = nullptr;
    EXPECT_EQ(KV_E_BAD_POSITION, project->GetMenu(1, &none));
    EXPECT_EQ(KV_E_NO_SUCH_ID, project->RemoveMenu(1, &none));
    EXPECT_EQ(KV_E_BAD_POSITION, project->MoveMenu(1, 1));
    EXPECT_EQ(E_POINTER, project->InsertMenuW(0, nullptr));

    Query<IKVEncodingParams>(project)->put_AspectRatio(AspectRatio_16x9);
    ComPtr<IKVMenu> first;
    ComPtr<IKVMenu> second;
    ASSERT_EQ(S_OK, project->AddMenu(0, first.Put()));
    EXPECT_EQ(KV_E_BAD_POSITION, project->AddMenu(3, nullptr));
    const auto encoding = Query<IKVEncodingParams>(first);
    EXPECT_EQ(AspectRatio_16x9, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio));
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*encoding.Get(), &IKVEncodingParams::get_SyncToProject));
    const auto other = NewProject();
    for (const auto& each : {project, other})
        EXPECT_EQ(E_INVALIDARG, each->InsertMenuW(0, first.Get()));
    const auto own = Create<IKVMenu>(CLSID_KVMenu);
    EXPECT_EQ(S_OK, project->InsertMenuW(1, own.Get()));
    EXPECT_NE(0, ValueOf(*own.Get(), &IKVMenu::get_ID));
    EXPECT_EQ(S_OK, project->GetMenu(1, second.Put()));
    EXPECT_EQ(own, second);
    const LONG id = ValueOf(*first.Get(), &IKVMenu::get_ID);
    EXPECT_EQ(S_OK, project->RemoveMenu(id, second.Put()));
    EXPECT_EQ(first, second);
    EXPECT_EQ(KV_E_BAD_POSITION, other->InsertMenuW(2, first.Get()));
    EXPECT_EQ(S_OK, other->InsertMenuW(0, first.Get()));
    EXPECT_EQ(id, ValueOf(*first.Get(), &IKVMenu::get_ID));
    EXPECT_EQ(1, ValueOf(*project.Get(), &IKVProjectData::get_MenuCount));
    ComPtr<IKVProjectData> home;
    EXPECT_EQ(S_OK, first->GetProject(home.Put()));
    EXPECT_EQ(other, home);
    EXPECT_EQ(S_OK, other->Clear());
    EXPECT_EQ(S_FALSE, first->GetProject(home.Put()));
    const auto locking = Query<IKVLocking>(project);
    locking->LockObject(VARIANT_FALSE);
    for (const HRESULT result : {project->AddMenu(0, nullptr), project->RemoveMenu(id, nullptr),
                                 project->MoveMenu(1, 1), project->InsertMenuW(0, first.Get())})
        EXPECT_EQ(KV_E_LOCKED, result);
}

TEST_F(ProjectTest, FindsWhatStandsInMenusThroughEveryChange)
{
    struct Menu {
        ComPtr<IKVMenu> menu;
        ComPtr<IKVMenuElement> button;
        ComPtr<IKVMenuElement> overlay;
        ComPtr<IUnknown> group;
    };
    std::vector<Menu> menus(3);
    for (auto& [menu, button, overlay, group] : menus) {
        ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put()));
        ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuButton::IID, button.Put()));
        ASSERT_EQ(S_OK, Query<IKVMenuElementList>(button)->AddElement(&IKVMenuOverlay::IID, overlay.Put()));
        ASSERT_EQ(S_OK, menu->AddtoGroup(1, 0));
        ASSERT_EQ(S_OK, menu->GetGroupIDByElementID(1, group.Put()));
    }
    const auto id = [](const auto& object) {
        LONG value = 0;
        EXPECT_EQ(S_OK, object->get_ID(&value));
        return value;
    };
    const auto found = [this](LONG of) {
        // The first time the tree is searched, then sorted, then what is sorted is asked.
        ComPtr<IUnknown> objects[3];
        for (auto& object : objects)
            if (project->FindByID(of, object.Put()) != S_OK) object.Reset();
        EXPECT_EQ(objects[0], objects[1]);
        EXPECT_EQ(objects[0], objects[2]);
        return objects[0];
    };
    for (const auto& [menu, button, overlay, group] : menus) {
        EXPECT_EQ(Query<IUnknown>(menu), found(id(menu)));
        EXPECT_EQ(Query<IUnknown>(button), found(id(button)));
        EXPECT_EQ(Query<IUnknown>(overlay), found(id(overlay)));
        EXPECT_EQ(group, found(id(Query<IGroupInfoNode>(group))));
    }
    // Of objects that share an ID the one in the last menu counts.
    const LONG shared = id(menus[1].button);
    menus[0].button->set_ID(shared);
    EXPECT_EQ(Query<IUnknown>(menus[1].button), found(shared));
    project->MoveMenu(1, 3);
    EXPECT_EQ(Query<IUnknown>(menus[0].button), found(shared));
    Query<IKVMenuElementList>(menus[0].menu)->RemoveElement(shared, nullptr);
    EXPECT_EQ(Query<IUnknown>(menus[1].button), found(shared));
    project->RemoveMenu(id(menus[1].menu), nullptr);
    EXPECT_FALSE(found(shared));
    menus[2].menu->ReNewID();
    EXPECT_EQ(Query<IUnknown>(menus[2].menu), found(id(menus[2].menu)));
}

TEST_F(ProjectTest, OutlivesNeitherItsTitlesNorTheOtherWayRound)
{
    const auto title = AddTitle(*project.Get());
    project.Reset();
    IKVProjectData* none = nullptr;
    EXPECT_EQ(S_FALSE, title->GetProject(&none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(S_OK, title->put_Label(Str(u"still here").Get()));
    EXPECT_EQ(u"still here", Text(*title.Get(), &IKVTitle::get_Label));
}

} // namespace
} // namespace kv::test
