#include "ElementSupport.h"

#include "KVProjectData/menus/MenuOverlay.h"
#include "KVProjectData/menus/MenuText.h"
#include "support/FakeEngine.h"
#include "support/Script.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <limits>
#include <thread>

namespace kv::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

void ExpectNear(const FloatPoint& expected, const FloatPoint& actual)
{
    EXPECT_NEAR(expected.x, actual.x, 1e-6);
    EXPECT_NEAR(expected.y, actual.y, 1e-6);
}

std::vector<std::string> LinesOf(HRESULT result, const std::string& source)
{
    EXPECT_TRUE(FAILED(result));
    return Reported(source);
}

// The list

TEST_F(ElementTest, AListHandsOutWhatStandsInIt)
{
    const auto button = NewButton();
    const auto text = Insert<TestText>(Elements());
    for (const auto& [position, element] : {std::pair<LONG, IKVMenuElement*>{1, button.Get()}, {2, text.Get()}}) {
        ComPtr<IKVMenuElement> found;
        EXPECT_EQ(S_OK, Elements().GetElement(position, found.Put()));
        EXPECT_EQ(element, found.Get());
        EXPECT_EQ(S_OK, Elements().FindElement(ValueOf(*element, &IKVMenuElement::get_ID), found.Put()));
        EXPECT_EQ(element, found.Get());
        ComPtr<IKVMenuElementList> list;
        EXPECT_EQ(S_OK, element->GetParentList(list.Put()));
        EXPECT_EQ(&Elements(), list.Get());
    }
    ComPtr<IKVMenuElement> none;
    for (const LONG position : {-1, 0, 3})
        EXPECT_EQ(KV_E_NO_SUCH_ELEMENT, Elements().GetElement(position, none.Put()));
    EXPECT_EQ(E_INVALIDARG, Elements().FindElement(-7, none.Put()));
    EXPECT_EQ(E_INVALIDARG, Elements().RemoveElement(-7, nullptr));
    EXPECT_EQ(2, ValueOf<IKVMenuElementList>(Elements(), &IKVMenuElementList::get_ElementCount));
    for (const auto& [line, result] : {std::pair{"NULL = plCount", Elements().get_ElementCount(nullptr)},
                                       {"NULL = ppElem", Elements().GetElement(1, nullptr)},
                                       {"NULL = ppElem", Elements().FindElement(1, nullptr)},
                                       {"NULL = pElem", Elements().InsertElement(1, nullptr)}})
        EXPECT_EQ(E_POINTER, result) << line;
    EXPECT_THAT(LinesOf(Elements().InsertElement(1, nullptr), "KVMenuElementList"), ElementsAre("NULL = pElem"));
    EXPECT_THAT(LinesOf(Elements().GetElement(1, nullptr), "KVMenuElementList"), ElementsAre("NULL = ppElem"));
}

TEST_F(ElementTest, EditsOfAListAreToldAndUndone)
{
    Show();
    const auto button = NewButton();
    const auto first = Make<TestOverlay>();
    const auto second = Make<TestText>();
    const LONG a = button->ID();
    EXPECT_THAT(Events(), ElementsAre(Event(EVENT_MenuElementAdded, {a})));

    Begin();
    EXPECT_EQ(S_OK, Elements().InsertElement(1, first.Get()));
    EXPECT_EQ(S_OK, Elements().InsertElement(-3, second.Get()));
    EXPECT_EQ(S_OK, Elements().MoveElement(1, 3));
    EXPECT_EQ(S_OK, Elements().MoveElement(2, 2));
    EXPECT_EQ(S_OK, Elements().RemoveElement(a, nullptr));
    End();
    const LONG b = first->ID();
    const LONG c = second->ID();
    EXPECT_THAT(Order(Elements()), ElementsAre(c, b));
    std::vector<ReceivedEvent> told = Events();
    std::erase_if(told, [](const ReceivedEvent& event) { return event.id >= EVENT_MenuElementChanged; });
    EXPECT_THAT(told, ElementsAre(Event(EVENT_MenuElementInserted, {b, 1}), Event(EVENT_MenuElementInserted, {c, -3}),
                                  Event(EVENT_MenuElementMoved, {b, 1, 3}), Event(EVENT_MenuElementMoved, {c, 2, 2}),
                                  Event(EVENT_MenuElementRemoved, {a})));
    for (int round = 0; round < 2; ++round) {
        UndoStep();
        EXPECT_THAT(Order(Elements()), ElementsAre(a));
        EXPECT_FALSE(IsShown(*first) || first->HasEffect());
        RedoStep();
        EXPECT_THAT(Order(Elements()), ElementsAre(c, b));
        EXPECT_TRUE(IsShown(*first) && first->HasEffect() && second->HasEffect());
    }

    Events();
    Begin();
    EXPECT_EQ(S_OK, Elements().Clear());
    End();
    EXPECT_THAT(Events(), ElementsAre(Event(EVENT_MenuElementRemoved, {c}), Event(EVENT_MenuElementRemoved, {b})));
    EXPECT_FALSE(IsShown(*first));
    UndoStep();
    EXPECT_THAT(Order(Elements()), ElementsAre(c, b));
    EXPECT_TRUE(IsShown(*first) && first->HasEffect());
}

