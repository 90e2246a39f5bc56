#include "KVProjectData/menus/MenuSupport.h"

#include <limits>

namespace kv::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST_F(MenuTest, StartsWithItsDefaults)
{
    EXPECT_EQ(
        "Tag=0 Flags=0 ButtonCount=0 TextCount=0 ElementCount=0 Audio= Background= ButtonLayout=0 TemplateID=0 "
        "DefaultButton=0 Label=<null> BkgndID=0 IsNative=0 Duration=30 IsMenuBackgroundLoopPlay=1 ",
        ScriptHost(menu.Get()).Properties<IKVMenu>({"ID", "LayoutRect", "BackgroundMute", "BackgroundAudioMute"}));
    EXPECT_TRUE(Production());
    EXPECT_FALSE(BackgroundProduction());
    ComPtr<IKVProjectData> owner;
    EXPECT_EQ(S_OK, menu->GetProject(owner.Put()));
    EXPECT_EQ(project, owner);
    EXPECT_EQ(u"", Text(*menu, &IKVMenu::GetButtonPosition));
    EXPECT_EQ(u"<null>", Text(*menu, &IKVMenu::GetSmartAudio));
    for (const auto ask : {&IKVMenu::get_Tag, &IKVMenu::get_Flags, &IKVMenu::get_ButtonLayout})
        EXPECT_EQ(E_POINTER, (menu.Get()->*ask)(nullptr));
    for (const auto ask :
         {&IKVMenu::GetProduction, &IKVMenu::GetBackgroundProduction, &IKVMenu::GetPreProduceProduction})
        EXPECT_EQ(E_POINTER, (menu.Get()->*ask)(nullptr));
    for (const auto ask : {&IKVMenu::get_Duration, &IKVMenu::GetMenuBackgroundAspectRatio})
        EXPECT_EQ(E_POINTER, (menu.Get()->*ask)(nullptr));
    EXPECT_TRUE(Query<IKVEncodingParams>(menu) && Query<IKVCommandList>(menu) && Query<IKVLocking>(menu) &&
                Query<IKVMenuElementList>(menu) && Query<IZXEProductionDataEvents>(menu));
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*Query<IKVEncodingParams>(menu).Get(), &IKVEncodingParams::get_SyncToProject));
}

