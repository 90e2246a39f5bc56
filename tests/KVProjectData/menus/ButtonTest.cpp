#include "ElementSupport.h"

#include "platform/com/TaskMemory.h"

#include <gmock/gmock.h>

#include <limits>

namespace kv::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

FloatRect RegionOf(CKVMenuButton& button, VARIANT_BOOL& valid)
{
    FloatRect rect{};
    EXPECT_EQ(S_OK, button.get_ActiveRegion(&rect, &valid));
    return rect;
}

ButtonLinks LinksOf(CKVMenuButton& button)
{
    ButtonLinks* links = nullptr;
    EXPECT_EQ(S_OK, button.get_ButtonLinks(&links));
    const UniqueTaskMem<ButtonLinks> owned(links);
    return *owned;
}

std::u16string XmlOfButton(CKVMenuButton& button, VARIANT_BOOL native)
{
    const auto document = ParseXml(u"<Root/>");
    ComPtr<IXMLDOMElement> root;
    document->get_documentElement(root.Put());
    EXPECT_EQ(S_OK, button.SaveXML(root.Get(), native));
    return XmlOf(*document.Get());
}

TEST_F(ElementTest, PropertiesOfAButtonAreCheckedToldAndUndone)
{
    const auto button = NewButton();
    const LONG id = button->ID();
    Events();
    VARIANT_BOOL valid = VARIANT_TRUE;
    EXPECT_EQ(FloatRect{}, RegionOf(*button, valid));
    EXPECT_EQ(VARIANT_FALSE, valid);
    EXPECT_EQ(ButtonLinks{}, LinksOf(*button));
    EXPECT_EQ(-1, ValueOf<IKVMenuButton>(*button, &IKVMenuButton::get_CommandIndex));
    const std::u16string before = XmlOfButton(*button, VARIANT_TRUE);

    const FloatRect rect{0.1F, 0.9F, 0.4F, 0.6F};
    const ButtonLinks links{1, 2, 3, 4};
    const auto nowhere = FloatRect{std::numeric_limits<float>::infinity(), 0, 0, 0};
    struct Case {
        const char* what;
        std::function<HRESULT()> set;
        HRESULT result;
        /// 0 for no event.
        DISPID told;
    };
    const std::vector<Case> cases{
        {"region", [&] { return button->put_ActiveRegion(&rect, VARIANT_TRUE); }, S_OK, 700},
        {"no region", [&] { return button->put_ActiveRegion(&nowhere, VARIANT_TRUE); }, E_INVALIDARG, 0},
        {"null region", [&] { return button->put_ActiveRegion(nullptr, VARIANT_TRUE); }, E_POINTER, 0},
        {"links", [&] { return button->put_ButtonLinks(&links); }, S_OK, 701},
        {"null links", [&] { return button->put_ButtonLinks(nullptr); }, E_POINTER, 0},
        {"scheme", [&] { return button->put_ButtonScheme(2); }, S_OK, 702},
        {"scheme 3", [&] { return button->put_ButtonScheme(3); }, E_INVALIDARG, 0},
        {"scheme -1", [&] { return button->put_ButtonScheme(-1); }, E_INVALIDARG, 0},
        {"label", [&] { return button->put_Label(Bstr(u"b").Get()); }, S_OK, 4},
        {"data", [&] { return button->put_UserData(-5); }, S_OK, 0},
        {"style", [&] { return button->put_ButtonStyle(Bstr(u"s").Get()); }, S_OK, 704},
        {"text", [&] { return button->put_ButtonTextCache(Bstr(u"t").Get()); }, S_OK, 0},
        {"source", [&] { return button->put_ButtonSource(Bstr(u"o").Get()); }, S_OK, 0},
        {"highlight", [&] { return button->put_ButtonSourceHighlight(Bstr(u"h").Get()); }, S_OK, 0},
        {"command", [&] { return button->put_CommandIndex(6); }, S_OK, 715},
        {"position", [&] { return button->SetPosition(0.5, -0.5); }, S_OK, 504},
        {"size", [&] { return button->SetWidthHeight(1, 1); }, S_OK, 512},
        {"move", [&] { return button->Move(0, 0.25); }, S_OK, 504},
        {"XML", [&] { return button->loadXML(nullptr); }, KV_E_NO_XML_NODE, 0},
    };
    Begin();
    for (const auto& [what, set, result, told] : cases) {
        button->Lock(false);
        EXPECT_EQ(KV_E_LOCKED, set()) << what;
        button->Unlock(false);
        EXPECT_EQ(result, set()) << what;
        const auto expected = told ? std::vector{Event(EVENT_ButtonChanged, {id, told})} : std::vector<ReceivedEvent>{};
        EXPECT_EQ(expected, Events()) << what;
    }
    End();
    EXPECT_EQ(3, menu->marks);
    EXPECT_EQ(rect, RegionOf(*button, valid));
    EXPECT_EQ(VARIANT_TRUE, valid);
    EXPECT_EQ(S_OK, button->put_ActiveRegion(&rect, 1));
    RegionOf(*button, valid);
    EXPECT_EQ(VARIANT_FALSE, valid);
    EXPECT_EQ(links, LinksOf(*button));
    EXPECT_EQ((FloatPoint{0.5, -0.25}), Position(*button));
    const std::u16string after = XmlOfButton(*button, VARIANT_TRUE);
    UndoStep();
    EXPECT_EQ(before, XmlOfButton(*button, VARIANT_TRUE));
    EXPECT_EQ(u"<null>", Text<IKVMenuButton>(*button, &IKVMenuButton::get_ButtonSource));
    RedoStep();
    EXPECT_EQ(after, XmlOfButton(*button, VARIANT_TRUE));
    EXPECT_EQ(u"o", Text<IKVMenuButton>(*button, &IKVMenuButton::get_ButtonSource));

    FloatPoint corners[4];
    EXPECT_EQ(KV_E_BUTTON_HAS_NO_BOX, button->GetBoundingBox(corners));
    LONG effect = 0;
    EXPECT_EQ(E_UNEXPECTED, button->get_EffectID(&effect));
    EXPECT_EQ(S_OK, button->ResetID());
    EXPECT_LT(id, button->ID());
}