TEST_F(ElementTest, WhatAListRefusesLeavesItAsItIs)
{
    const auto button = NewButton();
    const auto element = Insert<TestText>(Elements());
    const auto free = Make<TestText>();
    Events();
    const auto add = [](IKVMenuElementList& list, const GUID& iid) {
        ComPtr<IKVMenuElement> added;
        const HRESULT result = list.AddElement(&iid, added.Put());
        EXPECT_FALSE(added);
        return result;
    };
    EXPECT_EQ(E_INVALIDARG, add(ElementsOf(*button), IKVMenuButton::IID));
    EXPECT_EQ(KV_E_BAD_POSITION, add(Elements(), IKVMenuElement::IID));
    EXPECT_EQ(KV_E_BAD_POSITION, Elements().InsertElement(4, free.Get()));
    // Already somewhere, and a button in itself.
    EXPECT_EQ(E_INVALIDARG, Elements().InsertElement(0, element.Get()));
    EXPECT_EQ(E_INVALIDARG, ElementsOf(*button).InsertElement(0, button.Get()));
    EXPECT_EQ(E_INVALIDARG, ElementsOf(*button).InsertElement(0, element.Get()));
    for (const auto& [from, to] : {std::pair{0, 1}, {3, 1}, {1, 3}, {1, 0}, {3, 3}})
        EXPECT_EQ(KV_E_BAD_POSITION, Elements().MoveElement(from, to)) << from << to;
    EXPECT_THAT(Order(Elements()), ElementsAre(button->ID(), element->ID()));
    EXPECT_EQ(nullptr, free->Parent());
    EXPECT_EQ(0, ElementsOf(*button).ChildCount());
    EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(ElementTest, WhatTheEngineRefusesStaysInItsList)
{
    const auto button = NewButton();
    const auto child = Insert<TestOverlay>(ElementsOf(*button));
    EXPECT_EQ(S_OK, Elements().RemoveElement(button->ID(), nullptr));
    const auto element = Make<TestOverlay>();
    struct Case {
        IKVMenuElement* element;
        /// Whose lines tell of it.
        std::vector<std::string> sources;
    };
    for (const auto& [refused, sources] :
         {Case{element.Get(), {"NXEffect", "MenuElementImpl", "KVMenuElementList"}},
          Case{button.Get(), {"NXEffect", "MenuElementImpl", "MenuButtonImpl", "KVMenuElementList"}}}) {
        const auto engine = Make<FakeEngine>();
        engine->results["AddProductionEffect"] = E_ACCESSDENIED;
        menu->production = Query<IUnknown>(engine->Controlling());
        Events();
        EXPECT_EQ(E_ACCESSDENIED, Elements().InsertElement(0, refused));
        std::vector<std::string> lines;
        for (const std::string& line : ZXUErrorStack())
            lines.push_back(line.substr(0, line.find('(')));
        EXPECT_EQ(sources, lines);
        EXPECT_THAT(Events(), IsEmpty());
        const LONG id = ValueOf(*refused, &IKVMenuElement::get_ID);
        EXPECT_THAT(Order(Elements()), ElementsAre(id));
        EXPECT_EQ(S_OK, refused->SetPosition(0.5, 0.25));
        ExpectNear({0.5, 0.25}, Position(*refused));
        EXPECT_EQ(S_OK, Elements().RemoveElement(id, nullptr));
    }
}

TEST_F(ElementTest, AnEffectThatDoesNotTakeAllGoesAgain)
{
    for (const char* const refuses :
         {"put_StartOffset", "SetGroupID", "SetParameterDocument", "GetParameterDocument"}) {
        menu->production = nullptr;
        const auto button = NewButton();
        const auto text = Insert<CKVMenuText>(ElementsOf(*button));
        EXPECT_EQ(S_OK, text->SetEffectXML(ParseXml(u"<effect><plugin_data kept='1'/></effect>").Get()));
        EXPECT_EQ(S_OK, text->SetPosition(0.5, 0.25));
        const auto engine = Make<FakeEngine>();
        engine->results[refuses] = E_ACCESSDENIED;
        menu->production = Query<IUnknown>(engine->Controlling());
        EXPECT_EQ(E_ACCESSDENIED, Elements().InsertEffects(menu->production.Get())) << refuses;
        EXPECT_TRUE(ZXUErrorStack().front().starts_with("NXEffect(")) << refuses;
        EXPECT_FALSE(text->HasEffect()) << refuses;
        EXPECT_EQ(S_OK, Elements().RemoveEffects()) << refuses;
        ExpectNear({0.5, 0.25}, Position(*text));
        ComPtr<IXMLDOMNode> document;
        EXPECT_EQ(S_OK, text->GetEffectXML(document.Put()));
        EXPECT_NE(std::u16string::npos, XmlOf(*document.Get()).find(u"kept")) << refuses;
        EXPECT_EQ(S_OK, Elements().Clear());
    }
}

TEST_F(ElementTest, AnEngineThatFailsAtOneCallLosesNothing)
{
    const auto newOverlay = [&](CKVMenuElementList& list) {
        const auto overlay = Insert<CKVMenuOverlay>(list);
        EXPECT_EQ(S_OK, overlay->put_Source(nullptr));
        EXPECT_EQ(S_OK,
                  overlay->put_AlphaMask(Bstr(Text<IKVMenuOverlay>(*overlay, &IKVMenuOverlay::get_Source)).Get()));
        EXPECT_EQ(S_OK, overlay->SetSize(0.5F, 0.25F));
        EXPECT_EQ(S_OK, overlay->put_InPoint(1));
        EXPECT_EQ(S_OK, overlay->put_OutPoint(2));
        return ComPtr<IKVMenuElement>(overlay.Get());
    };
    const auto newText = [&](CKVMenuElementList& list) {
        const auto text = Insert<CKVMenuText>(list);
        EXPECT_EQ(S_OK, text->put_String(Bstr(u"Words").Get()));
        return ComPtr<IKVMenuElement>(text.Get());
    };
    const auto stateOf = [](IKVMenuElement& element) {
        ScriptHost script(&element);
        FloatPoint size{};
        element.GetWidthHeight(&size.x, &size.y);
        const bool isText = static_cast<bool>(Query<IKVMenuText>(&element));
        return script.Properties<IKVMenuElement>({"EffectID"}) +
               (isText ? script.Properties<IKVMenuText>() : script.Properties<IKVMenuOverlay>()) +
               std::to_string(Position(element).x) + std::to_string(size.x);
    };
    // The calls that give an effect what is stored, and those that read it back.
    const std::vector<std::string> ofAll{"GetProductionObj", "AddProductionEffect", "put_StartOffset",
                                         "GetParameterDocument", "SetParameterDocument"};
    const std::vector<std::string> ofOverlays{"get_FileName", "put_FileName", "put_Repeat",   "put_UseNativeAudio",
                                              "SetMaskFile",  "put_InPoint",  "put_OutPoint", "SetPanZoom"};
    const std::vector<std::string> readBack{"GetParameterDocument", "get_InPoint",     "get_OutPoint",
                                            "get_FileName",         "GetSourceObject", "get_Rotation"};
    for (const bool isText : {false, true}) {
        const auto run = [&](const std::string& call, bool whileInserted) {
            SCOPED_TRACE((isText ? "text, " : "overlay, ") + call);
            menu->production = nullptr;
            const auto element = isText ? newText(Elements()) : newOverlay(Elements());
            EXPECT_EQ(S_OK, element->SetPosition(0.5F, 0.25F));
            const std::string before = stateOf(*element);
            const auto engine = Make<FakeEngine>();
            engine->document = ParseXml(u"<effect><plugin_data/></effect>");
            if (whileInserted) engine->results[call] = E_ACCESSDENIED;
            menu->production = Query<IUnknown>(engine->Controlling());
            EXPECT_EQ(whileInserted ? E_ACCESSDENIED : S_OK, Elements().InsertEffects(menu->production.Get()));
            engine->results[call] = E_ACCESSDENIED;
            EXPECT_EQ(S_OK, Elements().DetachEffects());
            menu->production = nullptr;
            LONG id = 0;
            EXPECT_EQ(E_UNEXPECTED, element->get_EffectID(&id));
            EXPECT_EQ(before, stateOf(*element));
            EXPECT_EQ(S_OK, Elements().Clear());
        };
        for (const std::string& call : ofAll)
            run(call, true);
        if (isText) continue;
        for (const std::string& call : ofOverlays)
            run(call, true);
        for (const std::string& call : readBack)
            run(call, false);
    }
}

TEST_F(ElementTest, WhatASourceDoesNotHaveIsNoFailureOfItsOverlay)
{
    const auto engine = Make<FakeEngine>();
    engine->document = ParseXml(u"<effect><plugin_data/></effect>");
    engine->results = {{"put_InPoint", E_NOTIMPL}, {"put_OutPoint", E_NOTIMPL}};
    menu->production = Query<IUnknown>(engine->Controlling());
    const auto button = NewButton();
    const auto overlay = Make<CKVMenuOverlay>();
    EXPECT_EQ(S_OK, overlay->put_InPoint(1));
    EXPECT_EQ(S_OK, overlay->put_OutPoint(2));
    Events();
    std::vector<std::string> lines;
    SetErrorReporter([&](std::string_view line) { lines.emplace_back(line); });
    EXPECT_EQ(S_OK, ElementsOf(*button).InsertElement(0, overlay.Get()));
    EXPECT_THAT(lines, IsEmpty());
    const auto told = Events();
    for (const LONG point : {802, 803})
        EXPECT_THAT(told, testing::Contains(Event(EVENT_OverlayChanged, {overlay->ID(), point})));
    EXPECT_EQ(E_NOTIMPL, overlay->put_InPoint(3));
    EXPECT_FALSE(lines.empty());
    SetErrorReporter(nullptr);

    // An effect that cannot be asked is let go all the same.
    engine->results["get_OutPoint"] = E_ACCESSDENIED;
    EXPECT_EQ(S_OK, Elements().DetachEffects());
    EXPECT_TRUE(ZXUErrorStack().back().starts_with("MenuElementImpl("));
    EXPECT_FALSE(overlay->HasEffect());
}

TEST_F(ElementTest, DocumentsDoNotSayWhatSettersRefuse)
{
    const auto button = NewButton();
    EXPECT_EQ(S_OK, button->put_ZOrder(4));
    EXPECT_EQ(S_OK, button->loadXML(XmlElement::Parse("<Button zOrder='-3'><Elements><Overlay zOrder='-1' width='-1' "
                                                      "height='0.5'/></Elements></Button>")
                                        .Get()));
    EXPECT_EQ(4, ValueOf<IKVMenuElement>(*button, &IKVMenuElement::get_ZOrder));
    auto& overlay = dynamic_cast<CKVMenuOverlay&>(*ElementsOf(*button).GetChild(0));
    EXPECT_EQ(0, ValueOf<IKVMenuElement>(overlay, &IKVMenuElement::get_ZOrder));
    const auto untouched = Make<CKVMenuOverlay>();
    float width = 0;
    float height = 0;
    float usual = 0;
    EXPECT_EQ(S_OK, untouched->GetSize(&usual, &height));
    EXPECT_EQ(S_OK, overlay.GetSize(&width, &height));
    EXPECT_EQ((FloatPoint{usual, 0.5}), (FloatPoint{width, height}));
}

TEST_F(ElementTest, ThreadsMeetInButtonsOfTwoMenus)
{
    Show();
    const auto second = Make<TestMenu>();
    second->production = menu->production;
    project->GetChild(2)->List()->Adopt(*second, -1, true);
    const std::array buttons{NewButton(), Make<CKVMenuButton>()};
    EXPECT_EQ(S_OK, second->Elements().InsertElement(0, buttons[1].Get()));
    const auto text = Insert<TestText>(ElementsOf(*buttons[0]));
    Insert<TestText>(ElementsOf(*buttons[1]));
    constexpr int kRounds = 40;
    std::array<std::thread, 3> threads;
    for (std::size_t i = 0; i < 2; ++i)
        threads[i] = std::thread([&, i] {
            for (int round = 0; round < kRounds; ++round)
                EXPECT_EQ(S_OK, buttons[i]->ApplyTo(buttons[1 - i].Get()));
        });
    threads[2] = std::thread([&] {
        for (int round = 0; round < 20 * kRounds; ++round) {
            EXPECT_EQ(S_OK, text->put_Flags(static_cast<ULONG>(round)));
            EXPECT_EQ(S_OK, text->SetPosition(0.5, 0));
            EXPECT_EQ(S_OK, buttons[0]->SetPosition(0, 0.5));
            FloatRect extent{};
            EXPECT_EQ(S_OK, buttons[1]->GetExtent(&extent));
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& button : buttons)
        EXPECT_EQ(1, ElementsOf(*button).ChildCount());
}

// One element

TEST_F(ElementTest, PropertiesOfAnElementAreCheckedAndTold)
{
    const auto element = Insert<TestOverlay>(Elements());
    const LONG id = element->ID();
    Events();
    struct Case {
        const char* what;
        HRESULT (*set)(TestOverlay&);
        HRESULT result;
        /// 0 for no event.
        DISPID told;
    };
    const std::vector<Case> cases{
        {"Tag", [](TestOverlay& e) { return e.put_Tag(2); }, S_OK, 2},
        {"Flags", [](TestOverlay& e) { return e.put_Flags(5); }, S_OK, 3},
        {"IsDirty", [](TestOverlay& e) { return e.put_IsDirty(1); }, S_OK, 11},
        {"TemplateID", [](TestOverlay& e) { return e.put_TemplateID(-9); }, S_OK, 10},
        {"ZOrder below 0", [](TestOverlay& e) { return e.put_ZOrder(-1); }, E_INVALIDARG, 0},
        {"ZOrder", [](TestOverlay& e) { return e.put_ZOrder(3); }, S_OK, 501},
        {"Rotation", [](TestOverlay& e) { return e.put_Rotation(30); }, S_OK, 500},
        {"no Rotation", [](TestOverlay& e) { return e.put_Rotation(kNaN); }, E_INVALIDARG, 0},
        {"place", [](TestOverlay& e) { return e.SetPosition(0.5, -0.25); }, S_OK, 504},
        {"no place", [](TestOverlay& e) { return e.SetPosition(0, kNaN); }, E_INVALIDARG, 0},
        {"size below 0", [](TestOverlay& e) { return e.SetWidthHeight(1, -1); }, E_INVALIDARG, 0},
        {"no size", [](TestOverlay& e) { return e.SetWidthHeight(kNaN, 1); }, E_INVALIDARG, 0},
        {"size", [](TestOverlay& e) { return e.SetWidthHeight(1, 1); }, S_OK, 512},
        {"time", [](TestOverlay& e) { return e.SetTimeOffsets(0, 1); }, E_POINTER, 0},
        {"no time", [](TestOverlay& e) { return e.SetTimeOffsets(0, kNaN); }, E_INVALIDARG, 0},
    };
    for (const auto& [what, set, result, told] : cases) {
        element->Lock(false);
        EXPECT_EQ(KV_E_LOCKED, set(*element)) << what;
        element->Unlock(false);
        EXPECT_EQ(result, set(*element)) << what;
        const auto expected =
            told ? std::vector{Event(EVENT_OverlayChanged, {id, told})} : std::vector<ReceivedEvent>{};
        EXPECT_EQ(expected, Events()) << what;
    }
    EXPECT_EQ(0, menu->marks);
    EXPECT_EQ(2u, ValueOf<IKVMenuElement>(*element, &IKVMenuElement::get_Tag));
    EXPECT_EQ(5u, ValueOf<IKVMenuElement>(*element, &IKVMenuElement::get_Flags));
    EXPECT_EQ(VARIANT_FALSE, ValueOf<IKVMenuElement>(*element, &IKVMenuElement::get_IsDirty));
    EXPECT_EQ(-9, ValueOf<IKVMenuElement>(*element, &IKVMenuElement::get_TemplateID));
    EXPECT_EQ(3, ValueOf<IKVMenuElement>(*element, &IKVMenuElement::get_ZOrder));
    EXPECT_EQ(30, Rotation(*element));
    ExpectNear({0.5, -0.25}, Position(*element));
    float width = 0;
    float height = 0;
    EXPECT_EQ(S_OK, element->GetWidthHeight(&width, &height));
    EXPECT_EQ((FloatPoint{2, 2}), (FloatPoint{width, height}));
    LONG effect = 7;
    EXPECT_EQ(E_UNEXPECTED, element->get_EffectID(&effect));
}

TEST_F(ElementTest, NullIsReportedByItsName)
{
    const auto element = Insert<TestText>(Elements());
    float f = 0;
    const std::vector<std::pair<const char*, std::function<HRESULT()>>> cases{
        {"pID", [&] { return element->get_ID(nullptr); }},
        {"pdwTag", [&] { return element->get_Tag(nullptr); }},
        {"pdwFlags", [&] { return element->get_Flags(nullptr); }},
        {"pbIsDirty", [&] { return element->get_IsDirty(nullptr); }},
        {"pAngleDeg", [&] { return element->get_Rotation(nullptr); }},
        {"pzOrder", [&] { return element->get_ZOrder(nullptr); }},
        {"pX", [&] { return element->GetPosition(nullptr, &f); }},
        {"pY", [&] { return element->GetPosition(&f, nullptr); }},
        {"pVertexList", [&] { return element->GetBoundingBox(nullptr); }},
        {"pRect", [&] { return element->GetExtent(nullptr); }},
        {"w", [&] { return element->GetWidthHeight(nullptr, &f); }},
        {"h", [&] { return element->GetWidthHeight(&f, nullptr); }},
        {"pID", [&] { return element->get_TemplateID(nullptr); }},
        {"ppNewElem", [&] { return NewButton()->Copy(nullptr); }},
    };
    for (const auto& [name, call] : cases) {
        EXPECT_EQ(E_POINTER, call()) << name;
        const auto lines = ZXUErrorStack();
        ASSERT_EQ(1u, lines.size()) << name;
        EXPECT_TRUE(lines[0].ends_with(std::string("): *** Error NULL = ") + name + "\n")) << lines[0];
    }
}

TEST_F(ElementTest, AnEffectHoldsThePlaceAndGivesItBack)
{
    Show();
    const auto element = Make<TestOverlay>();
    EXPECT_EQ(S_OK, element->SetPosition(0.25, 0.5));
    EXPECT_EQ(S_OK, element->put_Rotation(20));
    EXPECT_EQ(S_OK, Elements().InsertElement(0, element.Get()));
    EXPECT_TRUE(IsShown(*element));
    EXPECT_NE(0, ValueOf<IKVMenuElement>(*element, &IKVMenuElement::get_EffectID));
    EXPECT_EQ(S_FALSE, element->InsertEffect(menu->production.Get(), -1, kHighlightTag));
    EXPECT_EQ((FloatPoint{0.25, 0.5}), Position(*element));
    EXPECT_EQ(20, Rotation(*element));

    EXPECT_EQ(S_OK, element->SetWidthHeight(1, 1));
    EXPECT_EQ(S_OK, element->put_Rotation(90));
    EXPECT_EQ(S_OK, element->SetPosition(0, 0));
    FloatRect extent{};
    EXPECT_EQ(S_OK, element->GetExtent(&extent));
    ExpectNear({-0.375F, 0.666667F}, {extent.fLeft, extent.fTop});
    menu->isWide = true;
    EXPECT_EQ(S_OK, element->GetExtent(&extent));
    ExpectNear({-0.28125F, 0.888889F}, {extent.fLeft, extent.fTop});
    float width = 0;
    float height = 0;
    EXPECT_EQ(S_OK, element->GetWidthHeight(&width, &height));
    EXPECT_EQ((FloatPoint{1, 1}), (FloatPoint{width, height}));
    EXPECT_EQ(S_OK, element->SetTimeOffsets(0.5, 2));
    double start = 0;
    double end = 0;
    EXPECT_EQ(S_OK, element->getTimeOffsets(start, end));
    EXPECT_EQ((std::pair{0.5, 2.0}), (std::pair{start, end}));

    EXPECT_EQ(S_OK, element->SetPosition(0.75, 0));
    EXPECT_EQ(S_OK, Elements().RemoveElement(element->ID(), nullptr));
    EXPECT_FALSE(IsShown(*element));
    EXPECT_EQ((FloatPoint{0.75, 0}), Position(*element));
    EXPECT_EQ(90, Rotation(*element));

    // What a player draws itself has no effect.
    EXPECT_EQ(S_OK, element->put_Tag(kHighlightTag));
    EXPECT_EQ(S_OK, Elements().InsertElement(0, element.Get()));
    EXPECT_FALSE(IsShown(*element));
    EXPECT_EQ(S_OK, Elements().AttachEffects(menu->production.Get()));
}

TEST_F(ElementTest, UndoOfAMoveIsTheStoryboards)
{
    Show();
    const auto element = Insert<TestOverlay>(Elements());
    Begin();
    EXPECT_EQ(S_OK, element->put_Flags(1));
    EXPECT_EQ(S_OK, element->SetPosition(0.5, 0.5));
    End();
    UndoStep();
    EXPECT_EQ(FloatPoint{}, Position(*element));
    EXPECT_EQ(0u, ValueOf<IKVMenuElement>(*element, &IKVMenuElement::get_Flags));
    RedoStep();
    EXPECT_EQ((FloatPoint{0.5, 0.5}), Position(*element));
    // Nothing of it is left behind for an element without effect.
    UndoStep();
    EXPECT_EQ(S_OK, Elements().RemoveEffects());
    EXPECT_EQ(FloatPoint{}, Position(*element));
    Begin();
    EXPECT_EQ(S_OK, element->SetPosition(0.125, 0));
    End();
    UndoStep();
    EXPECT_EQ(FloatPoint{}, Position(*element));
}

TEST_F(ElementTest, AStepTakesInWhatHappensToEffects)
{
    // The menus of a project open their storyboards' blocks with a step.
    ComPtr<IKVMenu> shown;
    ASSERT_EQ(S_OK, project->AddMenu(0, shown.Put()));
    ASSERT_EQ(S_OK, shown->GetProduction(menu->production.Put()));
    const auto list = Query<IKVMenuElementList>(shown);
    const auto element = Make<TestOverlay>();
    for (const auto& edit : std::vector<std::function<HRESULT()>>{
             [&] { return list->InsertElement(1, element.Get()); }, [&] { return element->SetPosition(0.5, 0); },
             [&] { return list->RemoveElement(element->ID(), nullptr); }}) {
        EXPECT_EQ(S_OK, project->BeginUndo(nullptr));
        EXPECT_EQ(S_OK, edit());
        End();
    }
    for (int round = 0; round < 2; ++round) {
        UndoStep();
        EXPECT_TRUE(IsShown(*element) && element->HasEffect());
        EXPECT_EQ((FloatPoint{0.5, 0}), Position(*element));
        UndoStep();
        EXPECT_EQ(FloatPoint{}, Position(*element));
        UndoStep();
        EXPECT_FALSE(IsShown(*element) || element->HasEffect() || element->Parent());
        RedoStep();
        EXPECT_TRUE(IsShown(*element) && element->HasEffect());
        RedoStep();
        EXPECT_EQ((FloatPoint{0.5, 0}), Position(*element));
        RedoStep();
        EXPECT_FALSE(IsShown(*element) || element->Parent());
    }
}

TEST_F(ElementTest, ARemovedElementIsWhatItWasAlsoByRedo)
{
    ComPtr<IKVMenu> shown;
    ASSERT_EQ(S_OK, project->AddMenu(0, shown.Put()));
    const auto inMenu = Query<IKVMenuElementList>(shown);
    for (const bool inButton : {false, true}) {
        ComPtr<IKVMenuElement> removed;
        ComPtr<IKVMenuElement> element;
        ASSERT_EQ(S_OK, inMenu->AddElement(inButton ? &IKVMenuButton::IID : &IKVMenuText::IID, removed.Put()));
        element = removed;
        if (inButton) {
            const auto list = Query<IKVMenuElementList>(removed);
            ASSERT_EQ(S_OK, list->AddElement(&IKVMenuText::IID, element.Put()));
        }
        const auto text = Query<IKVMenuText>(element);
        EXPECT_EQ(S_OK, project->BeginUndo(nullptr));
        EXPECT_EQ(S_OK, removed->SetPosition(0.5, 0));
        EXPECT_EQ(S_OK, element->put_Rotation(30));
        EXPECT_EQ(S_OK, text->put_String(Bstr(u"new").Get()));
        EXPECT_EQ(S_OK, inMenu->RemoveElement(ValueOf(*removed.Get(), &IKVMenuElement::get_ID), nullptr));
        End();
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ((FloatPoint{0.5, 0}), Position(*removed.Get()));
            EXPECT_EQ(30, Rotation(*element.Get()));
            EXPECT_EQ(u"new", Text(*text.Get(), &IKVMenuText::get_String));
            UndoStep();
            EXPECT_EQ(FloatPoint{}, Position(*removed.Get()));
            EXPECT_EQ(0, Rotation(*element.Get()));
            EXPECT_NE(u"new", Text(*text.Get(), &IKVMenuText::get_String));
            RedoStep();
        }
    }
}

TEST_F(ElementTest, AnElementThatChangesItsListInAStepIsUndoneAndRedone)
{
    enum class Way { Same, Button, FromNative };
    const auto idOf = [](IKVMenuElement& element) { return ValueOf(element, &IKVMenuElement::get_ID); };
    for (const Way way : {Way::Same, Way::Button, Way::FromNative}) {
        for (const bool snapshot : {false, true}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(way) << snapshot);
            ComPtr<IKVMenu> from;
            ComPtr<IKVMenu> to;
            ComPtr<IKVMenuElement> button;
            ComPtr<IKVMenuElement> element;
            ASSERT_EQ(S_OK, project->AddMenu(0, from.Put()));
            to = from;
            if (way == Way::FromNative) {
                ASSERT_EQ(S_OK, from->SetNative(VARIANT_TRUE));
                ASSERT_EQ(S_OK, project->AddMenu(0, to.Put()));
            }
            const auto left = Query<IKVMenuElementList>(from);
            ASSERT_EQ(S_OK, Query<IKVMenuElementList>(to)->AddElement(&IKVMenuButton::IID, button.Put()));
            ComPtr<IKVMenuElement> anchor;
            ASSERT_EQ(S_OK, Query<IKVMenuElementList>(button)->AddElement(&IKVMenuOverlay::IID, anchor.Put()));
            ASSERT_EQ(S_OK, button->SetPosition(0.25, 0));
            ASSERT_EQ(S_OK, left->AddElement(&IKVMenuText::IID, element.Put()));
            const auto text = Query<IKVMenuText>(element);
            ASSERT_EQ(S_OK, text->put_String(Bstr(u"old").Get()));
            ASSERT_EQ(S_OK, element->SetPosition(0.5, 0.25));
            ASSERT_EQ(S_OK, element->put_Rotation(30));
            const auto entered = way == Way::Same     ? left
                                 : way == Way::Button ? Query<IKVMenuElementList>(button)
                                                      : Query<IKVMenuElementList>(to);
            const auto expect = [&](std::u16string_view words, FloatPoint place, float angle) {
                EXPECT_EQ(words, Text(*text.Get(), &IKVMenuText::get_String));
                EXPECT_EQ(place, Position(*element.Get()));
                EXPECT_EQ(angle, Rotation(*element.Get()));
            };
            const auto stands = [&](const ComPtr<IKVMenuElementList>& list) {
                ComPtr<IKVMenuElement> found;
                return list->FindElement(idOf(*element.Get()), found.Put()) == S_OK;
            };
            EXPECT_EQ(S_OK, snapshot ? project->TakeUndoSnapshot(nullptr) : project->BeginUndo(nullptr));
            EXPECT_EQ(S_OK, left->RemoveElement(idOf(*element.Get()), nullptr));
            EXPECT_EQ(S_OK, entered->InsertElement(0, element.Get()));
            EXPECT_EQ(S_OK, element->SetPosition(0.125, 0));
            EXPECT_EQ(S_OK, element->put_Rotation(20));
            EXPECT_EQ(S_OK, text->put_String(Bstr(u"new").Get()));
            EXPECT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
            for (int round = 0; round < 2; ++round) {
                UndoStep();
                EXPECT_TRUE(stands(left));
                expect(u"old", {0.5, 0.25}, 30);
                RedoStep();
                EXPECT_TRUE(stands(entered));
                expect(u"new", {0.125, 0}, 20);
            }
            EXPECT_EQ(S_OK, element->put_Rotation(11)) << "its effect is the one that is shown";
            expect(u"new", {0.125, 0}, 11);
        }
    }
}

TEST_F(ElementTest, EditsOfTextsAreUndoneAndRedoneWithTheMode)
{
    for (const VARIANT_BOOL native : {VARIANT_TRUE, VARIANT_FALSE}) {
        for (const bool before : {false, true}) {
            SCOPED_TRACE(testing::Message() << native << before);
            ComPtr<IKVMenu> shown;
            ComPtr<IKVMenuElement> element;
            ASSERT_EQ(S_OK, project->AddMenu(0, shown.Put()));
            ASSERT_EQ(S_OK, Query<IKVMenuElementList>(shown)->AddElement(&IKVMenuText::IID, element.Put()));
            const auto text = Query<IKVMenuText>(element);
            ASSERT_EQ(S_OK, text->put_String(Bstr(u"old").Get()));
            const auto edit = [&](bool now) { return now ? text->put_String(Bstr(u"new").Get()) : S_OK; };
            ASSERT_EQ(S_OK, native == VARIANT_FALSE ? shown->SetNative(VARIANT_TRUE) : S_OK);
            Begin();
            EXPECT_EQ(S_OK, edit(before));
            EXPECT_EQ(S_OK, shown->SetNative(native));
            EXPECT_EQ(S_OK, edit(!before));
            End();
            for (int round = 0; round < 2; ++round) {
                UndoStep();
                EXPECT_EQ(u"old", Text(*text.Get(), &IKVMenuText::get_String));
                RedoStep();
                EXPECT_EQ(u"new", Text(*text.Get(), &IKVMenuText::get_String));
            }
        }
    }
}

TEST_F(ElementTest, AnElementWithAnotherIDKeepsItsEffectAndItsPlace)
{
    ComPtr<IKVMenu> shown;
    ASSERT_EQ(S_OK, project->AddMenu(0, shown.Put()));
    ComPtr<IKVMenuElement> button;
    ComPtr<IKVMenuElement> text;
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(shown)->AddElement(&IKVMenuButton::IID, button.Put()));
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(button)->AddElement(&IKVMenuText::IID, text.Put()));
    ASSERT_EQ(S_OK, button->SetPosition(0.5, 0.25));
    ComPtr<IUnknown> production;
    ASSERT_EQ(S_OK, shown->GetProduction(production.Put()));
    const auto idOf = [](IKVMenuElement& element) { return ValueOf(element, &IKVMenuElement::get_ID); };
    /// Where the storyboard has the text, and for which button.
    const auto group = [&] {
        ComPtr<IUnknown> objects;
        ComPtr<IUnknown> effect;
        Query<IZXEProductionData>(production)->GetProductionObj(objects.Put());
        Query<IProductionObjects>(objects)->GetEffect(idOf(*text.Get()), 0, effect.Put());
        return effect ? ValueOf(*Query<IEffectInfo>(effect).Get(), &IEffectInfo::get_GroupID) : -1;
    };
    const LONG oldButton = idOf(*button.Get());
    const LONG oldText = idOf(*text.Get());
    Begin();
    EXPECT_EQ(S_OK, Query<IKVMenuButton>(button)->ResetID());
    EXPECT_EQ(S_OK, text->set_ID(100'000'000));
    End();
    const LONG newButton = idOf(*button.Get());
    EXPECT_NE(oldButton, newButton);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(newButton, group());
        EXPECT_EQ((FloatPoint{0.5, 0.25}), Position(*button.Get()));
        UndoStep();
        EXPECT_EQ((std::pair{oldButton, oldText}), (std::pair{idOf(*button.Get()), idOf(*text.Get())}));
        EXPECT_EQ(oldButton, group());
        EXPECT_EQ((FloatPoint{0.5, 0.25}), Position(*button.Get()));
        RedoStep();
        EXPECT_EQ(100'000'000, idOf(*text.Get()));
    }
}