TEST_F(MenuTest, SettersStoreTellAndUndo)
{
    const ComPtr<IKVMenu>& m = menu;
    struct Case {
        const char* name;
        LONG propId;
        std::function<HRESULT()> set;
        std::function<std::string()> get;
    };
    const auto number = [&]<class T>(HRESULT (IKVMenu::*get)(T*)) {
        return [&, get] { return std::to_string(ValueOf(*m.Get(), get)); };
    };
    const auto rect = [&] {
        const FloatRect r = ValueOf(*m.Get(), &IKVMenu::get_LayoutRect);
        return std::to_string(r.fLeft) + std::to_string(r.fTop) + std::to_string(r.fRight) + std::to_string(r.fBottom);
    };
    const auto colours = [&] {
        std::string text;
        for (int type = SPU_Normal; type <= SPU_BtnColours3; ++type) {
            SPUColourInfo both[2]{};
            EXPECT_EQ(S_OK, m->GetSubpictureColours(static_cast<SPUColourTypes>(type), &both[0], &both[1]));
            text += std::to_string(both[0].pattCol) + std::to_string(both[1].emp1Cnt) + ' ';
        }
        return text;
    };
    const auto palette = [&] {
        RGBEntry entries[16]{};
        EXPECT_EQ(S_OK, m->GetPalette(entries));
        return std::to_string(entries[15].byB);
    };
    const SPUColourInfo selected{3, 1, 0, 0, 0, 0, 3, 1};
    const SPUColourInfo activated{3, 1, 0, 0, 0, 7, 3, 1};
    RGBEntry entries[16]{};
    entries[15].byB = 9;
    const Case cases[]{
        {"Tag", 2, [&] { return m->put_Tag(MenuType_Chapter); }, number(&IKVMenu::get_Tag)},
        {"Flags", 3, [&] { return m->put_Flags(MenuFlag_Still); }, number(&IKVMenu::get_Flags)},
        {"Label", 4, [&] { return m->put_Label(Str(u"L").Get()); },
         [&] { return ToUtf8(Text(*m, &IKVMenu::get_Label)); }},
        {"TemplateID", 10, [&] { return m->put_TemplateID(8); }, number(&IKVMenu::get_TemplateID)},
        {"LayoutRect", 303,
         [&] {
             return m->put_LayoutRect({-1, 1, 1, -1});
         },
         rect},
        {"ButtonLayout", 304, [&] { return m->put_ButtonLayout(5); }, number(&IKVMenu::get_ButtonLayout)},
        {"BkgndID", 307, [&] { return m->put_BkgndID(6); }, number(&IKVMenu::get_BkgndID)},
        {"LoopPlay", 346, [&] { return m->put_IsMenuBackgroundLoopPlay(0); },
         number(&IKVMenu::get_IsMenuBackgroundLoopPlay)},
        {"scheme", 311, [&] { return m->SetSubpictureColours(SPU_BtnColours2, &selected, &activated); }, colours},
        {"colours", 311, [&] { return m->SetSubpictureColours(SPU_Normal, &selected, nullptr); }, colours},
        {"palette", 313, [&] { return m->SetPalette(entries); }, palette},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        ASSERT_EQ(S_OK, project->ClearDirtyFlag());
        Events();
        const std::string before = each.get();
        Query<IKVLocking>(menu)->LockObject(VARIANT_FALSE);
        EXPECT_EQ(KV_E_LOCKED, each.set());
        EXPECT_EQ(before, each.get());
        Query<IKVLocking>(menu)->UnlockObject(VARIANT_FALSE);
        EXPECT_TRUE(Events().empty());

        ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
        EXPECT_EQ(S_OK, each.set());
        ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
        const std::string after = each.get();
        EXPECT_NE(before, after);
        EXPECT_EQ((std::vector{Event(EVENT_VolumePropChanged, {11}), Changed(each.propId)}), Events());
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(before, each.get());
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(after, each.get());
    }
}

