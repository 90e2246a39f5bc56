#include "KVProjectData/menus/MenuSupport.h"
#include "support/FakeEngine.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace kv::test {
namespace {

constexpr HRESULT kFailure = MakeResult(0xC2000099);

class MenuModeTest : public MenuTest {
protected:
    MenuModeTest() { folder.Write("song.wav", "la la la"); }

    const Bstr song = folder.File("song.wav");

    void Fill()
    {
        ASSERT_EQ(S_OK, menu->put_Background(wide.Get()));
        ASSERT_EQ(S_OK, menu->put_Audio(song.Get()));
        ASSERT_EQ(S_OK, menu->put_Duration(1.0));
    }

    /// Whether a production can be used.
    static bool IsOpen(const ComPtr<IUnknown>& production)
    {
        return Query<IEditData>(production)->DeleteProductionAudio(-1) != ZXE_E_NOT_OPEN;
    }

    /// Mode, what is played, and the sources that both productions hold.
    std::string Told()
    {
        std::string text = ValueOf(*menu.Get(), &IKVMenu::get_IsNative) == VARIANT_TRUE ? "native" : "plain";
        for (const auto& told : {Background(), Audio()})
            text += ' ' + std::filesystem::path(told).filename().string();
        text += ' ' + std::to_string(Duration());
        for (const auto& production : {Production(), BackgroundProduction()})
            text += production ? (IsOpen(production) ? " open" : " closed") : " none";
        return text;
    }
};

TEST_F(MenuModeTest, PlaysWhereTheModeSays)
{
    Fill();
    EXPECT_EQ("plain wide.y4m song.wav 1.000000 open none", Told());
    Events();
    const auto before = Production();
    EXPECT_EQ(S_FALSE, SetNative(false));
    EXPECT_EQ(S_OK, SetNative(true));
    EXPECT_EQ(S_FALSE, SetNative(true));
    EXPECT_EQ("native wide.y4m song.wav 1.000000 none open", Told());
    EXPECT_FALSE(IsOpen(before)) << "nothing brings it back";
    EXPECT_DOUBLE_EQ(16.0 / 9.0, Ratio(BackgroundProduction()));
    EXPECT_TRUE(Events().empty());

    // Native, the fields are told, and the background production follows but for the duration.
    EXPECT_EQ(S_OK, menu->put_Background(narrow.Get()));
    EXPECT_EQ(S_OK, menu->put_Audio(nullptr));
    EXPECT_EQ(S_OK, menu->put_Duration(12.5));
    EXPECT_EQ((std::vector{Changed(301), Changed(302), Changed(308)}), Events());
    EXPECT_EQ("native narrow.y4m  12.500000 none open", Told());
    EXPECT_EQ(narrow.View(), Text(*menu, &IKVMenu::GetMenuBackgroundPanelSource));
    EXPECT_EQ(S_OK, menu->AdjustNativeDuration());
    EXPECT_EQ((std::vector{Changed(308)}), Events());
    EXPECT_DOUBLE_EQ(2.0, Duration());

    const auto background = BackgroundProduction();
    EXPECT_EQ(S_OK, SetNative(false));
    EXPECT_EQ("plain narrow.y4m  2.000000 open none", Told());
    EXPECT_FALSE(IsOpen(background));
    EXPECT_EQ(S_FALSE, menu->AdjustNativeDuration());
}

TEST_F(MenuModeTest, SnapshotsBringBackModesWithWhatTheyShowed)
{
    Fill();
    ComPtr<IKVMenuElement> text;
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuText::IID, text.Put()));
    const auto told = [&] {
        float x = 0;
        float y = 0;
        EXPECT_EQ(S_OK, text->GetPosition(&x, &y));
        Bstr panel;
        menu->GetMenuBackgroundPanelSource(panel.Put());
        return Told() + ' ' + std::to_string(x) + ' ' + std::to_string(y) + ' ' +
               std::filesystem::path(panel.View()).filename().string();
    };
    for (const bool native : {false, true}) {
        SetNative(native);
        for (const bool commit : {false, true}) {
            SCOPED_TRACE(std::to_string(native) + std::to_string(commit));
            ASSERT_EQ(S_OK, menu->put_Background(wide.Get()));
            ASSERT_EQ(S_OK, text->SetPosition(0.5, 0.25));
            const std::string before = told();
            ASSERT_EQ(S_OK, project->TakeUndoSnapshot(nullptr));
            ASSERT_EQ(S_OK, SetNative(!native));
            ASSERT_EQ(S_OK, menu->put_Background(narrow.Get()));
            ASSERT_EQ(S_OK, text->SetPosition(-0.5, 0));
            const std::string after = told();
            Events();
            ASSERT_EQ(S_OK, project->EndUndo(commit ? VARIANT_TRUE : VARIANT_FALSE));
            if (commit) {
                ASSERT_EQ(S_OK, project->UndoOperation());
            }
            EXPECT_EQ(before, told());
            EXPECT_EQ(S_OK, project->RedoOperation());
            EXPECT_EQ(after, told());
            EXPECT_EQ(S_OK, project->UndoOperation());
            EXPECT_EQ(before, told());
            for (const auto& event : Events())
                EXPECT_EQ(EVENT_MessageBroadcast, event.id);
        }
    }
}

