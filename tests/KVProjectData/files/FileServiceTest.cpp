#include "KVProjectData/IQ71ProjectImport.h"
#include "KVProjectData/Identities.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/system/MessageBox.h"
#include "platform/xml/Element.h"
#include "support/Host.h"

namespace kv::test {
namespace {

std::string Utf16File(std::string_view text)
{
    std::string bytes("\xFF\xFE");
    for (char c : text)
        bytes.append({c, '\0'});
    return bytes;
}

/// Keeps the message boxes that would have been shown.
class MessageBoxes {
public:
    MessageBoxes()
    {
        SetMessageBoxHook([this](std::u16string_view text, std::u16string_view caption) {
            shown.emplace_back(std::u16string(caption) + u": " + std::u16string(text));
        });
    }
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;
    ~MessageBoxes() { SetMessageBoxHook({}); }

    std::vector<std::u16string> shown;
};

Bstr WithPrefix(const Bstr& file)
{
    return Bstr(std::u16string(u"file::").append(file.View()));
}

class FileServiceTest : public testing::Test {
protected:
    HRESULT Load(const Bstr& file) { return files->LoadProject(file.Get(), project.Get()); }
    HRESULT Save(const Bstr& file) { return files->SaveProject(file.Get(), project.Get()); }
    std::u16string Label() { return Text(*project.Get(), &IKVProjectData::get_Label); }