TEST_F(MenuTest, RefusesWhatNoMenuHas)
{
    SPUColourInfo colours{};
    SPUColourInfo index{16, 16, 0, 0, 0, 0, 0, 0};
    SPUColourInfo contrast{0, 0, 0, 0, 0, 0, 0, 16};
    ComPtr<IKVMenuElement> button;
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuButton::IID, button.Put()));
    const LONG buttonID = ValueOf(*button.Get(), &IKVMenuElement::get_ID);
    EXPECT_EQ(S_OK, menu->put_DefaultButton(buttonID));
    Events();
    const auto beyond = static_cast<SPUColourTypes>(3);
    EXPECT_EQ(E_INVALIDARG, menu->put_LayoutRect({0, kNaN, 0, 0}));
    EXPECT_EQ(KV_E_NO_SUCH_ID, menu->put_DefaultButton(ID()));
    EXPECT_EQ(E_INVALIDARG, menu->SetSubpictureColours(beyond, &colours, &colours));
    EXPECT_EQ(E_INVALIDARG, menu->GetSubpictureColours(beyond, &colours, &colours));
    EXPECT_EQ(E_POINTER, menu->SetSubpictureColours(SPU_BtnColours1, &colours, nullptr));
    EXPECT_EQ(E_POINTER, menu->GetSubpictureColours(SPU_BtnColours1, nullptr, &colours));
    EXPECT_EQ(E_POINTER, menu->GetSubpictureColours(SPU_Normal, nullptr, &colours));
    EXPECT_EQ(KV_E_BAD_COLOUR_INDEX, menu->SetSubpictureColours(SPU_Normal, &index, nullptr));
    EXPECT_EQ(KV_E_BAD_CONTRAST, menu->SetSubpictureColours(SPU_BtnColours1, &colours, &contrast));
    EXPECT_EQ(E_POINTER, menu->SetPalette(nullptr));
    EXPECT_EQ(E_POINTER, menu->GetPalette(nullptr));
    for (const double seconds : {-1.0, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(E_INVALIDARG, menu->put_Duration(seconds));
    EXPECT_EQ(E_INVALIDARG, menu->SetNative(1));
    EXPECT_EQ(KV_E_NO_XML_NODE, menu->loadXML(nullptr, VARIANT_FALSE));
    EXPECT_EQ(E_POINTER, menu->CopyGroupInfoList(nullptr));
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ(buttonID, ValueOf(*menu.Get(), &IKVMenu::get_DefaultButton));
    EXPECT_EQ(S_OK, menu->put_DefaultButton(0));
}

TEST_F(MenuTest, ReadingASchemeRewritesItsSecondEmphasis)
{
    const SPUColourInfo stored{3, 4, 1, 1, 2, 2, 7, 15};
    ASSERT_EQ(S_OK, menu->SetSubpictureColours(SPU_BtnColours1, &stored, &stored));
    SPUColourInfo selected{};
    SPUColourInfo activated{};
    EXPECT_EQ(S_OK, menu->GetSubpictureColours(SPU_BtnColours1, &selected, &activated));
    EXPECT_TRUE(stored == selected && stored == activated);
    EXPECT_EQ(S_OK, menu->GetSubpictureColours(SPU_BtnColours1, &selected, &activated));
    const SPUColourInfo rewritten{3, 4, 1, 1, 2, 2, 3, 2};
    EXPECT_TRUE(rewritten == selected && rewritten == activated);
}

TEST_F(MenuTest, FindsItsElementsByKind)
{
    const auto list = Query<IKVMenuElementList>(menu);
    ComPtr<IKVMenuElement> elements[3];
    for (auto& element : elements)
        ASSERT_EQ(S_OK, list->AddElement(&IKVMenuButton::IID, element.Put()));
    EXPECT_EQ(3, ValueOf(*menu.Get(), &IKVMenu::get_ButtonCount));
    EXPECT_EQ(3, ValueOf(*menu.Get(), &IKVMenu::get_ElementCount));
    EXPECT_EQ(0, ValueOf(*menu.Get(), &IKVMenu::get_TextCount));
    const auto order = [&] {
        std::string text;
        for (LONG i = 1; i <= 3; ++i) {
            ComPtr<IKVMenuButton> button;
            EXPECT_EQ(S_OK, menu->GetButton(i, button.Put()));
            for (int k = 0; k < 3; ++k)
                if (IsSameObject(button.Get(), elements[k].Get())) text += static_cast<char>('A' + k);
        }
        return text;
    };
    EXPECT_EQ("ABC", order());
    ComPtr<IKVMenuButton> none;
    ComPtr<IKVMenuText> noText;
    for (const LONG position : {0, -1, 4})
        EXPECT_EQ(KV_E_BAD_POSITION, menu->GetButton(position, none.Put()));
    EXPECT_EQ(KV_E_BAD_POSITION, menu->GetText(1, noText.Put()));
    EXPECT_EQ(E_POINTER, menu->GetMenuElement(1, nullptr));

    // Positions count from 0 here.
    Events();
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    for (const auto& [from, to] : {std::pair{0, 2}, {1, 5}, {3, 0}, {-1, 1}})
        EXPECT_EQ(S_OK, menu->MoveElementOrder(from, to));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    EXPECT_EQ("BCA", order());
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ("ABC", order());

    const LONG before = ID();
    EXPECT_EQ(S_OK, menu->ReNewID());
    EXPECT_LT(before, ID());
    EXPECT_TRUE(Events().empty());
}

TEST_F(MenuTest, GroupsItsElements)
{
    const auto groupOf = [](IKVMenu& of, LONG element) {
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK, of.GetGroupIDByElementID(element, object.Put()));
        return Query<IGroupInfoNode>(object);
    };
    const auto sizeOf = [](const ComPtr<IGroupInfoNode>& group) {
        return group ? ValueOf(*group.Get(), &IGroupInfoNode::GetGroupSize) : -1;
    };
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    EXPECT_EQ(S_OK, menu->AddtoGroup(12, 1'000'000));
    const auto group = groupOf(*menu, 12);
    ASSERT_TRUE(group);
    const LONG id = ValueOf(*group.Get(), &IGroupInfoNode::get_ID);
    EXPECT_NE(1'000'000, id);
    EXPECT_EQ(S_OK, menu->AddtoGroup(15, id));
    EXPECT_EQ(S_OK, menu->AddtoGroup(15, id));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    EXPECT_EQ(2, sizeOf(group));

    ComPtr<IUnknown> object;
    EXPECT_EQ(S_FALSE, menu->GetGroupByGroupID(-1, object.Put()));
    EXPECT_EQ(S_OK, menu->GetGroupByGroupID(1'000'000, object.Put()));
    EXPECT_FALSE(object);
    EXPECT_EQ(S_OK, menu->GetGroupByGroupID(id, object.Put()));
    EXPECT_TRUE(IsSameObject(object.Get(), group.Get()));
    EXPECT_EQ(E_POINTER, menu->GetGroupByGroupID(id, nullptr));
    EXPECT_EQ(E_POINTER, menu->GetGroupIDByElementID(12, nullptr));

    // Another menu without that group has one for each element then.
    ComPtr<IKVMenu> other;
    ASSERT_EQ(S_OK, project->AddMenu(0, other.Put()));
    EXPECT_EQ(S_OK, menu->CopyGroupInfoList(other.Get()));
    EXPECT_EQ(1, sizeOf(groupOf(*other, 12)));
    EXPECT_FALSE(groupOf(*other, 12) == groupOf(*other, 15));
    EXPECT_EQ(S_OK, menu->CopyGroupInfoList(menu.Get()));
    // No group is found by a negative ID, whatever a document says.
    ASSERT_EQ(S_OK, other->loadXML(XmlElement::Parse("<Menu><GroupInfoList><GroupInfo ID='4294967290' "
                                                     "ElementIDs='3;'/></GroupInfoList></Menu>")
                                       .Get(),
                                   VARIANT_TRUE));
    EXPECT_EQ(S_OK, other->AddtoGroup(4, -6));
    EXPECT_EQ(1, sizeOf(groupOf(*other, 3)));
    EXPECT_EQ(1, sizeOf(groupOf(*other, 4)));
    EXPECT_EQ(2, sizeOf(group));

    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    EXPECT_EQ(S_OK, menu->RemoveGroup(id));
    EXPECT_EQ(S_OK, menu->RemoveGroup(id));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    EXPECT_FALSE(groupOf(*menu, 12));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(group, groupOf(*menu, 12));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_FALSE(groupOf(*menu, 12));
    EXPECT_EQ(S_OK, project->RedoOperation());
    EXPECT_EQ(2, sizeOf(groupOf(*menu, 15)));
    ASSERT_EQ(S_OK, project->ClearDirtyFlag());
    Events();
    EXPECT_EQ(S_OK, menu->ClearGroupInfoList());
    EXPECT_TRUE(Events().empty());
    EXPECT_FALSE(groupOf(*menu, 15));
}