TEST_F(MenuModeTest, ChecksWhatItIsToPlay)
{
    const Bstr missing = folder.File("missing.y4m");
    Bstr folderItself(folder.Path().u16string());
    const Bstr empty(u"");
    for (const BSTR source : {missing.Get(), folderItself.Get(), empty.Get(), BSTR{}}) {
        EXPECT_EQ(KV_E_NO_BACKGROUND_FILE, menu->put_Background(source));
        EXPECT_EQ(View(source).empty() ? S_OK : KV_E_NO_AUDIO_FILE, menu->put_Audio(source));
    }
    EXPECT_EQ(S_OK, menu->put_Background(Str(u"MoniKer:7").Get()));
    EXPECT_EQ(u"MoniKer:7", Background());
    Events();
    EXPECT_EQ(E_INVALIDARG, menu->PutBackgroundWithTrim(wide.Get(), 1.0, 0.5));
    EXPECT_EQ(u"MoniKer:7", Background());
    EXPECT_EQ(S_OK, menu->PutBackgroundWithTrim(wide.Get(), 0.5, 1.5));
    EXPECT_DOUBLE_EQ(1.0, Duration());
    Query<IKVLocking>(menu)->LockObject(VARIANT_FALSE);
    EXPECT_EQ(KV_E_LOCKED, menu->put_Background(narrow.Get()));
    EXPECT_EQ(KV_E_LOCKED, menu->put_Audio(nullptr));
    EXPECT_EQ(KV_E_LOCKED, menu->put_Duration(4.0));
    EXPECT_EQ(KV_E_LOCKED, SetNative(true));
    EXPECT_EQ(wide.View(), Background());
}

TEST_F(MenuModeTest, StillPicturesLastAsLongAsTheMenu)
{
    EXPECT_EQ(S_OK, menu->put_Duration(12.5)) << "without a background";
    EXPECT_DOUBLE_EQ(12.5, Duration());
    EXPECT_EQ(S_OK, menu->put_Background(still.Get()));
    EXPECT_DOUBLE_EQ(12.5, Duration());
    EXPECT_EQ(S_OK, menu->put_Duration(7.0));
    EXPECT_THAT(Held(Production()), testing::HasSubstr("out=\"7\""));
    EXPECT_EQ(S_OK, SetNative(true));
    EXPECT_THAT(Held(BackgroundProduction()), testing::HasSubstr("out=\"7\""));
}

TEST_F(MenuModeTest, ABackgroundOfTheHostIsKeptByTheMenu)
{
    Fill();
    EXPECT_EQ(S_OK, menu->put_BkgndID(5));
    // There is no background production to play the audio.
    Bstr audio;
    EXPECT_EQ(S_FALSE, menu->get_Audio(audio.Put()));
    EXPECT_EQ(S_FALSE, menu->put_Audio(song.Get()));
    EXPECT_EQ(song.View(), Text(*menu, &IKVMenu::GetSmartAudio));
    EXPECT_EQ(S_OK, menu->put_Duration(9.0));
    EXPECT_DOUBLE_EQ(9.0, Duration());
    EXPECT_EQ(S_OK, SetNative(true));
    EXPECT_EQ(u"<null>", Background()) << "forgotten";
    EXPECT_DOUBLE_EQ(9.0, Duration());
    EXPECT_EQ(S_OK, menu->put_Background(wide.Get()));
    EXPECT_EQ(0, ValueOf(*menu.Get(), &IKVMenu::get_BkgndID));
}

