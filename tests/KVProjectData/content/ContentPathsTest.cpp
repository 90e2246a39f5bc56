#include "KVProjectData/content/ContentPaths.h"
#include "platform/system/Paths.h"
#include "platform/system/Registry.h"
#include "support/Host.h"

#include <map>

namespace kv::test {
namespace {

constexpr std::u16string_view kPaths = u"SOFTWARE\\KORVA\\ZENDA\\Zenda\\Paths";
constexpr std::u16string_view kSkin = u"SOFTWARE\\KORVA\\ZENDA\\Orvel\\BRXOPTIONS";
constexpr std::u16string_view kPlugIns = u"SOFTWARE\\Korva\\ZENDA\\Tarnex\\Album";

using Macros = std::map<std::u16string, std::u16string>;

/// The macros while the registry names these folders.
class ContentPathsTest : public testing::Test {
protected:
    ContentPathsTest()
    {
        RegisterServers();
        Forget();
    }
    ~ContentPathsTest() override { Forget(); }

    static void Name(std::u16string_view key, std::u16string_view name, std::u16string value)
    {
        ASSERT_EQ(S_OK, Registry::Set(Hive::LocalMachine, key, name, std::move(value)));
    }
    static void Forget() { Registry::DeleteTreeIfThere(Hive::LocalMachine, u"SOFTWARE\\KORVA"); }

    std::u16string Folder(std::string_view name) const
    {
        std::filesystem::create_directory(folder.Path() / name);
        return (folder.Path() / name).u16string();
    }