TEST_F(ElementTest, UndoAndRedoReportWhatTheyChange)
{
    ComPtr<IKVMenu> shown;
    ComPtr<IKVTitle> title;
    ComPtr<IKVMenuElement> button;
    ComPtr<IKVMenuElement> text;
    ComPtr<IUnknown> group;
    ASSERT_EQ(S_OK, project->AddMenu(0, shown.Put()));
    ASSERT_EQ(S_OK, project->AddTitle(0, title.Put()));
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(shown)->AddElement(&IKVMenuButton::IID, button.Put()));
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(button)->AddElement(&IKVMenuText::IID, text.Put()));
    ASSERT_EQ(S_OK, shown->AddtoGroup(1, 0));
    ASSERT_EQ(S_OK, shown->GetGroupIDByElementID(1, group.Put()));
    const LONG menuID = ValueOf(*shown.Get(), &IKVMenu::get_ID);
    const LONG titleID = ValueOf(*title.Get(), &IKVTitle::get_ID);
    const LONG buttonID = ValueOf(*button.Get(), &IKVMenuElement::get_ID);
    const LONG textID = ValueOf(*text.Get(), &IKVMenuElement::get_ID);
    const LONG groupID = ValueOf(*Query<IGroupInfoNode>(group).Get(), &IGroupInfoNode::get_ID);

    const auto reported = [&] {
        Events();
        project->Dispatch(CAsyncEventDispatcher::kHeartbeat, 0, 0, 0);
        std::vector<LONG> ids;
        for (const ReceivedEvent& event : sink->Take())
            if (event.id == EVENT_ProjectChangeList) ids = event.arguments;
        return ids;
    };
    const std::array<RGBEntry, 16> palette{};
    const ButtonLinks links{1, 2, 3, 4};
    DiscCommandParams command{PlayMenu, 1, 0, nullptr};
    const struct {
        const char* name;
        std::function<HRESULT()> edit;
        std::vector<LONG> ids;
    } kRows[] = {
        {"project", [&] { return project->put_Label(Bstr(u"x").Get()); }, {}},
        {"title", [&] { return title->put_Label(Bstr(u"x").Get()); }, {titleID}},
        {"encoding", [&] { return Query<IKVEncodingParams>(title)->put_SyncToProject(VARIANT_FALSE); }, {titleID}},
        {"commands", [&] { return Query<IKVCommandList>(title)->SetCommandList(1, &command); }, {titleID}},
        {"menu", [&] { return shown->put_Label(Bstr(u"x").Get()); }, {menuID}},
        {"palette", [&] { return shown->SetPalette(palette.data()); }, {menuID}},
        {"links", [&] { return Query<IKVMenuButton>(button)->put_ButtonLinks(&links); }, {buttonID}},
        {"group", [&] { return Query<IGroupInfoNode>(group)->SetGroupRotation(1); }, {groupID}},
        {"group's end", [&] { return shown->RemoveGroup(groupID); }, {groupID}},
        {"flags", [&] { return text->put_Flags(7); }, {textID}},
        {"effect", [&] { return text->SetPosition(0.5, 0); }, {textID}},
        {"string", [&] { return Query<IKVMenuText>(text)->put_String(Bstr(u"x").Get()); }, {textID}},
        {"end", [&] { return Query<IKVMenuElementList>(button)->RemoveElement(textID, nullptr); }, {textID}},
        {"title's end", [&] { return project->RemoveTitle(titleID, nullptr); }, {titleID}},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(S_OK, project->BeginUndo(nullptr));
        EXPECT_EQ(S_OK, row.edit()) << row.name;
        End();
        reported();
        UndoStep();
        EXPECT_EQ(row.ids, reported()) << row.name;
        RedoStep();
        EXPECT_EQ(row.ids, reported()) << row.name;
    }
}