TEST_F(MenuModeTest, TheAspectRatioGoesWithTheMode)
{
    const auto encoding = Query<IKVEncodingParams>(menu);
    const auto setRatio = [&](double ratio) {
        ComPtr<IUnknown> object;
        ASSERT_EQ(S_OK, Query<IZXEProductionData>(Production())->GetProductionObj(object.Put()));
        ASSERT_EQ(S_OK, Query<IProductionInfo>(object)->put_AspectRatio(ratio));
    };
    setRatio(16.0 / 9.0);
    EXPECT_EQ(S_OK, SetNative(true));
    EXPECT_EQ(AspectRatio_4x3, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio)) << "follows the project";
    EXPECT_EQ(S_OK, SetNative(false));
    EXPECT_DOUBLE_EQ(4.0 / 3.0, Ratio(Production()));
    ASSERT_EQ(S_OK, encoding->put_SyncToProject(VARIANT_FALSE));
    setRatio(16.0 / 9.0);
    EXPECT_EQ(S_OK, SetNative(true));
    EXPECT_EQ(AspectRatio_16x9, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio));
    EXPECT_EQ(S_OK, SetNative(false));
    EXPECT_DOUBLE_EQ(16.0 / 9.0, Ratio(Production()));
    setRatio(1.777);
    EXPECT_EQ(S_OK, SetNative(true));
    EXPECT_EQ(AspectRatio_4x3, ValueOf(*encoding.Get(), &IKVEncodingParams::get_AspectRatio)) << "not exactly";

    ASSERT_EQ(S_OK, Query<IKVEncodingParams>(project)->put_AspectRatio(AspectRatio_16x9));
    ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put()));
    EXPECT_DOUBLE_EQ(16.0 / 9.0, Ratio(Production()));
}

TEST_F(MenuModeTest, UndoBringsBackTheModeWithItsProductions)
{
    Fill();
    const std::string plain = Told();
    const auto production = Production();
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    ASSERT_EQ(S_OK, SetNative(true));
    ASSERT_EQ(S_OK, menu->put_Duration(3.0));
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_TRUE));
    const std::string native = Told();
    EXPECT_EQ("native wide.y4m song.wav 3.000000 none open", native);
    EXPECT_TRUE(IsOpen(production));
    const auto background = BackgroundProduction();
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(S_OK, project->UndoOperation());
        EXPECT_EQ(plain, Told());
        EXPECT_EQ(production, Production());
        EXPECT_TRUE(IsOpen(background));
        EXPECT_EQ(S_OK, project->RedoOperation());
        EXPECT_EQ(native, Told());
        EXPECT_EQ(background, BackgroundProduction());
    }
    ASSERT_EQ(S_OK, project->BeginUndo(nullptr));
    ASSERT_EQ(S_OK, SetNative(false));
    const auto cancelled = Production();
    ASSERT_EQ(S_OK, project->EndUndo(VARIANT_FALSE));
    EXPECT_EQ(native, Told());
    EXPECT_FALSE(IsOpen(cancelled));
    EXPECT_EQ(S_OK, project->UndoOperation());
    EXPECT_EQ(plain, Told());
    ComPtr<IOleUndoManager> manager;
    ASSERT_EQ(S_OK, project->GetUndoManager(manager.Put()));
    manager->DiscardFrom(nullptr);
    EXPECT_FALSE(IsOpen(background));
    EXPECT_TRUE(IsOpen(production));
}

TEST_F(MenuModeTest, EndsItsProductions)
{
    const auto production = Production();
    ComPtr<IKVMenu> native;
    ASSERT_EQ(S_OK, project->AddMenu(0, native.Put()));
    ASSERT_EQ(S_OK, native->SetNative(VARIANT_TRUE));
    ComPtr<IUnknown> background;
    ASSERT_EQ(S_OK, native->GetBackgroundProduction(background.Put()));
    const auto notify = Query<IZXEProductionNotify>(production);
    Events();
    std::vector<ReceivedEvent> expected;
    for (LONG position = 0; position < static_cast<LONG>(ZXE_EVENT_COUNT); ++position) {
        EXPECT_EQ(S_OK, notify->Notify(static_cast<ULONG>(position), 70 + position, 0));
        if (position == 10) expected.push_back(Event(EVENT_MenuProductionEvent, {ID(), 10, 0}));
        if (position == 11) expected.push_back(Event(EVENT_MenuProductionEvent, {ID(), 11, 81}));
    }
    EXPECT_EQ(expected, Events());
    auto events = Query<IZXEProductionDataEvents>(menu);
    ComPtr<IKVMenuElement> button;
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuButton::IID, button.Put()));
    const LONG buttonID = ValueOf(*button.Get(), &IKVMenuElement::get_ID);
    EXPECT_EQ(E_UNEXPECTED, events->OnEffectChanged(buttonID, 0));
    EXPECT_EQ(S_FALSE, events->OnEffectChanged(ID(), 0));
    EXPECT_EQ(S_FALSE, events->OnEffectChanged(ID(), buttonID));
    EXPECT_EQ(S_FALSE, events->OnEffectChanged(ID(), ID()));
    EXPECT_EQ(S_OK, events->OnEffectsInvalidated());

    project->Clear();
    button.Reset();
    menu.Reset();
    native.Reset();
    EXPECT_TRUE(IsOpen(production)) << "the menu is still held";
    EXPECT_FALSE(IsOpen(background));
    events.Reset();
    EXPECT_FALSE(IsOpen(production));
    EXPECT_EQ(S_OK, notify->Notify(10, 0, 0));
    EXPECT_EQ(S_OK, notify->Notify(7, 0, 0));
}