    TemporaryFolder folder;
};

TEST_F(ContentPathsTest, AnInstallationThatNamesNoFoldersHasTheTemporaryOneAlone)
{
    const Macros temporaryAlone{{u"%TEMP%", kv::TemporaryFolder()}};
    EXPECT_EQ(temporaryAlone, ContentPaths().Macros());
    Name(kPaths, u"AppDataContent", (folder.Path() / "none").u16string());
    Name(kPaths, u"AlternateContent", std::u16string(300, u'/'));
    Name(kSkin, u"Current Skin", u"none such");
    EXPECT_EQ(temporaryAlone, ContentPaths().Macros());
}

TEST_F(ContentPathsTest, TheAlternateContentComesFirstAndOnlyFoldersThatExistCount)
{
    Name(kPaths, u"AppDataContent", Folder("usual"));
    EXPECT_EQ(Folder("usual"), ContentPaths().Macros().at(u"%CONTENT%"));
    Name(kPaths, u"AlternateContent", Folder("other"));
    EXPECT_EQ(Folder("other"), ContentPaths().Macros().at(u"%CONTENT%"));
    Name(kPaths, u"AlternateContent", Folder("other") + u" that is gone");
    EXPECT_EQ(Folder("usual"), ContentPaths().Macros().at(u"%CONTENT%"));
    Name(kPlugIns, u"EffectsFilesPath", Folder("plug-ins"));
    EXPECT_EQ(Folder("plug-ins"), ContentPaths().Macros().at(u"%PLUGINS%"));
}

TEST_F(ContentPathsTest, NamesBesideTheHostContinueTheHostsFolder)
{
    const std::filesystem::path host(HostFolder());
    const std::filesystem::path content(HostFolder() + u"TestContent");
    const std::filesystem::path skin = host / "TestSkin";
    std::filesystem::create_directory(content);
    std::filesystem::create_directory(skin);
    Name(kPaths, u"AppDataContent", u"TestContent");
    Name(kSkin, u"Current Skin", u"TestSkin");
    const ContentPaths paths;
    std::filesystem::remove(content);
    std::filesystem::remove(skin);
    EXPECT_EQ(content.u16string(), paths.Macros().at(u"%CONTENT%"));
    EXPECT_EQ(skin.u16string(), paths.Macros().at(u"%SKINS%"));
}

TEST_F(ContentPathsTest, MacrosStandForTheirFoldersAtTheStartOfAPath)
{
    const std::u16string content = Folder("Content");
    Name(kPaths, u"AppDataContent", content);
    const ContentPaths paths;
    const Macros resolved{{u"%CONTENT%", content},
                          {u"%CONTENT%/a.xml", content + u"/a.xml"},
                          {u"%CONTENT%\\DVD\\a.xml", content + u"/DVD\\a.xml"},
                          {u"%CONTENT%%CONTENT%a", content + u"/a"},
                          {u"%SKINS%/a", u"%SKINS%/a"},
                          {u"x%CONTENT%/a", u"x%CONTENT%/a"},
                          {u"", u""}};
    for (const auto& [path, expected] : resolved)
        EXPECT_EQ(expected, paths.Resolve(path)) << ToUtf8(path);
    EXPECT_EQ(u"%CONTENT%/a.xml", paths.Unresolve(content + u"/a.xml"));
    EXPECT_EQ(u"moniker::%CONTENT%", paths.Unresolve(u"moniker::" + content));
    EXPECT_EQ(u"D:\\Clips\\a.mpg", paths.Unresolve(u"D:\\Clips\\a.mpg"));
}

TEST_F(ContentPathsTest, TheFileServiceTranslatesByTheFoldersOfItsCreation)
{
    const auto before = Create<IKVFileService>(CLSID_KVFileService);
    const std::u16string content = Folder("Content");
    Name(kPaths, u"AppDataContent", content);
    const auto files = Create<IKVFileService>(CLSID_KVFileService);
    const auto translated = [](IKVFileService& service, auto method, std::u16string_view text) {
        BSTR path = Bstr(text).Detach();
        EXPECT_EQ(S_OK, (service.*method)(&path));
        return std::u16string(Bstr::Attach(path).View());
    };
    constexpr auto kResolve = &IKVFileService::ResolveFilePath;
    constexpr auto kUnresolve = &IKVFileService::UnresolveFilePath;
    EXPECT_EQ(content + u"/a", translated(*files.Get(), kResolve, u"%CONTENT%/a"));
    EXPECT_EQ(u"%CONTENT%/a", translated(*files.Get(), kUnresolve, content + u"/a"));
    EXPECT_EQ(u"%CONTENT%/a", translated(*before.Get(), kResolve, u"%CONTENT%/a"));
    EXPECT_EQ(content + u"/a", SharedContentPaths()->Resolve(u"%CONTENT%/a"));
}

TEST_F(ContentPathsTest, RegistrationEntersTheInstalledContentAndTakesItsOwnEntryAway)
{
    const std::u16string library =
        Registry::QueryText(Hive::ClassesRoot, u"CLSID\\" + GuidText(CLSID_KVFileService) + u"\\InprocServer32", {});
    const auto entered = [] { return Registry::QueryText(Hive::LocalMachine, kPaths, u"AppDataContent"); };
    const std::u16string other = Folder("other");
    Name(kPaths, u"AppDataContent", other);
    ASSERT_EQ(S_OK, UnregisterServer(library));
    EXPECT_EQ(other, entered());
    ASSERT_EQ(S_OK, RegisterServer(library));
    const ContentPaths paths;
    const auto file = [&paths](std::u16string_view name) {
        return paths.Resolve(u"%CONTENT%\\DVD\\Mandatory\\" + std::u16string(name));
    };
    const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
    const auto holds = [&](std::u16string_view name, std::u16string_view expression) {
        VARIANT_BOOL parsed = VARIANT_FALSE;
        ComPtr<IXMLDOMNode> node;
        return document->load(Variant(file(name)), &parsed) == S_OK && parsed &&
               document->selectSingleNode(Bstr(expression).Get(), node.Put()) == S_OK;
    };
    EXPECT_TRUE(holds(u"AlphaOverlay.xml", u"/Root/effect/plugin_data[Scaling]/ParameterSet/Parameter[ParamID='51']"));
    EXPECT_TRUE(holds(u"ZXTextPlugIns.xml", u"/Root/effect[@Name='TextOverlay'][uuid]/plugin_data[Scaling]/html/body//"
                                            u"text()[contains(., 'stringRef:EnterText')]"));
    EXPECT_TRUE(holds(u"ZXPlugInStrings.xml", u"/Strings/Language[@id='1033']/String[@id='EnterText']"));
    EXPECT_TRUE(PathFileExists(file(u"PlaceHolder.jpg")));

    Name(kPaths, u"AlternateContent", other);
    ASSERT_EQ(S_OK, UnregisterServer(library));
    EXPECT_EQ(u"", entered());
    EXPECT_EQ(other, Registry::QueryText(Hive::LocalMachine, kPaths, u"AlternateContent"));
    Forget();
    ASSERT_EQ(S_OK, RegisterServer(library));
    ASSERT_EQ(S_OK, UnregisterServer(library));
    EXPECT_FALSE(Registry::KeyExists(Hive::LocalMachine, u"SOFTWARE\\KORVA"));
    ASSERT_EQ(S_OK, RegisterServer(library));
}

} // namespace
} // namespace kv::test