TEST_F(MenuTest, PlaysWhatADocumentSaysInEitherMode)
{
    const auto document = [](const char* native, const std::string& background, const char* duration) {
        XmlElement root = XmlElement::New("Menu");
        root.SetAttribute("native", native);
        root.SetAttribute("background", background);
        root.SetAttribute("duration", duration);
        return root;
    };
    const std::string clip = ToUtf8(wide.View());
    struct Case {
        const char* native;
        std::string background;
        const char* duration;
        LONG panels;
    };
    const Case cases[]{{"-1", clip, "1", 1}, {"0", clip, "1", 1}, {"-1", clip, "1", 1}, {"-1", "", "7", 0},
                       {"0", clip, "1", 1},  {"0", "", "8", 0},   {"0", "", "9", 0},    {"0", clip, "1", 1}};
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        ASSERT_EQ(S_OK, menu->loadXML(document(each.native, each.background, each.duration).Get(), VARIANT_TRUE));
        EXPECT_EQ(each.background, ToUtf8(Text(*menu, &IKVMenu::get_Background)));
        EXPECT_EQ(std::stod(each.duration), ValueOf(*menu.Get(), &IKVMenu::get_Duration));
        const auto used = Query<IZXEProductionData>(Production() ? Production() : BackgroundProduction());
        EXPECT_EQ(each.panels, ValueOf(*used.Get(), &IZXEProductionData::GetPanelCount));
    }
    // Of what the document does not tell nothing changes.
    EXPECT_EQ(S_OK, menu->loadXML(XmlElement::Parse("<Menu native='-1' duration='5'/>").Get(), VARIANT_TRUE));
    EXPECT_EQ(wide.View(), Text(*menu, &IKVMenu::get_Background));
    EXPECT_EQ(S_OK, menu->loadXML(XmlElement::Parse("<Menu native='0'><Encoding aspectRatio='2'/></Menu>").Get(),
                                  VARIANT_TRUE));
    EXPECT_DOUBLE_EQ(16.0 / 9.0, Ratio(Production()));
}