TEST_F(ElementTest, AButtonKnowsItsElements)
{
    const auto button = NewButton();
    const auto text = Insert<TestText>(ElementsOf(*button));
    const auto overlay = Insert<TestOverlay>(ElementsOf(*button));
    ComPtr<IKVMenuElement> found;
    EXPECT_EQ(S_OK, button->GetButtonBindText(found.Put()));
    EXPECT_EQ(text.Get(), found.Get());
    EXPECT_EQ(1, ValueOf<IKVMenuButton>(*button, &IKVMenuButton::get_ButtonOverlayCount));
    EXPECT_EQ(VARIANT_TRUE, [&] {
        VARIANT_BOOL custom = 0;
        EXPECT_EQ(S_OK, button->UseCustomOverlayOnButton(&custom));
        return custom;
    }());
    FloatRect region{1, 1, 1, 1};
    EXPECT_EQ(S_FALSE, button->GetHighlightRegion(&region));
    EXPECT_EQ(FloatRect{}, region);
    text->isHighlighted = true;
    EXPECT_EQ(S_OK, text->SetPosition(0.5, 0));
    EXPECT_EQ(S_OK, button->GetHighlightRegion(&region));
    FloatRect extent{};
    EXPECT_EQ(S_OK, text->GetExtent(&extent));
    EXPECT_EQ(extent, region);
    EXPECT_EQ(S_OK, overlay->GetExtent(&extent));
    FloatRect all{};
    EXPECT_EQ(S_OK, button->GetExtent(&all));
    EXPECT_EQ(Union(extent, region), all);
    // Its picture is as large as the button.
    EXPECT_EQ(S_OK, overlay->SetPosition(0.25, 0.25));
    float width = 0;
    float height = 0;
    EXPECT_EQ(S_OK, button->GetWidthHeight(&width, &height));
    EXPECT_EQ((FloatPoint{2, 2}), (FloatPoint{width, height}));
    EXPECT_EQ(KV_E_NO_ANCHOR, button->GetAnchorElement(found.Put()));

    // A text stays where it is while the button moves, unless it is the button.
    EXPECT_EQ(S_OK, button->Move(0.5, 0));
    EXPECT_EQ((FloatPoint{0, 0}), Position(*text));
    EXPECT_EQ(S_OK, ElementsOf(*button).RemoveElement(overlay->ID(), nullptr));
    EXPECT_EQ(S_OK, button->Move(0.5, 0));
    EXPECT_EQ((FloatPoint{0, 0}), Position(*text));
    EXPECT_EQ((FloatPoint{1, 0}), Position(*button));
    ComPtr<IKVMenuOverlay> none;
    EXPECT_EQ(S_OK, button->GetButtonOverlay(0, none.Put()));
    EXPECT_FALSE(none);
    EXPECT_EQ(S_OK, ElementsOf(*button).Clear());
    EXPECT_EQ(S_OK, button->GetButtonBindText(found.Put()));
    EXPECT_FALSE(found);
}