    TemporaryFolder folder;
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVFileService> files = Create<IKVFileService>(CLSID_KVFileService);
};

TEST_F(FileServiceTest, SavesTheWholeDocumentInUtf16)
{
    project->put_Label(Str(u"Caf\u00e9").Get());
    project->put_DisplayName(Str(u"C").Get());
    ASSERT_EQ(S_OK, Save(folder.File("Trip.xml")));
    EXPECT_EQ(folder.Path().u16string(), Text(*project.Get(), &IKVProjectData::get_ProjectDirectory));
    const std::string bytes = folder.Read("Trip.xml");
    EXPECT_TRUE(bytes.starts_with("\xFF\xFE<"));
    EXPECT_NE(bytes.npos, bytes.find(Utf16File("encoding=\"UTF-16\"?>").substr(2)));
    EXPECT_NE(bytes.npos, bytes.find(Utf16File("xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"").substr(2)));
    EXPECT_NE(bytes.npos, bytes.find(Utf16File("<Productions/>").substr(2)));
    EXPECT_NE(bytes.npos,
              bytes.find(Utf16File("<!--DVD Project xml file created using KVProject object.-->").substr(2)));

    const auto again = NewProject();
    EXPECT_EQ(S_OK, files->LoadProject(folder.File("Trip.xml").Get(), again.Get()));
    EXPECT_EQ(S_OK, files->SaveProject(folder.File("Again.xml").Get(), again.Get()));
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

TEST_F(FileServiceTest, DropsAPrefixAtTheStartOfANameOnly)
{
    ASSERT_EQ(S_OK, Save(WithPrefix(folder.File("Trip.xml"))));
    EXPECT_FALSE(folder.Read("Trip.xml").empty());
    EXPECT_EQ(S_OK, Load(WithPrefix(folder.File("Trip.xml"))));
    ASSERT_EQ(S_OK, Save(folder.File("a file::b.xml")));
    EXPECT_FALSE(folder.Read("a file::b.xml").empty());
}

TEST_F(FileServiceTest, NamesALoadedProjectAfterItsFileWhereItHasNoName)
{
    project->put_Label(Str(u"kept").Get());
    ASSERT_EQ(S_OK, Save(folder.File("Holiday.v2.xml")));
    const auto loaded = NewProject();
    ASSERT_EQ(S_OK, files->LoadProject(folder.File("Holiday.v2.xml").Get(), loaded.Get()));
    EXPECT_EQ(u"kept", Text(*loaded.Get(), &IKVProjectData::get_Label));
    EXPECT_EQ(u"Holiday.v2", Text(*loaded.Get(), &IKVProjectData::get_DisplayName));
    EXPECT_EQ(folder.Path().u16string(), Text(*loaded.Get(), &IKVProjectData::get_ProjectDirectory));
}

TEST_F(FileServiceTest, RefusesArgumentsThatAreNone)
{
    const auto stranger = ParseXml(u"<a/>");
    const Bstr file = folder.File("x.xml");
    EXPECT_EQ(E_INVALIDARG, files->SaveProject(nullptr, project.Get()));
    project->put_ProjectDirectory(Str(u"kept").Get());
    EXPECT_EQ(E_INVALIDARG, files->SaveProject(Str(u"").Get(), project.Get()));
    EXPECT_EQ(E_INVALIDARG, files->SaveProject(Str(u"file::").Get(), project.Get()));
    EXPECT_EQ(u"kept", Text(*project.Get(), &IKVProjectData::get_ProjectDirectory));
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

TEST_F(FileServiceTest, SaysWhichFileIsMissing)
{
    const MessageBoxes boxes;
    project->put_Label(Str(u"kept").Get());
    EXPECT_EQ(E_INVALIDARG, Load(folder.File("none.xml")));
    EXPECT_EQ((std::vector{u"No such file: " + std::u16string(folder.File("none.xml").View())}), boxes.shown);
    EXPECT_EQ(u"kept", Label());
}

TEST_F(FileServiceTest, LeavesTheProjectAloneWhenAFileDoesNotParse)
{
    const std::vector<std::pair<const char*, std::string>> broken{
        {"nothing", ""},
        {"no markup", "Dear diary"},
        {"a half", "<Root><Project"},
        {"two roots", "<Root/><Root/>"},
        {"an attribute twice", "<Root><Project label='a' label='b'/></Root>"},
        {"an odd byte", "\xFF\xFE<"},
        {"a false encoding", "<?xml version='1.0' encoding='UTF-16'?><Root/>"},
        {"bad UTF-8", "<Root label='\xC3('/>"},
        {"an entity bomb", "<!DOCTYPE a [<!ENTITY b 'bb'><!ENTITY c '&b;&b;'>]><a>&c;</a>"},
        {"a foreign entity", "<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]><a>&b;</a>"},
        {"a zero", std::string("<Root>\0</Root>", 14)}};
    project->put_Label(Str(u"kept").Get());
    project->AddTitle(0, nullptr);
    for (const auto& [what, content] : broken) {
        folder.Write("bad.xml", content);
        EXPECT_EQ(KV_E_FILE_DOES_NOT_PARSE, Load(folder.File("bad.xml"))) << what;
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
                          {"<Root><Project/></Root>", REGDB_E_CLASSNOTREG},
                          {"<Root><Project Version='799'/></Root>", REGDB_E_CLASSNOTREG},
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
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder.Path()), {})) << "no temporary file is left";
    EXPECT_TRUE(FAILED(Save(folder.File("none/Trip.xml")))) << "no such folder";
    EXPECT_TRUE(FAILED(Save(Bstr(folder.Path().u16string())))) << "a folder";

    project->AddTitle(0, nullptr);
    ComPtr<IKVTitle> title;
    project->GetTitle(1, title.Put());
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
    const auto document = ParseXml(u"<Snapshot/>");
    ComPtr<IXMLDOMElement> root;
    document->get_documentElement(root.Put());
    EXPECT_EQ(S_OK, files->PersistToXML(root.Get(), project.Get()));
    project->put_Label(Str(u"changed").Get());
    EXPECT_EQ(S_OK, files->PersistFromXML(root.Get(), project.Get()));
    EXPECT_EQ(u"inside", Label());
    EXPECT_EQ(KV_E_NO_XML_NODE, files->PersistFromXML(nullptr, project.Get()));
    EXPECT_EQ(E_POINTER, files->PersistToXML(nullptr, project.Get()));
}

} // namespace
} // namespace kv::test