/// Counts how often it is to bind its effect, and wants to be bound again.
class UnboundNode final : public CProjectNode, public Object<IUnknown> {
public:
    UnboundNode() : CProjectNode(typeOverlay) {}
    HRESULT AttachEffect() override
    {
        SharedUndoContext().attachNodes.Add(*this);
        return ++attempts, E_FAIL;
    }
    IUnknown* Identity() override { return Controlling(); }
    void Attributes(AttributeArchive&) override {}

    int attempts = 0;
};

TEST(AttachListTest, IsEmptyWhenItHasRun)
{
    const auto node = Make<UnboundNode>();
    SharedUndoContext().attachNodes.Add(*node);
    for (int run = 0; run < 2; ++run) {
        SharedUndoContext().attachNodes.Run();
        EXPECT_EQ(1, node->attempts);
    }
}

// An element in a button

TEST_F(ElementTest, PlacesInAButtonAreRelativeToItsAnchor)
{
    Show();
    const auto button = NewButton();
    EXPECT_EQ(S_OK, button->SetPosition(0.2F, 0.1F));
    const auto anchor = Insert<TestOverlay>(ElementsOf(*button));
    const auto other = Insert<TestText>(ElementsOf(*button));
    ExpectNear({0.2F, 0.1F}, Absolute(*anchor));
    EXPECT_EQ(S_OK, other->setRawPosition({0.5, 0.1F}));
    ExpectNear({0.3F, 0}, Position(*other));
    EXPECT_EQ(S_OK, other->SetPosition(0.3F, 0));
    ExpectNear({0.5, 0.1F}, Absolute(*other));
    ComPtr<IKVMenuElement> found;
    EXPECT_EQ(S_OK, button->GetAnchorElement(found.Put()));
    EXPECT_EQ(anchor.Get(), found.Get());

    // The angle is absolute in the effect, too.
    EXPECT_EQ(S_OK, button->put_Rotation(10));
    EXPECT_EQ(S_OK, other->put_Rotation(30));
    EXPECT_EQ(30, Rotation(*other));
    EXPECT_EQ(S_OK, button->put_Rotation(0));
    EXPECT_EQ(40, Rotation(*other));

    // The button goes, and comes back, with its elements.
    Events();
    menu->marks = 0;
    EXPECT_EQ(S_OK, button->SetPosition(0.2F, 0.1F));
    EXPECT_THAT(Events(), IsEmpty());
    Begin();
    EXPECT_EQ(S_OK, button->SetPosition(0.6F, 0.1F));
    EXPECT_EQ(S_OK, button->Move(0, 0.5F));
    End();
    EXPECT_EQ(3, menu->marks);
    ExpectNear({0.9F, 0.6F}, Absolute(*other));
    UndoStep();
    ExpectNear({0.5, 0.1F}, Absolute(*other));
    ExpectNear({0.2F, 0.1F}, Position(*button));
    RedoStep();
    ExpectNear({0.6F, 0.6F}, Position(*button));
    const std::vector<std::pair<std::function<HRESULT()>, std::function<HRESULT()>>> ways{
        {[&] { return Elements().RemoveElement(button->ID(), nullptr); },
         [&] { return Elements().InsertElement(0, button.Get()); }},
        {[&] { return Elements().RemoveEffects(); }, [&] { return Elements().InsertEffects(menu->production.Get()); }},
        {[&] { return Elements().DetachEffects(); }, [&] { return Elements().AttachEffects(menu->production.Get()); }},
    };
    for (const auto& [go, comeBack] : ways) {
        EXPECT_EQ(S_OK, go());
        EXPECT_FALSE(anchor->HasEffect() || other->HasEffect());
        ExpectNear({0.6F, 0.6F}, Position(*button));
        ExpectNear({}, Position(*anchor));
        ExpectNear({0.3F, 0}, Position(*other));
        EXPECT_EQ(S_OK, comeBack());
        ExpectNear({0.6F, 0.6F}, Absolute(*anchor));
        ExpectNear({0.9F, 0.6F}, Absolute(*other));
    }

    // Without its anchor the button stands where the next one does.
    EXPECT_EQ(S_OK, ElementsOf(*button).RemoveElement(anchor->ID(), nullptr));
    ExpectNear({0.9F, 0.6F}, Position(*button));
    EXPECT_EQ(S_OK, ElementsOf(*button).RemoveElement(other->ID(), nullptr));
    ExpectNear({0.9F, 0.6F}, Position(*button));
    EXPECT_EQ(KV_E_NO_ANCHOR, button->GetAnchorElement(found.Put()));
}

} // namespace
} // namespace kv::test