TEST_F(ElementTest, ACopyOfAButtonStandsInNoList)
{
    Show();
    const auto button = NewButton();
    Insert<TestOverlay>(ElementsOf(*button));
    const auto anchor = Insert<TestText>(ElementsOf(*button));
    button->SetAnchorID(anchor->ID());
    button->SelectAnchor(true);
    EXPECT_EQ(S_OK, button->SetPosition(0.5, 0.25));
    EXPECT_EQ(S_OK, button->put_Label(Bstr(u"play").Get()));
    EXPECT_EQ(S_OK, button->put_ButtonSource(Bstr(u"file").Get()));
    EXPECT_EQ(S_OK, button->put_IsDirty(VARIANT_TRUE));
    const ButtonLinks links{9, 0, 0, 7};
    EXPECT_EQ(S_OK, button->put_ButtonLinks(&links));
    DiscCommandParams command{PlayMenu, 3, 4, nullptr};
    EXPECT_EQ(S_OK, Query<IKVCommandList>(button)->SetCommandList(1, &command));

    ComPtr<IKVMenuElement> object;
    EXPECT_EQ(S_OK, button->Copy(object.Put()));
    auto& copy = *dynamic_cast<CKVMenuButton*>(object.Get());
    EXPECT_LT(anchor->ID(), copy.ID());
    EXPECT_EQ(u"play", Text<IKVMenuButton>(copy, &IKVMenuButton::get_Label));
    EXPECT_EQ(u"<null>", Text<IKVMenuButton>(copy, &IKVMenuButton::get_ButtonSource));
    EXPECT_EQ(VARIANT_FALSE, ValueOf<IKVMenuElement>(copy, &IKVMenuElement::get_IsDirty));
    EXPECT_EQ(links, LinksOf(copy));
    EXPECT_EQ((FloatPoint{0.5, 0.25}), Position(copy));
    LONG count = 0;
    DiscCommandParams* commands = nullptr;
    EXPECT_EQ(S_OK, Query<IKVCommandList>(object)->GetCommandList(&count, &commands));
    const UniqueTaskMem<DiscCommandParams> owned(commands);
    ASSERT_EQ(1, count);
    EXPECT_EQ(4, commands->lParam2);
    ComPtr<IKVMenuElementList> list;
    EXPECT_EQ(S_FALSE, copy.GetParentList(list.Put()));
    ComPtr<IKVMenu> noMenu;
    EXPECT_EQ(E_POINTER, copy.GetMenu(noMenu.Put()));

    EXPECT_EQ(S_OK, Elements().InsertElement(0, object.Get()));
    EXPECT_EQ((FloatPoint{0.5, 0.25}), Position(copy));
    ASSERT_NE(nullptr, copy.Anchor());
    EXPECT_EQ(typeText, copy.Anchor()->Node().Type());
    EXPECT_NE(anchor->ID(), copy.AnchorID());
}