TEST_F(MenuTest, KeepsItsDurationInFiles)
{
    const auto file = folder.File("p.xml");
    const auto files = Create<IKVFileService>(CLSID_KVFileService);
    ASSERT_EQ(S_OK, Query<IKVEncodingParams>(menu)->put_AspectRatio(AspectRatio_16x9));
    const auto load = [&] {
        project = NewProject();
        EXPECT_EQ(S_OK, files->LoadProject(file.Get(), project.Get()));
        menu.Reset();
        ASSERT_EQ(S_OK, project->GetMenu(1, menu.Put()));
    };
    ASSERT_EQ(S_OK, files->SaveProject(file.Get(), project.Get()));
    load();
    EXPECT_EQ(30.0, ValueOf(*menu.Get(), &IKVMenu::get_Duration));
    EXPECT_DOUBLE_EQ(16.0 / 9.0, Ratio(Production())) << "the file holds no production";
    ASSERT_EQ(S_OK, menu->put_Duration(12.5));
    ASSERT_EQ(S_OK, files->SaveProject(file.Get(), project.Get()));
    load();
    EXPECT_EQ(12.5, ValueOf(*menu.Get(), &IKVMenu::get_Duration));
    ASSERT_EQ(S_OK, menu->put_Background(still.Get()));
    EXPECT_EQ(12.5, ValueOf(*menu.Get(), &IKVMenu::get_Duration));
}

TEST_F(MenuTest, AFileThatIsLoadedInAStepIsWhatTheStepGoesBackTo)
{
    const auto file = folder.File("p.xml");
    const auto files = Create<IKVFileService>(CLSID_KVFileService);
    ASSERT_EQ(S_OK, menu->put_Background(still.Get()));
    ASSERT_EQ(S_OK, menu->put_Duration(12.5));
    ASSERT_EQ(S_OK, files->SaveProject(file.Get(), project.Get()));
    const auto told = [&] {
        return std::pair(Text(*menu, &IKVMenu::get_Background), ValueOf(*menu.Get(), &IKVMenu::get_Duration));
    };
    const auto saved = told();
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    ASSERT_EQ(S_OK, files->LoadProject(file.Get(), project.Get()));
    menu.Reset();
    ASSERT_EQ(S_OK, project->GetMenu(1, menu.Put()));
    EXPECT_EQ(saved, told());
    ASSERT_EQ(S_OK, menu->put_Background(wide.Get()));
    ASSERT_EQ(S_OK, menu->put_Duration(1.0));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    const auto edited = told();
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(saved, told());
    EXPECT_EQ(S_OK, project->RedoOperation());
    EXPECT_EQ(edited, told());
}

