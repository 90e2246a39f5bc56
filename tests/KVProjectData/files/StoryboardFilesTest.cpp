// Project files with the productions of the engine itself.

#include "KVProjectData/Engine.h"
#include "platform/system/ErrorReporter.h"
#include "platform/system/Registry.h"
#include "platform/xml/Element.h"
#include "support/Host.h"
#include "support/Markup.h"

#include <gmock/gmock.h>

namespace kv::test {
namespace {

constexpr std::u16string_view kPathsKey = u"SOFTWARE\\KORVA\\ZENDA\\Zenda\\Paths";

/// Three grey frames of 64 by 36 pixels, 25 a second.
std::string Clip()
{
    std::string clip = "YUV4MPEG2 W64 H36 F25:1 Ip A1:1 C420jpeg\n";
    for (int i = 0; i < 3; ++i)
        clip += "FRAME\n" + std::string(64 * 36 * 3 / 2, '\x80');
    return clip;
}

/// An installation whose content folder, with a clip in it, has a project beside it; all of it can be moved.
class StoryboardFilesTest : public testing::Test {
protected:
    StoryboardFilesTest()
    {
        std::filesystem::create_directories(folder.Path() / "first" / "content");
        folder.Write("first/content/sea.y4m", Clip());
        Use("first");
    }
    ~StoryboardFilesTest() override
    {
        Registry::DeleteValue(Hive::LocalMachine, kPathsKey, u"AlternateContent");
        Create<IKVFileService>(CLSID_KVFileService);
    }

    /// From now on the installation is here.
    void Use(const std::string& place)
    {
        RegisterServers();
        root = folder.Path() / place;
        Registry::Set(Hive::LocalMachine, kPathsKey, u"AlternateContent", (root / "content").u16string());
        files = Create<IKVFileService>(CLSID_KVFileService);
    }
    Bstr Content(const char* name) const { return Bstr((root / "content" / name).u16string()); }
    Bstr Project() const { return Bstr((root / "Trip.xml").u16string()); }

    HRESULT Load()
    {
        const HRESULT loaded = files->LoadProject(Project().Get(), project.Get());
        project->GetTitle(1, title.Put());
        if (title) title->GetProduction(production.Put());
        return loaded;
    }
    std::string Saved()
    {
        EXPECT_EQ(S_OK, files->SaveProject(Project().Get(), project.Get()));
        const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
        VARIANT_BOOL parsed = VARIANT_FALSE;
        EXPECT_EQ(S_OK, document->load(Variant(Project().View()), &parsed));
        EXPECT_EQ(S_OK, document->save(Variant((root / "Again.xml").u16string())));
        const std::string place = root.filename().string();
        EXPECT_EQ(folder.Read(place + "/Again.xml"), folder.Read(place + "/Trip.xml")) << "as a tree is written";
        ComPtr<IXMLDOMElement> element;
        document->get_documentElement(element.Put());
        return XmlElement(element.Get()).Child("Productions").Markup();
    }
    ComPtr<IProductionInfo> Info() const
    {
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK, Query<IZXEProductionData>(production)->GetProductionObj(object.Put()));
        return Query<IProductionInfo>(object);
    }
    ComPtr<IEffectInfo> Effect() const
    {
        ComPtr<IUnknown> effect;
        EXPECT_EQ(S_OK, Query<IProductionObjects>(Info())->GetEffect(3, 0.0, effect.Put()));
        return Query<IEffectInfo>(effect);
    }

