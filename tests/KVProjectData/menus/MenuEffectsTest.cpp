#include "KVProjectData/menus/MenuSupport.h"

#include <cmath>

namespace kv::test {
namespace {

/// A menu with an overlay and, behind it, a button that holds one.
class MenuEffectsTest : public MenuTest {
protected:
    void SetUp() override
    {
        MenuTest::SetUp();
        ASSERT_EQ(S_OK, menu->put_Background(wide.Get()));
        overlay = AddOverlay(menu.Get());
        ComPtr<IKVMenuElement> made;
        ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuButton::IID, made.Put()));
        button = Query<IKVMenuButton>(made);
        inner = AddOverlay(button.Get());
        ASSERT_EQ(S_OK, overlay->SetPosition(0.5F, 0.25F));
    }

    static ComPtr<IKVMenuElement> AddOverlay(IUnknown* owner)
    {
        ComPtr<IKVMenuElement> made;
        EXPECT_EQ(S_OK, Query<IKVMenuElementList>(owner)->AddElement(&IKVMenuOverlay::IID, made.Put()));
        return made;
    }

    static LONG IDOf(const ComPtr<IKVMenuElement>& element) { return ValueOf(*element.Get(), &IKVMenuElement::get_ID); }

    /// Where the overlay stands, the effects that the elements have, and how many the production holds.
    std::string Told()
    {
        float x = 0;
        float y = 0;
        EXPECT_EQ(S_OK, overlay->GetPosition(&x, &y));
        std::string text = std::to_string(std::lround(x * 100)) + "," + std::to_string(std::lround(y * 100));
        for (const auto& element : {overlay, inner}) {
            LONG effect = 0;
            text += element->get_EffectID(&effect) == S_OK && effect > 0 ? " bound" : " free";
        }
        std::size_t count = 0;
        if (const auto production = Production()) {
            const std::string held = Held(production);
            for (auto at = held.find("<Effect "); at != held.npos; at = held.find("<Effect ", at + 1))
                ++count;
        }
        return text + ' ' + std::to_string(count);
    }

    ComPtr<IKVMenuElement> overlay;
    ComPtr<IKVMenuButton> button;
    ComPtr<IKVMenuElement> inner;
};

TEST_F(MenuEffectsTest, ElementsAreBoundByTheMode)
{
    const std::string plain = "50,25 bound bound 2";
    const std::string native = "50,25 free free 0";
    EXPECT_EQ(plain, Told());
    for (const bool inStep : {false, true}) {
        if (inStep) {
            ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
        }
        EXPECT_EQ(S_OK, SetNative(true));
        EXPECT_EQ(native, Told());
        if (!inStep) {
            EXPECT_EQ(S_OK, SetNative(false));
            EXPECT_EQ(plain, Told());
        }
    }
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(plain, Told());
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(native, Told());
    }
    EXPECT_EQ(S_OK, project->UndoOperation());

    // The other way, and back before the step ends.
    ASSERT_EQ(S_OK, SetNative(true));
    for (const bool commit : {true, false}) {
        ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
        EXPECT_EQ(S_OK, SetNative(false));
        EXPECT_EQ(S_OK, overlay->SetPosition(0.75F, 0.0F));
        ASSERT_EQ(S_OK, project->EndUndo(commit ? VARIANT_TRUE : VARIANT_FALSE));
        if (commit) {
            EXPECT_EQ("75,0 bound bound 2", Told());
            EXPECT_EQ(S_OK, project->UndoOperation());
        }
        EXPECT_EQ("50,25 free free 0", Told()) << commit;
    }
    EXPECT_EQ(S_OK, SetNative(false));
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    EXPECT_EQ(S_OK, SetNative(true));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_FALSE));
    EXPECT_EQ(plain, Told()) << "cancelled";
}

TEST_F(MenuEffectsTest, WhatTheEngineDoesNotTakeStaysWithTheElement)
{
    const auto picture = Query<IKVMenuOverlay>(overlay);
    const auto told = [&] {
        return std::pair{ValueOf(*picture.Get(), &IKVMenuOverlay::get_InPoint),
                         ValueOf(*picture.Get(), &IKVMenuOverlay::get_OutPoint)};
    };
    ASSERT_EQ(S_OK, SetNative(true));
    EXPECT_EQ(S_OK, picture->put_Source(wide.Get()));
    // The clip is shorter.
    EXPECT_EQ(S_OK, picture->put_InPoint(12));
    EXPECT_EQ(S_OK, picture->put_OutPoint(20));
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_TRUE(FAILED(SetNative(false)));
        EXPECT_EQ("50,25 free free 0", Told());
        EXPECT_EQ((std::pair{12.0, 20.0}), told());
        EXPECT_EQ(wide.View(), Text(*picture.Get(), &IKVMenuOverlay::get_Source));
    }
    EXPECT_EQ(S_OK, picture->put_InPoint(0.5));
    EXPECT_EQ(S_OK, picture->put_OutPoint(1.5));
    EXPECT_EQ(S_OK, SetNative(false));
    EXPECT_EQ("50,25 bound bound 2", Told());
    EXPECT_EQ((std::pair{0.5, 1.5}), told());
}

TEST_F(MenuEffectsTest, TellsOfEffectsThatTheEngineChanged)
{
    const auto notify = Query<IZXEProductionNotify>(Production());
    constexpr ULONG kEffectChanged = 6;
    constexpr ULONG kEffectsInvalidated = 7;
    const LONG buttonID = IDOf(button);
    Events();
    EXPECT_EQ(S_OK, notify->Notify(kEffectChanged, IDOf(overlay), 0));
    EXPECT_EQ(S_OK, notify->Notify(kEffectChanged, IDOf(inner), buttonID));
    EXPECT_EQ(S_OK, notify->Notify(kEffectChanged, IDOf(inner), 0));
    EXPECT_EQ(S_OK, notify->Notify(kEffectChanged, buttonID, 0));
    EXPECT_EQ(
        (std::vector{Event(EVENT_OverlayChanged, {IDOf(overlay), 0}), Event(EVENT_OverlayChanged, {IDOf(inner), 0})}),
        Events());
    EXPECT_EQ(S_OK, notify->Notify(kEffectsInvalidated, 0, 0));
    EXPECT_EQ("50,25 bound bound 2", Told());
}

} // namespace
} // namespace kv::test