TEST_F(MenuTest, WhatAStepInsertsBelongsToItWithWhatIsDoneToIt)
{
    const LONG id = ValueOf(*menu.Get(), &IKVMenu::get_ID);
    ASSERT_EQ(S_OK, menu->put_Duration(12.5));
    ASSERT_EQ(S_OK, project->RemoveMenu(id, nullptr));
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    ASSERT_EQ(S_OK, project->InsertMenuW(1, menu.Get()));
    ASSERT_EQ(S_OK, menu->put_Duration(3.0));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(0, ValueOf(*project.Get(), &IKVProjectData::get_MenuCount));
        EXPECT_EQ(12.5, ValueOf(*menu.Get(), &IKVMenu::get_Duration));
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(3.0, ValueOf(*menu.Get(), &IKVMenu::get_Duration));
    }
    // Taken out and put back, it takes part once.
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    ASSERT_EQ(S_OK, project->RemoveMenu(id, nullptr));
    ASSERT_EQ(S_OK, project->InsertMenuW(1, menu.Get()));
    ASSERT_EQ(S_OK, menu->put_Duration(4.0));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_FALSE));
    EXPECT_EQ(3.0, ValueOf(*menu.Get(), &IKVMenu::get_Duration));
}

TEST_F(MenuTest, HoldsWhatIsLaidDownThere)
{
    ComPtr<IKVMenuElement> button;
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuButton::IID, button.Put()));
    ComPtr<IKVMenuButton> held;
    EXPECT_EQ(S_OK, menu->GetTempCmdButton(held.Put()));
    EXPECT_FALSE(held);
    EXPECT_EQ(S_OK, menu->SetTempCmdButton(button.Get()));
    EXPECT_EQ(S_OK, menu->GetTempCmdButton(held.Put()));
    EXPECT_TRUE(IsSameObject(button.Get(), held.Get()));
    EXPECT_EQ(S_OK, menu->SetTempSubMenuText(button.Get()));
    ComPtr<IKVMenuText> noText;
    EXPECT_EQ(S_OK, menu->GetTempSubMenuText(noText.Put()));
    EXPECT_FALSE(noText) << "a button is no text";
    EXPECT_EQ(S_OK, menu->SetTempCmdButton(project.Get()));
    EXPECT_EQ(S_OK, menu->GetTempCmdButton(held.Put()));
    EXPECT_FALSE(held);
    EXPECT_EQ(E_POINTER, menu->GetTempCmdButton(nullptr));

    ComPtr<IUnknown> produced;
    EXPECT_EQ(S_OK, menu->SetPreProduceProduction(Production().Get()));
    EXPECT_EQ(S_OK, menu->GetPreProduceProduction(produced.Put()));
    EXPECT_EQ(Production(), produced);
    EXPECT_EQ(S_OK, menu->SetPreProduceProduction(project.Get()));
    EXPECT_EQ(S_OK, menu->GetPreProduceProduction(produced.Put()));
    EXPECT_FALSE(produced);
    EXPECT_EQ(S_OK, menu->SetButtonPosition(Str(u"2,3").Get()));
    EXPECT_EQ(u"2,3", Text(*menu, &IKVMenu::GetButtonPosition));
}

