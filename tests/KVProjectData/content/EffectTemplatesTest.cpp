// What effects start from: templates in the content folder, and the least where there is no such folder.

#include "KVProjectData/menus/EffectTemplates.h"

#include "KVProjectData/content/ContentPaths.h"
#include "platform/system/Registry.h"
#include "platform/xml/Element.h"
#include "support/Host.h"

#include <barrier>
#include <thread>

namespace kv::test {
namespace {

constexpr std::u16string_view kPaths = u"SOFTWARE\\KORVA\\ZENDA\\Zenda\\Paths";

class EffectTemplatesTest : public testing::Test {
protected:
    EffectTemplatesTest()
    {
        RegisterServers();
        Forget();
    }
    ~EffectTemplatesTest() override { Forget(); }

    static void Forget() { Registry::DeleteTreeIfThere(Hive::LocalMachine, u"SOFTWARE\\KORVA"); }

    template <class Interface>
    static ComPtr<Interface> AddTo(IKVMenu& menu)
    {
        ComPtr<IKVMenuElement> element;
        EXPECT_EQ(S_OK, Query<IKVMenuElementList>(&menu)->AddElement(&Interface::IID, element.Put()));
        return Query<Interface>(element);
    }

    TemporaryFolder folder;
};

TEST_F(EffectTemplatesTest, WithoutTheContentFolderElementsAreMadeEditedSavedAndLoaded)
{
    const auto files = Create<IKVFileService>(CLSID_KVFileService);
    const auto project = NewProject();
    ComPtr<IKVMenu> menu;
    ASSERT_EQ(S_OK, project->AddMenu(-1, menu.Put()));
    const auto made = AddTo<IKVMenuText>(*menu);
    EXPECT_EQ(S_OK, made->put_String(Str(u"Play all").Get()));
    EXPECT_EQ(S_OK, made->put_height(48));
    EXPECT_EQ(S_OK, made->SetPosition(0.25F, -0.5F));
    EXPECT_EQ(S_OK, AddTo<IKVMenuOverlay>(*menu)->SetSize(0.5F, 0.25F));
    const Bstr file = folder.File("project.xml");
    ASSERT_EQ(S_OK, files->SaveProject(file.Get(), project.Get()));
    const auto loaded = NewProject();
    ASSERT_EQ(S_OK, files->LoadProject(file.Get(), loaded.Get()));
    for (const auto& each : {project, loaded}) {
        ASSERT_EQ(S_OK, each->GetMenu(1, menu.Put()));
        std::array<ComPtr<IKVMenuElement>, 2> elements;
        for (LONG i = 0; i < 2; ++i)
            ASSERT_EQ(S_OK, menu->GetMenuElement(i + 1, elements[i].Put()));
        const auto text = Query<IKVMenuText>(elements[0]);
        EXPECT_EQ(u"Play all", Text(*text, &IKVMenuText::get_String));
        EXPECT_EQ(48, ValueOf(*text.Get(), &IKVMenuText::get_height));
        FloatPoint place;
        EXPECT_EQ(S_OK, text->GetPosition(&place.x, &place.y));
        EXPECT_EQ((FloatPoint{0.25F, -0.5F}), place);
        FloatRect extent;
        EXPECT_EQ(S_OK, text->GetExtent(&extent));
        EXPECT_LT(extent.fLeft, extent.fRight);
        float width = 0;
        float height = 0;
        EXPECT_EQ(S_OK, Query<IKVMenuOverlay>(elements[1])->GetSize(&width, &height));
        EXPECT_EQ(0.5F, width);
        EXPECT_EQ(0.25F, height);
    }
}

TEST_F(EffectTemplatesTest, ThreadsGetDocumentsOfTheirOwnFromOneTemplate)
{
    constexpr int kThreads = 8;
    constexpr int kCopies = 50;
    std::filesystem::create_directories(folder.Path() / "DVD" / "Mandatory");
    const auto text = [](std::string_view shown) {
        return "<effect Name=\"TextOverlay\"><plugin_data><html><body><p>" + std::string(shown) +
               "</p></body></html></plugin_data></effect>";
    };
    folder.Write("DVD/Mandatory/ZXTextPlugIns.xml", "<effects>" + text("stringRef:None") + "</effects>");
    folder.Write("DVD/Mandatory/AlphaOverlay.xml",
                 "<effects><effect><alphaFile>other.jpg</alphaFile><plugin_data/></effect></effects>");
    ASSERT_EQ(S_OK,
              Registry::Set(Hive::LocalMachine, kPaths, u"AppDataContent", std::u16string(folder.Path().u16string())));
    RenewContentPaths();
    const std::string expected = text("Failed to resolve stringRef: stringRef:None");
    std::barrier start(kThreads);
    const auto clone = [&] {
        start.arrive_and_wait();
        for (int i = 0; i < kCopies; ++i) {
            ComPtr<IXMLDOMNode> label;
            ComPtr<IXMLDOMNode> picture;
            EXPECT_EQ(S_OK, NewTextDocument(label));
            EXPECT_EQ(S_OK, NewOverlayDocument(picture));
            XmlElement own(label.Get());
            EXPECT_EQ(expected, own.View().CompactMarkup());
            EXPECT_TRUE(XmlElement(picture.Get()).Child("alphaFile").Text().ends_with("PlaceHolder.jpg"));
            // Nobody else sees it.
            own.Child("plugin_data").Clear();
            XmlElement(picture.Get()).Remove("alphaFile");
        }
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back(clone);
}

} // namespace
} // namespace kv::test
