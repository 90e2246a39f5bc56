#include "KVProjectData/content/DocumentPaths.h"
#include "KVProjectData/content/ParameterPaths.h"
#include "platform/system/Registry.h"
#include "support/Host.h"
#include "support/Markup.h"

namespace kv::test {
namespace {

/// With a content folder.
class DocumentPathsTest : public testing::Test {
protected:
    DocumentPathsTest()
    {
        RegisterServers();
        Registry::Set(Hive::LocalMachine, kKey, u"AlternateContent", content);
        RenewContentPaths();
        paths = Make<DocumentPaths>();
    }
    ~DocumentPathsTest() override
    {
        Registry::DeleteValue(Hive::LocalMachine, kKey, u"AlternateContent");
        RenewContentPaths();
    }

    std::string Translated(HRESULT (IZXEContentPaths::*translate)(BSTR, BSTR*), const std::string& text)
    {
        Bstr out;
        EXPECT_EQ(S_OK, (paths.Get()->*translate)(Bstr(ToUtf16(text)).Get(), out.Put()));
        return ToUtf8(out.View());
    }

    static constexpr std::u16string_view kKey = u"SOFTWARE\\KORVA\\ZENDA\\Zenda\\Paths";
    TemporaryFolder folder;
    std::u16string content = folder.Path().u16string();
    ComPtr<DocumentPaths> paths;
};

TEST_F(DocumentPathsTest, MacrosStandWhereTheyLeadBackToThePath)
{
    const std::string within = folder.Path().string();
    for (const auto& [path, text] :
         std::vector<std::pair<std::string, std::string>>{{within + "/a/b.png", "%CONTENT%/a/b.png"},
                                                          {within, "%CONTENT%"},
                                                          {within + "2/b.png", within + "2/b.png"},
                                                          {"/x" + within + "/b.png", "/x" + within + "/b.png"},
                                                          {within + within + "/b.png", within + within + "/b.png"},
                                                          {"clips/b.png", "clips/b.png"},
                                                          {"", ""}}) {
        EXPECT_EQ(text, Translated(&IZXEContentPaths::ToDocument, path));
        EXPECT_EQ(path, Translated(&IZXEContentPaths::FromDocument, text));
    }
    EXPECT_EQ("/x/%CONTENT%/y", Translated(&IZXEContentPaths::FromDocument, "/x/%CONTENT%/y"));
    EXPECT_EQ("%NONE%/y", Translated(&IZXEContentPaths::FromDocument, "%NONE%/y"));
    EXPECT_EQ(E_POINTER, paths->ToDocument(nullptr, nullptr));
}

TEST_F(DocumentPathsTest, ParameterDocumentsBearThemWherePathsStand)
{
    const std::string within = folder.Path().string();
    const auto document = [](const std::string& path, const std::string& other) {
        const auto parameter = [](const std::string& id, const std::string& value) {
            return "<Parameter><Value>" + value + "</Value><ParamID>" + id + "</ParamID></Parameter>";
        };
        return "<Storyboard><Effect><Parameters><effect><alphaFile>" + path +
               "</alphaFile><plugin_data><ParameterSet>" + parameter("0", other) + parameter("51", path) +
               parameter("51", "") + "<Parameter/></ParameterSet>" + parameter("51", other) + "<alphaFile>" + other +
               "</alphaFile><html>" + other + "</html></plugin_data></effect></Parameters></Effect></Storyboard>";
    };
    const XmlElement used = XmlElement::Parse(document(within + "/m.png", within + "/o.png"));
    const std::string usedMarkup = used.Markup();
    const XmlElement saved = used.Copy();
    ParameterPathsToDocument(saved, *paths);
    EXPECT_EQ(XmlElement::Parse(document("%CONTENT%/m.png", within + "/o.png")).Markup(), saved.Markup());
    const std::string savedMarkup = saved.Markup();
    ParameterTexts written = ParameterPathsFromDocument(saved, *paths);
    EXPECT_EQ(usedMarkup, saved.Markup());
    ExchangeTexts(saved, written);
    EXPECT_EQ(savedMarkup, saved.Markup());
    EXPECT_TRUE(ParameterPathsFromDocument(used, *paths).empty());
}

} // namespace
} // namespace kv::test