TEST_F(ElementTest, AButtonTakesOverAnotherOnesLook)
{
    for (int turn = 0; turn < 3; ++turn) {
        const bool shown = turn == 0;
        menu->isBare = turn == 2;
        if (shown) {
            Show();
        } else {
            menu->production = nullptr;
        }
        const auto source = NewButton();
        const auto target = NewButton();
        Insert<TestOverlay>(ElementsOf(*source));
        const auto text = Insert<TestText>(ElementsOf(*source));
        EXPECT_EQ(S_OK, text->SetPosition(0.125, 0));
        source->SetAnchorID(text->ID());
        source->SelectAnchor(true);
        EXPECT_EQ(S_OK, source->SetPosition(0.5, 0.5));
        EXPECT_EQ(S_OK, source->put_ButtonScheme(1));
        const ButtonLinks links{1, 1, 1, 1};
        EXPECT_EQ(S_OK, source->put_ButtonLinks(&links));
        const auto old = Insert<TestText>(ElementsOf(*target));
        EXPECT_EQ(S_OK, target->SetPosition(0.25, 0.25));
        const LONG id = target->ID();
        const std::u16string before = XmlOfButton(*target, VARIANT_TRUE);

        Begin();
        EXPECT_EQ(S_OK, old->SetPosition(0.375, 0.5));
        const FloatPoint place = Position(*target);
        Events();
        EXPECT_EQ(S_OK, source->ApplyTo(target.Get()));
        End();
        const FloatPoint left = Position(*old);
        std::vector<ReceivedEvent> told = Events();
        EXPECT_EQ(Event(EVENT_MenuElementRemoved, {old->ID()}), told.front());
        EXPECT_EQ(Event(EVENT_ButtonChanged, {id, -1}), told.back());
        EXPECT_EQ(id, target->ID());
        EXPECT_EQ(place, Position(*target));
        EXPECT_EQ(1, ValueOf<IKVMenuButton>(*target, &IKVMenuButton::get_ButtonScheme));
        EXPECT_EQ(links, LinksOf(*target));
        ASSERT_EQ(2, ElementsOf(*target).ChildCount());
        CProjectNode& taken = *ElementsOf(*target).GetChild(0);
        EXPECT_EQ(typeOverlay, taken.Type());
        EXPECT_EQ((FloatPoint{0.125, 0}),
                  Absolute(*ElementOf(*ElementsOf(*target).GetChild(1))) - Absolute(*ElementOf(taken)));
        EXPECT_EQ(2, ElementsOf(*source).ChildCount());
        const std::u16string after = XmlOfButton(*target, VARIANT_TRUE);
        if (shown) {
            EXPECT_TRUE(IsShown(taken) && !IsShown(*old));
        }
        for (int round = 0; round < 2; ++round) {
            UndoStep();
            EXPECT_EQ(before, XmlOfButton(*target, VARIANT_TRUE));
            EXPECT_EQ(&ElementsOf(*target), old->Parent());
            if (shown) {
                EXPECT_TRUE(IsShown(*old) && old->HasEffect() && !IsShown(taken));
            }
            RedoStep();
            EXPECT_EQ(after, XmlOfButton(*target, VARIANT_TRUE));
            EXPECT_EQ(left, Position(*old));
            if (shown) {
                EXPECT_TRUE(IsShown(taken) && !IsShown(*old) && target->Anchor());
            }
        }
        EXPECT_EQ(S_OK, Elements().Clear());
    }
    const auto button = NewButton();
    EXPECT_EQ(E_POINTER, button->ApplyTo(nullptr));
    EXPECT_EQ(S_OK, button->ApplyTo(button.Get()));
    const auto locked = NewButton();
    locked->Lock(false);
    EXPECT_EQ(KV_E_LOCKED, button->ApplyTo(locked.Get()));
}