    TemporaryFolder folder;
    std::filesystem::path root;
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVFileService> files;
    ComPtr<IKVTitle> title;
    ComPtr<IUnknown> production;
};

TEST_F(StoryboardFilesTest, TitlesShowTheSameWhereverTheirFileIsRead)
{
    ASSERT_EQ(S_OK, project->AddTitle(0, title.Put()));
    ASSERT_EQ(S_OK, title->GetProduction(production.Put()));
    ASSERT_EQ(S_OK, Info()->put_AspectRatio(16.0 / 9.0));
    const auto edit = Query<IEditData>(production);
    ASSERT_EQ(S_OK, edit->AddSourceFile(0, Content("sea.y4m").Get(), 0.0, 0.0, -1, nullptr));
    ASSERT_EQ(S_OK, edit->AddSourceFile(0, Str(u"/none/at/all.mpg").Get(), 0.5, 2.0, -1, nullptr));
    ASSERT_EQ(S_OK, edit->AddProductionAudio(Str(u"title:3").Get(), ZXE_KIND_BACKGROUND_AUDIO, 0.0, nullptr));
    XmlElement parameters = XmlElement::New("effect");
    parameters.AddText("alphaFile", ToUtf8(Content("mask.png").View()));
    parameters.Add("plugin_data");
    ASSERT_EQ(S_OK, edit->AddProductionEffect(3, 2, parameters.Get(), Content("sea.y4m").Get(), 0, 0.0, nullptr));

    const std::string saved = Saved();
    EXPECT_EQ(saved.npos, saved.find(folder.Path().string())) << saved;
    const double length = ValueOf(*Info(), &IProductionInfo::get_Duration);
    EXPECT_EQ(S_OK, title->SetProduction(Create<IUnknown>(CLSID_ZXEProduction).Get()));

    std::filesystem::rename(root, folder.Path() / "second");
    Use("second");
    for (const bool mediaIsThere : {true, false}) {
        const auto sink = Make<RecordingSink>();
        ASSERT_EQ(S_OK, Load());
        EXPECT_THAT(ZXUErrorStack(), testing::IsEmpty());
        Bstr source;
        EXPECT_EQ(S_OK, title->GetSourceFromProd(source.Put()));
        EXPECT_EQ(Content("sea.y4m").View(), source.View());
        EXPECT_EQ(16.0 / 9.0, ValueOf(*Info(), &IProductionInfo::get_AspectRatio));
        EXPECT_EQ(25.0, ValueOf(*Info(), &IProductionInfo::get_EditingFrameRate)) << mediaIsThere;
        EXPECT_EQ(length, ValueOf(*Info(), &IProductionInfo::get_Duration)) << mediaIsThere;
        EXPECT_EQ(AspectRatio_16x9, ValueOf(*Query<IKVEncodingParams>(title), &IKVEncodingParams::get_AspectRatio));
        ComPtr<IXMLDOMNode> document;
        EXPECT_EQ(S_OK, Effect()->GetParameterDocument(document.Put()));
        EXPECT_EQ(ToUtf8(Content("mask.png").View()), XmlElement(document.Get()).Child("alphaFile").Text());
        VARIANT_BOOL dirty = VARIANT_TRUE;
        project->ClearDirtyFlag();
        EXPECT_EQ(S_OK, project->get_IsDirty(&dirty));
        EXPECT_EQ(VARIANT_FALSE, dirty);
        EXPECT_EQ(saved, Saved()) << mediaIsThere;

        const Connection connection(*project, *sink);
        ASSERT_EQ(S_OK, Query<IZXEProductionData>(production)->DeletePanel(1));
        EXPECT_THAT(Delivered(*project, *sink),
                    testing::Contains(Event(EVENT_TitleProductionEvent, {ValueOf(*title, &IKVTitle::get_ID), 1, 1})));
        std::filesystem::remove(root / "content" / "sea.y4m");
    }
}

TEST_F(StoryboardFilesTest, WhatIsMerelyLookedAtIsNotSaved)
{
    folder.Write("first/Trip.xml",
                 "<Root><Project Version='900'><Titles><Title ID='5'><Encoding aspectRatio='0'/></Title>"
                 "</Titles></Project></Root>");
    ASSERT_EQ(S_OK, Load());
    EXPECT_EQ("<Productions/>", Saved());
    ASSERT_EQ(S_OK, files->LoadProject(Project().Get(), project.Get()));
    project->GetTitle(1, title.Put());
    const auto encoding = Query<IKVEncodingParams>(title);
    EXPECT_EQ(AspectRatio_None, ValueOf(*encoding, &IKVEncodingParams::get_AspectRatio));
    encoding->put_AspectRatio(AspectRatio_16x9);
    project->ClearDirtyFlag();
    title->GetProduction(production.Put());
    EXPECT_EQ(VARIANT_FALSE, ValueOf(*project, &IKVProjectData::get_IsDirty));
    Info()->put_AspectRatio(2.0);
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*project, &IKVProjectData::get_IsDirty));
    encoding->put_AspectRatio(AspectRatio_4x3);
    EXPECT_EQ("<Productions><Production ownerID=\"5\" name=\"Storyboard\"><Storyboard/></Production></Productions>",
              Plain(Saved()))
        << "edited, and the same again";
}

TEST_F(StoryboardFilesTest, AProductionThatIsRefusedIsKeptAndSaysSo)
{
    const std::string refused =
        "<Production ownerID=\"5\" name=\"Storyboard\"><Storyboard aspectRatio=\"wide\"/></Production>";
    folder.Write("first/Trip.xml",
                 "<Root><Project Version='900'><Titles><Title ID='5'/></Titles></Project><Productions>" + refused +
                     "</Productions></Root>");
    ASSERT_EQ(S_OK, files->LoadProject(Project().Get(), project.Get()));
    EXPECT_THAT(ZXUErrorStack(), testing::ElementsAre(testing::EndsWith("0xC2000019 = Load()\n")));
    EXPECT_EQ("<Productions>" + refused + "</Productions>", Plain(Saved()));
}

} // namespace
} // namespace kv::test