TEST_F(MenuModeTest, AMenuThatIsSavedWhileItIsEditedIsOfOneTime)
{
    Fill();
    const auto elements = Query<IKVMenuElementList>(menu);
    const auto commands = Query<IKVCommandList>(menu);
    const auto add = [&](const GUID& kind) {
        ComPtr<IKVMenuElement> element;
        EXPECT_EQ(S_OK, elements->AddElement(&kind, element.Put()));
        return element;
    };
    const auto button = Query<IKVMenuButton>(add(IKVMenuButton::IID));
    const auto buttonElements = Query<IKVMenuElementList>(button);
    ComPtr<IKVMenuElement> text;
    ASSERT_EQ(S_OK, buttonElements->AddElement(&IKVMenuText::IID, text.Put()));
    XmlElement root = XmlElement::New("Root");
    ASSERT_EQ(S_OK, menu->SaveXML(root.Get(), VARIANT_TRUE));
    const XmlElement whole = root.Child("Menu");
    ASSERT_EQ(S_OK, button->SaveXML(root.Get(), VARIANT_TRUE));
    const XmlElement part = root.Child("Button");

    std::atomic<int> running{2};
    std::thread editor([&] {
        for (LONG round = 0; round < 60; ++round) {
            DiscCommandParams command{PlayMenu, round, 0, nullptr};
            EXPECT_EQ(S_OK, commands->SetCommandList(round % 2, &command));
            ComPtr<IKVMenuButton> first;
            EXPECT_EQ(S_OK, menu->GetButton(1, first.Put()));
            EXPECT_EQ(S_OK, first->loadXML(part.Get()));
            project->BeginUndo(nullptr);
            EXPECT_TRUE(SUCCEEDED(SetNative(round % 2)));
            EXPECT_EQ(S_OK, button->ApplyTo(first.Get()));
            project->EndUndo(VARIANT_TRUE);
            project->UndoOperation();
            project->RedoOperation();
            const auto added = add(IKVMenuText::IID);
            EXPECT_EQ(S_OK, elements->RemoveElement(ValueOf(*added.Get(), &IKVMenuElement::get_ID), nullptr));
            if (round % 8 == 7) {
                EXPECT_EQ(S_OK, menu->loadXML(whole.Get(), VARIANT_TRUE));
            }
        }
        --running;
    });
    std::thread reader([&] {
        for (; running > 1; std::this_thread::yield())
            for (const auto& list : {elements, buttonElements})
                for (LONG i = ValueOf(*list.Get(), &IKVMenuElementList::get_ElementCount); i > 0; --i) {
                    ComPtr<IKVMenuElement> found;
                    list->GetElement(i, found.Put());
                    list->FindElement(i, found.Put());
                }
    });
    const auto files = Create<IKVFileService>(CLSID_KVFileService);
    const Bstr file = folder.File("Saved.xml");
    while (running > 1) {
        EXPECT_EQ(S_OK, files->SaveProject(file.Get(), project.Get()));
        std::string saved = folder.Read("Saved.xml");
        std::erase(saved, '\0');
        const bool isNative = saved.find(" native=\"-1\"") != saved.npos;
        EXPECT_EQ(isNative, saved.find("name=\"Background\"") != saved.npos) << saved;
    }
    editor.join();
    reader.join();
}