TEST_F(ElementTest, UndoOfALookBringsBackWhereTheButtonStands)
{
    Show();
    const auto standOnSecond = [&](CKVMenuButton& button) {
        Insert<TestOverlay>(ElementsOf(button));
        const auto anchor = Insert<TestText>(ElementsOf(button));
        EXPECT_EQ(S_OK, anchor->SetPosition(0.125, 0));
        button.SetAnchorID(anchor->ID());
        button.SelectAnchor(true);
    };
    const auto source = NewButton();
    standOnSecond(*source);
    EXPECT_EQ(S_OK, source->SetPosition(0.5, 0.5));
    const FloatPoint place{0.25, 0.25};
    for (const bool isEmpty : {false, true}) {
        const auto target = NewButton();
        if (!isEmpty) standOnSecond(*target);
        EXPECT_EQ(S_OK, target->SetPosition(place.x, place.y));
        const LONG before = target->AnchorID();
        Begin();
        EXPECT_EQ(S_OK, source->ApplyTo(target.Get()));
        End();
        const LONG after = target->AnchorID();
        EXPECT_EQ(ElementsOf(*target).GetChild(1)->ID(), after);
        for (int round = 0; round < 2; ++round) {
            UndoStep();
            EXPECT_EQ(std::pair(before, place), std::pair(target->AnchorID(), Position(*target))) << isEmpty;
            EXPECT_EQ(isEmpty, !target->Anchor());
            RedoStep();
            EXPECT_EQ(std::pair(after, place), std::pair(target->AnchorID(), Position(*target))) << isEmpty;
            EXPECT_TRUE(target->Anchor());
        }
    }
}

TEST_F(ElementTest, AButtonIsWrittenAndReadWithAllThatStandsInIt)
{
    const auto button = NewButton();
    FloatRect nowhere{1, 1, 1, 1};
    EXPECT_EQ(S_OK, button->GetExtent(&nowhere));
    EXPECT_EQ(FloatRect{}, nowhere);
    EXPECT_EQ(S_OK, button->put_Tag(ButtonType_Next | ButtonType_Command));
    EXPECT_EQ(S_OK, button->SetPosition(0.5, 0.25));
    const FloatRect rect{0.1F, 0.9F, 0.4F, 0.6F};
    EXPECT_EQ(S_OK, button->put_ActiveRegion(&rect, VARIANT_TRUE));
    const std::u16string id = ToUtf16(std::to_string(button->ID()));
    const std::u16string native =
        u"<Root><Button ID=\"" + id +
        u"\" anchor=\"0\" buttonStyle=\"\" buttonTextCache=\"\" commandIndex=\"-1\" flags=\"0\" label=\"\""
        u" rotation=\"0\" scheme=\"0\" tag=\"33 (Next|Command)\" templateID=\"0\" userdata=\"0\" x=\"0.5\" y=\"0.25\""
        u" zOrder=\"0\"><Links left=\"0\" lower=\"0\" right=\"0\" upper=\"0\"/>"
        u"<ActiveRegion bottom=\"0.6\" left=\"0.1\" right=\"0.4\" top=\"0.9\" valid=\"-1\"/><Commands/><Elements/>"
        u"</Button></Root>";
    EXPECT_EQ(native, XmlOfButton(*button, VARIANT_FALSE));

    // While effects hold the places of a button's elements, only a save in native form tells of them.
    Show();
    Insert<TestOverlay>(ElementsOf(*button));
    EXPECT_EQ(std::u16string::npos, XmlOfButton(*button, VARIANT_FALSE).find(u" x=\""));
    EXPECT_NE(std::u16string::npos, XmlOfButton(*button, 1).find(u" x=\"0.5\""));

    const auto other = NewButton();
    const auto gone = Insert<TestText>(ElementsOf(*other));
    EXPECT_TRUE(IsShown(*gone));
    Events();
    const auto document = ParseXml(native);
    ComPtr<IXMLDOMElement> root;
    document->get_documentElement(root.Put());
    ComPtr<IXMLDOMNode> element;
    root->get_firstChild(element.Put());
    EXPECT_EQ(S_OK, other->loadXML(element.Get()));
    EXPECT_THAT(Events(), IsEmpty());
    EXPECT_EQ(native, XmlOfButton(*other, VARIANT_TRUE));
    EXPECT_FALSE(IsShown(*gone));
}

} // namespace
} // namespace kv::test
