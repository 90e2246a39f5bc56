#include "KVProjectData/IQ71ProjectImport.h"
#include "KVProjectData/Identities.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/system/MessageBox.h"
#include "platform/xml/Element.h"
#include "support/Contents.h"

#include <algorithm>

namespace kv::test {
namespace {

std::string Utf16File(std::string_view text)
{
    std::string bytes("\xFF\xFE");
    for (char c : text)
        bytes.append({c, '\0'});
    return bytes;
}

class FileServiceTest : public testing::Test {
protected:
    HRESULT Load(const Bstr& file) { return files->LoadProject(file.Get(), project.Get()); }
    HRESULT Save(const Bstr& file) { return files->SaveProject(file.Get(), project.Get()); }
    std::u16string Label() { return Text(*project.Get(), &IKVProjectData::get_Label); }
    std::u16string Directory() { return Text(*project.Get(), &IKVProjectData::get_ProjectDirectory); }

    TemporaryFolder folder;
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVFileService> files = Create<IKVFileService>(CLSID_KVFileService);
};

TEST_F(FileServiceTest, SavesTheWholeDocumentInUtf16)
{
    project->put_Label(Str(u"Caf\u00e9").Get());
    project->put_DisplayName(Str(u"C").Get());
    ASSERT_EQ(S_OK, Save(folder.File("Trip.xml")));
    EXPECT_EQ(folder.Path().u16string(), Directory());
    const std::string bytes = folder.Read("Trip.xml");
    EXPECT_TRUE(bytes.starts_with("\xFF\xFE<"));
    for (const char* part : {"encoding=\"UTF-16\"?>", "xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"",
                             "<Productions/>", "<!--DVD Project xml file created using KVProject object.-->"})
        EXPECT_NE(bytes.npos, bytes.find(Utf16File(part).substr(2))) << part;
    project = NewProject();
    EXPECT_EQ(S_OK, Load(folder.File("Trip.xml")));
    EXPECT_EQ(S_OK, Save(folder.File("Again.xml")));
    EXPECT_TRUE(bytes == folder.Read("Again.xml"));
}

TEST_F(FileServiceTest, SavesWhatTheProjectWritesIntoADocument)
{
    constexpr std::u16string_view kMixed = u"<'Caf\u00e9' & \"\u65e5\U0001d11e\">\t\n\r";
    project->loadXML(ParseXml(u"<Project><Titles><Title/><Title><Commands><PlayMenu code='2'><effect><text>a<b/></text>"
                              u"<Value xmlns:dt='urn:schemas-microsoft-com:datatypes' dt:dt='r8'>0.5</Value><c><d/></c>"
                              u"</effect></PlayMenu><StopPlayback code='3'/></Commands></Title></Titles>"
                              u"<DataFiles><File/></DataFiles></Project>")
                         .Get());
    project->put_Label(Str(kMixed).Get());
    ASSERT_EQ(S_OK, Save(folder.File("Trip.xml")));
    const auto document =
        ParseXml(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><Root xmlns:dt=\"urn:schemas-microsoft-com:"
                 u"datatypes\"/><!--DVD Project xml file created using KVProject object.-->");
    ComPtr<IXMLDOMElement> root;
    document->get_documentElement(root.Put());
    ASSERT_EQ(S_OK, project->SaveXML(root.Get()));
    XmlElement(root.Get()).Add("Productions");
    ASSERT_EQ(S_OK, document->save(Variant(folder.File("Document.xml").View())));
    EXPECT_TRUE(folder.Read("Document.xml") == folder.Read("Trip.xml"));
}

TEST_F(FileServiceTest, LeavesOutTemplateMenusThatNoMenuIsMadeFrom)
{
    /// Types and templates of menus, and those that are left. Where no IDs are told, they count from 1.
    struct Case {
        std::vector<std::pair<ULONG, int>> menus;
        std::vector<LONG> left;
        const char16_t* titles = u"";
        std::vector<std::size_t> told = {};
    };
    constexpr ULONG kUser = MenuType_Main;
    constexpr ULONG kTemplate = MenuType_TemplateChap;
    for (const auto& [menus, left, titles, told] :
         {Case{{{kTemplate, 0}, {MenuType_TemplateMain, 0}}, {1, 2}},
          {{{kTemplate, 0}, {MenuType_TemplateMain, 0}}, {}, u"<Title/>"},
          {{{kUser, 2}, {kTemplate, 0}, {kTemplate, 2}, {MenuType_Transition, 3}}, {1, 2, 4}},
          {{{kUser | kTemplate, 9}, {kTemplate, 0}}, {1}},
          // A chain of templates counts up to the third from the one in use, and may lead back to its start.
          {{{MenuType_Chapter, 2}, {kTemplate, 3}, {kTemplate, 4}, {kTemplate, 5}, {kTemplate, 6}, {kTemplate, 0}},
           {1, 2, 3, 4, 5}},
          {{{kUser, 2}, {kTemplate, 3}, {kTemplate, 2}}, {1, 2, 3}},
          // Of one ID all count and go, but for those behind a menu that stays.
          {{{kTemplate, 0}, {kTemplate, 0}, {kUser, 3}, {kTemplate, 0}}, {3, 3}, u"", {1, 1, 3, 3}},
          {{{kUser, 2}, {kTemplate, 3}, {kTemplate, 4}, {kTemplate, 0}, {kTemplate, 0}, {kTemplate, 0}},
           {1, 2, 2, 3, 4},
           u"",
           {1, 2, 2, 3, 4, 5}},
          {{{kTemplate, 0}, {kUser, 0}, {kTemplate, 0}}, {1, 1}, u"<Title/>", {1, 1, 1}}}) {
        std::string xml;
        for (std::size_t i = 0; i < menus.size(); ++i) {
            const auto& [types, madeFrom] = menus[i];
            xml += "<Menu ID='" + std::to_string(told.empty() ? i + 1 : told[i]) + "' tag='" + std::to_string(types) +
                   "' templateID='" + std::to_string(madeFrom) + "'/>";
        }
        const auto document = ParseXml(u"<Project><Titles>" + std::u16string(titles) + u"</Titles><Menus>" +
                                       ToUtf16(xml) + u"</Menus></Project>");
        ASSERT_EQ(S_OK, project->loadXML(document.Get()));
        EXPECT_EQ(S_OK, Save(folder.File("menus.xml")));
        std::vector<LONG> ids;
        ComPtr<IKVMenu> menu;
        for (LONG i = 1; SUCCEEDED(project->GetMenu(i, menu.Put())); ++i)
            ids.push_back(ValueOf(*menu.Get(), &IKVMenu::get_ID));
        EXPECT_EQ(left, ids);
    }
}

TEST_F(FileServiceTest, DropsAPrefixAtTheStartOfANameOnly)
{
    const Bstr prefixed(std::u16string(u"file::").append(folder.File("Trip.xml").View()));
    ASSERT_EQ(S_OK, Save(prefixed));
    EXPECT_EQ(S_OK, Load(prefixed));
    ASSERT_EQ(S_OK, Save(folder.File("a file::b.xml")));
    for (const char* name : {"Trip.xml", "a file::b.xml"})
        EXPECT_FALSE(folder.Read(name).empty()) << name;
}

TEST_F(FileServiceTest, NamesALoadedProjectAfterItsFileWhereItHasNoName)
{
    project->put_Label(Str(u"kept").Get());
    ASSERT_EQ(S_OK, Save(folder.File("Holiday.v2.xml")));
    project = NewProject();
    ASSERT_EQ(S_OK, Load(folder.File("Holiday.v2.xml")));
    EXPECT_EQ(u"kept", Label());
    EXPECT_EQ(u"Holiday.v2", Text(*project.Get(), &IKVProjectData::get_DisplayName));
    EXPECT_EQ(folder.Path().u16string(), Directory());
}

TEST_F(FileServiceTest, RefusesArgumentsThatAreNone)
{
    const auto stranger = ParseXml(u"<a/>");
    const Bstr file = folder.File("x.xml");
    project->put_ProjectDirectory(Str(u"kept").Get());
    for (const Bstr& name : {Bstr(), Str(u""), Str(u"file::")})
        EXPECT_EQ(E_INVALIDARG, Save(name));
    EXPECT_EQ(u"kept", Directory());
    for (IUnknown* object : {static_cast<IUnknown*>(nullptr), static_cast<IUnknown*>(stranger.Get())}) {
        EXPECT_EQ(E_POINTER, files->SaveProject(file.Get(), object));
        EXPECT_EQ(E_POINTER, files->LoadProject(file.Get(), object));
        EXPECT_EQ(E_POINTER, files->PersistToXML(stranger.Get(), object));
        EXPECT_EQ(E_POINTER, files->PersistFromXML(stranger.Get(), object));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "x.xml"));
    EXPECT_EQ(E_POINTER, files->ResolveFilePath(nullptr));
    BSTR path = Bstr(u"%X%/a").Detach();
    EXPECT_EQ(S_OK, files->ResolveFilePath(&path));
    EXPECT_EQ(S_OK, files->UnresolveFilePath(&path));
    EXPECT_EQ(u"%X%/a", Bstr::Attach(path).View());
}

TEST_F(FileServiceTest, LeavesTheProjectAloneWhenAFileIsMissingOrDoesNotParse)
{
    project->put_Label(Str(u"kept").Get());
    project->AddTitle(0, nullptr);
    std::u16string shown;
    SetMessageBoxHook([&](std::u16string_view text, std::u16string_view caption) {
        shown.append(caption).append(u": ").append(text);
    });
    EXPECT_EQ(E_INVALIDARG, Load(folder.File("none.xml")));
    SetMessageBoxHook({});
    EXPECT_EQ(u"No such file: " + std::u16string(folder.File("none.xml").View()), shown);
    for (const std::string& content :
         {std::string(), std::string("<Root><Project"), std::string("<Root><Project label='a' label='b'/></Root>"),
          std::string("<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]><a>&b;</a>"),
          std::string("<Root>\0</Root>", 14)}) {
        folder.Write("bad.xml", content);
        EXPECT_EQ(KV_E_FILE_DOES_NOT_PARSE, Load(folder.File("bad.xml"))) << content;
    }
    EXPECT_EQ(KV_E_FILE_DOES_NOT_PARSE, Load(Bstr(folder.Path().u16string()))) << "a folder";
    EXPECT_EQ(u"kept", Label());
    EXPECT_EQ(1, ValueOf(*project.Get(), &IKVProjectData::get_TitleCount));
}

TEST_F(FileServiceTest, DecidesByTheVersion)
{
    struct Case {
        const char* document;
        HRESULT result;
    };
    for (const Case& c : {Case{"<Root><Project Version='699' label='x'/></Root>", KV_E_FILE_TOO_OLD},
                          {"<Root/>", KV_E_FILE_TOO_OLD},
                          {"<root><Project Version='900'/></root>", KV_E_FILE_TOO_OLD},
                          {"<Root><Project Version='seven'/></Root>", DISP_E_TYPEMISMATCH},
                          {"<Root><Project Version=''/></Root>", DISP_E_TYPEMISMATCH},
                          {"<Root><Project Version='99999999999'/></Root>", DISP_E_OVERFLOW},
                          {"<Root><Project/></Root>", S_OK},
                          {"<Root><Project Version='799'/></Root>", S_OK},
                          {"<Root><Project Version='800'/></Root>", S_OK},
                          {"<Root><Project Version='1200'/></Root>", S_OK}}) {
        folder.Write("v.xml", c.document);
        EXPECT_EQ(c.result, Load(folder.File("v.xml"))) << c.document;
    }
}

class Importer final : public Object<IQ71ProjectImport> {
public:
    HRESULT ImportXML(IUnknown* root, IUnknown* project) override
    {
        Bstr name;
        Query<IXMLDOMNode>(root)->get_nodeName(name.Put());
        return Query<IKVProjectData>(project)->put_Label(name.Get());
    }
};

class ImporterFactory final : public Object<IClassFactory> {
public:
    HRESULT CreateInstance(IUnknown*, REFIID iid, void** object) override
    {
        return Make<Importer>()->QueryInterface(iid, object);
    }
    HRESULT LockServer(BOOL) override { return S_OK; }
};

TEST_F(FileServiceTest, HandsOldFilesToTheImporterThatIsThere)
{
    ULONG cookie = 0;
    ASSERT_EQ(S_OK, CoRegisterClassObject(CLSID_Q71ProjectImport, Make<ImporterFactory>().Get(), CLSCTX_INPROC_SERVER,
                                          REGCLS_MULTIPLEUSE, &cookie));
    folder.Write("old.xml", "<Root><Project Version='750'/></Root>");
    EXPECT_EQ(S_OK, Load(folder.File("old.xml")));
    EXPECT_EQ(S_OK, CoRevokeClassObject(cookie));
    EXPECT_EQ(u"Root", Label());
    EXPECT_EQ(u"old", Text(*project.Get(), &IKVProjectData::get_DisplayName));
}

TEST_F(FileServiceTest, KeepsTheOldFileWhenASaveFails)
{
    ASSERT_EQ(S_OK, Save(folder.File("Trip.xml")));
    const std::string before = folder.Read("Trip.xml");
    for (int i = 0; i < 50; ++i)
        project->AddTitle(0, nullptr);
    {
        const FileSizeLimit full(8192);
        EXPECT_TRUE(FAILED(Save(folder.File("Trip.xml"))));
    }
    EXPECT_EQ(before, folder.Read("Trip.xml"));
    EXPECT_EQ(1, folder.Entries()) << "no temporary file is left";
    EXPECT_TRUE(FAILED(Save(folder.File("none/Trip.xml")))) << "no such folder";
    EXPECT_TRUE(FAILED(Save(Bstr(folder.Path().u16string())))) << "a folder";

    const auto title = AddTitle(*project.Get());
    title->put_Label(Str(u"\u0001").Get());
    EXPECT_EQ(E_INVALIDARG, Save(folder.File("Trip.xml")));
    EXPECT_EQ(before, folder.Read("Trip.xml"));
    title->put_Label(nullptr);
    EXPECT_EQ(S_OK, Save(folder.File("Trip.xml")));
    EXPECT_NE(before, folder.Read("Trip.xml"));
}

TEST_F(FileServiceTest, PersistsIntoAndOutOfANode)
{
    project->put_Label(Str(u"inside").Get());
    const auto root = ParseElement(u"<Snapshot/>");
    EXPECT_EQ(S_OK, files->PersistToXML(root.Get(), project.Get()));
    project->put_Label(Str(u"changed").Get());
    EXPECT_EQ(S_OK, files->PersistFromXML(root.Get(), project.Get()));
    EXPECT_EQ(u"inside", Label());
    EXPECT_EQ(KV_E_NO_XML_NODE, files->PersistFromXML(nullptr, project.Get()));
    EXPECT_EQ(E_POINTER, files->PersistToXML(nullptr, project.Get()));
}

} // namespace
} // namespace kv::test