/// Creates the engine that a test wants.
class EngineClass final : public Object<IClassFactory> {
public:
    explicit EngineClass(ComPtr<FakeEngine> engine) : m_engine(std::move(engine)) {}

    HRESULT CreateInstance(IUnknown*, REFIID iid, void** out) override { return m_engine->QueryInterface(iid, out); }
    HRESULT LockServer(BOOL) override { return S_OK; }

private:
    const ComPtr<FakeEngine> m_engine;
};

TEST_F(MenuModeTest, StaysAsItWasWhenTheEngineFails)
{
    const auto engine = Make<FakeEngine>();
    engine->connections = Production();
    DWORD cookie = 0;
    ASSERT_EQ(S_OK, CoRegisterClassObject(CLSID_ZXEProduction, Make<EngineClass>(engine).Get(), CLSCTX_INPROC_SERVER,
                                          REGCLS_MULTIPLEUSE, &cookie));
    ComPtr<IKVMenu> plain;
    ComPtr<IKVMenu> native;
    ASSERT_EQ(S_OK, project->AddMenu(0, plain.Put()));
    ASSERT_EQ(S_OK, project->AddMenu(0, native.Put()));
    ASSERT_EQ(S_OK, native->SetNative(VARIANT_TRUE));
    ASSERT_EQ(S_OK, native->put_Background(wide.Get()));
    const auto encoding = Query<IKVEncodingParams>(plain);
    ASSERT_EQ(S_OK, encoding->put_SyncToProject(VARIANT_FALSE));

    const auto on = [&] { return plain->SetNative(VARIANT_TRUE); };
    const auto off = [&] { return native->SetNative(VARIANT_FALSE); };
    struct Case {
        const char* method;
        std::function<HRESULT()> call;
    };
    const Case cases[]{
        {"Initialise", on},
        {"put_AspectRatio", on},
        {"GetProductionObj", on},
        {"get_AspectRatio", on},
        {"Initialise", off},
        {"AddSourceFile", off},
        {"DeleteProductionAudio", off},
        {"put_Duration", off},
        {"put_AspectRatio", off},
        {"AddSourceFile", [&] { return plain->put_Background(wide.Get()); }},
        {"put_Repeat", [&] { return native->put_Background(narrow.Get()); }},
        {"AddProductionAudio", [&] { return plain->put_Audio(song.Get()); }},
        {"put_Duration", [&] { return plain->put_Duration(1.0); }},
        {"put_Mute", [&] { return native->put_BackgroundMute(VARIANT_TRUE); }},
        {"put_Level", [&] { return native->SetMenuBackgroundAudioVolume(0.5); }},
        {"put_FadeIn", [&] { return native->SetMenuBackgroundAudioFadeEnable(VARIANT_TRUE); }},
        {"get_AspectRatio", [&] { return native->ResizeMenuBackground(VARIANT_TRUE); }},
        {"SetPanZoom", [&] { return native->SetMenuBackgroundCrop(0, 0, 1, 1); }},
        {"GetPanZoom", [&] { return native->SetMenuBackgroundCropMode(VARIANT_TRUE); }},
        {"GetPanelBaseObject", [&] { return native->SetMenuBackgroundCropMode(VARIANT_TRUE); }},
    };
    Events();
    for (const Case& each : cases) {
        engine->results = {{each.method, kFailure}};
        EXPECT_EQ(kFailure, each.call()) << each.method;
        engine->results.clear();
        EXPECT_EQ(std::vector<ReceivedEvent>(), Events()) << each.method;
        ComPtr<IUnknown> production;
        EXPECT_EQ(S_OK, plain->GetProduction(production.Put())) << each.method;
        EXPECT_EQ(S_FALSE, plain->GetBackgroundProduction(production.Put()));
        EXPECT_EQ(S_OK, native->GetBackgroundProduction(production.Put())) << each.method;
        EXPECT_EQ(S_FALSE, native->GetProduction(production.Put()));
        EXPECT_EQ(wide.View(), Text(*native, &IKVMenu::get_Background)) << each.method;
        EXPECT_EQ(u"<null>", Text(*plain, &IKVMenu::GetSmartAudio)) << each.method;
    }
    engine->results = {{"Initialise", kFailure}};
    EXPECT_EQ(kFailure, project->AddMenu(0, menu.Put()));
    EXPECT_EQ(3, ValueOf(*project.Get(), &IKVProjectData::get_MenuCount));
    CoRevokeClassObject(cookie);
}

} // namespace
} // namespace kv::test
