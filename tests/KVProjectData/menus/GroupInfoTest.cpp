#include "support/Host.h"

#include <limits>

namespace kv::test {
namespace {

class GroupInfoTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put())); }

    /// A new group of the menu.
    ComPtr<IGroupInfoNode> AddGroup(std::initializer_list<LONG> elements)
    {
        LONG id = 0;
        for (const LONG element : elements) {
            EXPECT_EQ(S_OK, menu->AddtoGroup(element, id));
            id = ValueOf(*GroupOf(element).Get(), &IGroupInfoNode::get_ID);
        }
        return GroupOf(*elements.begin());
    }

    ComPtr<IGroupInfoNode> GroupOf(LONG element)
    {
        ComPtr<IUnknown> group;
        EXPECT_EQ(S_OK, menu->GetGroupIDByElementID(element, group.Put()));
        return Query<IGroupInfoNode>(group);
    }

    static std::vector<LONG> Elements(IGroupInfoNode& group)
    {
        std::vector<LONG> elements(static_cast<std::size_t>(ValueOf(group, &IGroupInfoNode::GetGroupSize)));
        for (std::size_t i = 0; i < elements.size(); ++i)
            EXPECT_EQ(S_OK, group.GetElementIDInGroup(static_cast<LONG>(i), &elements[i]));
        return elements;
    }

    std::u16string Saved(std::u16string_view attribute, std::u16string_view place = u"//GroupInfoList/GroupInfo")
    {
        return AttributeText(*SaveToDocument(*project.Get()).Get(), place, attribute);
    }

    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVMenu> menu;
};

TEST_F(GroupInfoTest, HoldsEachElementOnceAndAFrame)
{
    const auto group = AddGroup({12, 15, 12});
    EXPECT_EQ((std::vector<LONG>{12, 15}), Elements(*group.Get()));
    LONG element = 7;
    for (const LONG index : {-1, 2})
        EXPECT_EQ(S_FALSE, group->GetElementIDInGroup(index, &element));
    EXPECT_EQ(7, element);
    tagPOINTF center{9, 9};
    tagPOINTF size{9, 9};
    EXPECT_EQ(S_OK, group->GetGroupRect(&center, &size));
    EXPECT_EQ(tagPOINTF{}, center);
    EXPECT_EQ(tagPOINTF{}, size);
    for (const HRESULT result :
         {group->get_ID(nullptr), group->GetGroupSize(nullptr), group->GetElementIDInGroup(0, nullptr),
          group->GetGroupRect(nullptr, &size), group->GetGroupRect(&center, nullptr), group->GetGroupRotation(nullptr),
          group->GetGroupOriginAspect(nullptr)})
        EXPECT_EQ(E_POINTER, result);
    constexpr double kEndless = std::numeric_limits<double>::infinity();
    const float wide = std::numeric_limits<float>::quiet_NaN();
    for (const HRESULT result : {group->SetGroupRotation(kEndless), group->SetGroupOriginAspect(-kEndless),
                                 group->SetGroupRect({1, wide}, {1, 1}), group->SetGroupRect({1, 1}, {wide, 1})})
        EXPECT_EQ(E_INVALIDARG, result);
    EXPECT_EQ(tagPOINTF{}, (group->GetGroupRect(&center, &size), center));
}

TEST_F(GroupInfoTest, GroupsOfTheirOwnHaveConsecutiveIds)
{
    const auto first = Create<IGroupInfoNode>(CLSID_GroupInfoNode);
    const auto second = Create<IGroupInfoNode>(CLSID_GroupInfoNode);
    EXPECT_EQ(ValueOf(*first.Get(), &IGroupInfoNode::get_ID) + 1, ValueOf(*second.Get(), &IGroupInfoNode::get_ID));
}

TEST_F(GroupInfoTest, IsSavedAndLoaded)
{
    const auto group = AddGroup({12, -3});
    group->SetGroupRect({0.5f, 0.25f}, {1.5f, 2.0f});
    group->SetGroupRotation(30.5);
    group->SetGroupOriginAspect(1.25);
    const std::u16string attributes[]{u"12;-3;", u"0.5", u"0.25", u"1.5", u"2", u"30.5", u"1.25"};
    const auto expect = [&] {
        std::size_t i = 0;
        for (const auto* name :
             {u"ElementIDs", u"Center_X", u"Center_Y", u"Size_X", u"Size_Y", u"Rotation", u"OriginAspect"})
            EXPECT_EQ(attributes[i++], Saved(name));
    };
    expect();
    const std::u16string id = Saved(u"ID");
    const auto document = SaveToDocument(*project.Get());
    EXPECT_EQ(S_OK, project->loadXML(document.Get()));
    expect();
    EXPECT_EQ(id, Saved(u"ID"));
}

TEST_F(GroupInfoTest, AListOfElementsIsReadPieceByPiece)
{
    LONG next = ValueOf(*Create<IGroupInfoNode>(CLSID_GroupInfoNode).Get(), &IGroupInfoNode::get_ID) + 4;
    for (const auto& [text, read] :
         {std::pair{u"12;15", u"12;"}, {u"12;15;", u"12;15;"}, {u"", u""}, {u"7", u""}, {u"a;;4 x;", u"0;0;4;"}}) {
        const auto id = ToUtf16(std::to_string(next));
        const auto document = ParseXml(u"<Root><Menu><GroupInfoList><GroupInfo ElementIDs='" + std::u16string(text) +
                                       u"'/><GroupInfo ID='" + id + u"'/><Title/></GroupInfoList></Menu></Root>");
        EXPECT_EQ(S_OK, menu->ClearGroupInfoList());
        EXPECT_EQ(S_OK, menu->loadXML(document.Get(), VARIANT_TRUE));
        EXPECT_EQ(read, Saved(u"ElementIDs"));
        EXPECT_EQ(u"<no element>", Saved(u"ElementIDs", u"//GroupInfo[3]")) << "a title is no group";
        EXPECT_EQ(id, Saved(u"ID", u"//GroupInfo[2]"));
        EXPECT_NE(id, Saved(u"ID")) << "an ID of its own";
        next += 3;
    }
}

TEST_F(GroupInfoTest, IsUndone)
{
    const auto group = AddGroup({1});
    const LONG id = ValueOf(*group.Get(), &IGroupInfoNode::get_ID);
    project->BeginUndo(nullptr);
    menu->AddtoGroup(2, id);
    group->SetGroupRotation(90);
    group->SetGroupRect({1, 1}, {1, 1});
    project->EndUndo(VARIANT_TRUE);
    project->BeginUndo(nullptr);
    menu->RemoveGroup(id);
    const auto other = AddGroup({5});
    project->EndUndo(VARIANT_TRUE);
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(GroupOf(1));
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(group, GroupOf(1)) << "the same object";
        EXPECT_FALSE(GroupOf(5));
        EXPECT_EQ((std::vector<LONG>{1, 2}), Elements(*group.Get()));
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ((std::vector<LONG>{1}), Elements(*group.Get()));
        EXPECT_EQ(0.0, ValueOf(*group.Get(), &IGroupInfoNode::GetGroupRotation));
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(90.0, ValueOf(*group.Get(), &IGroupInfoNode::GetGroupRotation));
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(other, GroupOf(5));
    }
}

} // namespace
} // namespace kv::test