TEST_F(MenuTest, IsSavedAndLoadedByItself)
{
    ASSERT_EQ(S_OK, menu->put_Tag(MenuType_Main | MenuType_Transition));
    ASSERT_EQ(S_OK, menu->put_Flags(MenuFlag_Still | MenuFlag_UserButtonsDirty));
    ASSERT_EQ(S_OK, menu->put_ButtonLayout(0xAB));
    ASSERT_EQ(S_OK, menu->put_Background(wide.Get()));
    ASSERT_EQ(S_OK, menu->AddtoGroup(3, 0));
    ComPtr<IKVMenuElement> button;
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuButton::IID, button.Put()));
    const auto saved = [&](VARIANT_BOOL forceNative) {
        XmlElement root = XmlElement::Parse("<Root/>");
        EXPECT_EQ(S_OK, menu->SaveXML(root.Get(), forceNative));
        return root.Child("Menu");
    };
    const auto attribute = [](const XmlElement& element, const char* name) {
        return std::string(element.View().Attribute(name).value_or("<none>"));
    };
    XmlElement plain = saved(VARIANT_FALSE);
    XmlElement native = saved(VARIANT_TRUE);
    const std::pair<const char*, const char*> expected[]{
        {"tag", "17 (Main|Transition)"}, {"flag", "3 (StillMenu)"},
        {"btnLayout", "0x000000AB"},     {"templateID", "0"},
        {"backgroundID", "0"},           {"native", "0"},
        {"defaultButton", "0"},          {"label", ""},
        {"buttonsPosition", ""},         {"IsMenuBackgroundLoopPlay", "-1"}};
    for (const auto& [name, text] : expected) {
        EXPECT_EQ(text, attribute(plain, name)) << name;
        EXPECT_EQ(text, attribute(native, name)) << name;
    }
    for (const char* name : {"background", "audio", "duration"})
        EXPECT_EQ("<none>", attribute(plain, name));
    EXPECT_EQ("%TEMP%" + folder.Path().filename().string() + "/wide.y4m", attribute(native, "background"));
    EXPECT_EQ("2", attribute(native, "duration"));
    std::string children;
    for (XmlView child = plain.View().FirstChild(); child; child = child.Next())
        children.append(child.Name()) += ' ';
    EXPECT_EQ("Palette ButtonScheme1 ButtonScheme2 ButtonScheme3 SPUColours LayoutRect Encoding Commands Elements "
              "GroupInfoList ",
              children);

    ComPtr<IKVMenu> copy;
    ASSERT_EQ(S_OK, project->AddMenu(0, copy.Put()));
    const LONG copyID = ValueOf(*copy.Get(), &IKVMenu::get_ID);
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(S_OK, copy->loadXML(native.Get(), VARIANT_TRUE));
        EXPECT_EQ(copyID, ValueOf(*copy.Get(), &IKVMenu::get_ID));
        EXPECT_EQ(1, ValueOf(*copy.Get(), &IKVMenu::get_ButtonCount));
        EXPECT_EQ(wide.View(), Text(*copy, &IKVMenu::get_Background));
        EXPECT_DOUBLE_EQ(2.0, ValueOf(*copy.Get(), &IKVMenu::get_Duration));
        XmlElement again = XmlElement::Parse("<Root/>");
        EXPECT_EQ(S_OK, copy->SaveXML(again.Get(), VARIANT_TRUE));
        again.Child("Menu").SetAttribute("ID", attribute(native, "ID"));
        EXPECT_EQ(native.Markup(), again.Child("Menu").Markup()) << "what was there is replaced";
    }
    EXPECT_EQ(S_OK, copy->loadXML(native.Get(), 1));
    EXPECT_EQ(ID(), ValueOf(*copy.Get(), &IKVMenu::get_ID));
    Query<IKVLocking>(copy)->LockObject(VARIANT_FALSE);
    EXPECT_EQ(KV_E_LOCKED, copy->loadXML(plain.Get(), VARIANT_FALSE));
}

} // namespace
} // namespace kv::test
