#include "KVProjectData/content/StringRefs.h"

#include "KVProjectData/content/ContentPaths.h"
#include "platform/system/Registry.h"
#include "platform/xml/Element.h"
#include "support/Contents.h"
#include "support/Markup.h"

namespace kv::test {
namespace {

constexpr std::string_view kStrings = R"(<Strings>
<Language id="1033"><String id="Hello">Hello</String><String id="Long">twenty characters!!!</String>
<String id="Face">DejaVu Sans</String><String id="Height">36</String><String id="Pair">&#x1F3B5;&#x1F3B5;</String>
<String id="Empty"/><String id="ab-c">x</String></Language>
<Language id="1031"><String id="Hello">Hallo</String></Language></Strings>)";

class StringRefsTest : public testing::Test {
protected:
    StringRefsTest()
    {
        RegisterServers();
        std::filesystem::create_directories(folder.Path() / "DVD" / "Mandatory");
        WriteStrings(kStrings);
        Name(folder.Path().u16string());
    }
    ~StringRefsTest() override
    {
        Registry::DeleteValue(Hive::LocalMachine, kKey, kName);
        LookForContent();
    }

    void WriteStrings(std::string_view strings) const
    {
        folder.Write("DVD/Mandatory/ZXPlugInStrings.xml", std::string(strings));
    }
    static void Name(std::u16string content)
    {
        ASSERT_EQ(S_OK, Registry::Set(Hive::LocalMachine, kKey, kName, std::move(content)));
        LookForContent();
    }
    /// The library has a table of its own beside the one that the test is linked with.
    static void LookForContent()
    {
        RenewContentPaths();
        Create<IKVFileService>(CLSID_KVFileService);
    }

    /// Below the project of a document.
    static HRESULT Resolve(std::string& content)
    {
        const auto document =
            ParseXml(ToUtf16("<Root><Project>" + content + "</Project><Other label=\"stringRef:Hello\"/></Root>"));
        ComPtr<IXMLDOMNode> project;
        EXPECT_EQ(S_OK, document->selectSingleNode(Bstr(u"/Root/Project").Get(), project.Put()));
        const HRESULT result = ResolveStringRefs(project.Get());
        ComPtr<IXMLDOMNode> other;
        EXPECT_EQ(S_OK, document->selectSingleNode(Bstr(u"/Root/Other[@label='stringRef:Hello']").Get(), other.Put()))
            << "outside of the project";
        content = Plain(XmlElement(project.Get()).Markup());
        content = content.substr(9, content.rfind("</") - 9);
        return result;
    }

    static constexpr std::u16string_view kKey = u"SOFTWARE\\KORVA\\ZENDA\\Zenda\\Paths";
    static constexpr std::u16string_view kName = u"AlternateContent";
    TemporaryFolder folder;
};

TEST_F(StringRefsTest, AttributesAndRichTextTakeTheStrings)
{
    constexpr std::pair<const char*, const char*> kCases[]{
        // Only of the two names, at any depth, with text around, and nothing that is not found or is empty.
        {R"(<a label="stringRef:Hello"/>)", R"(<a label="Hello"/>)"},
        {R"(<a><b buttonTextCache="1. stringRef:Hello!"/></a>)", R"(<a><b buttonTextCache="1. Hello!"/></a>)"},
        {R"(<a title="stringRef:Hello">stringRef:Hello</a>)", R"(<a title="stringRef:Hello">stringRef:Hello</a>)"},
        {R"(<a label="stringRef:None"/><b label="stringRef:Empty"/>)",
         R"(<a label="stringRef:None"/><b label="stringRef:Empty"/>)"},
        // A text is one, however it is cut.
        {"<html><i>string</i>Ref:L<b>ong</b></html>", "<html><i>twenty</i> char<b>acters!!!</b></html>"},
        {"<html><b>string</b><i>Ref:Long</i></html>", "<html><b>twenty</b><i> characters!!!</i></html>"},
        {"<html><b>stringRe</b><i>f:Hello</i><u/></html>", "<html><b>Hello</b><i></i><u/></html>"},
        {"<html><p><b>stringRef:</b></p><i>Hello</i>!</html>", "<html><p><b>Hello!</b></p><i></i></html>"},
        {"<html><b>s</b><b>tringRef:Pair</b></html>", "<html><b></b><b>\xF0\x9F\x8E\xB5\xF0\x9F\x8E\xB5</b></html>"},
        // Of fonts, face and height, but only in rich text.
        {R"(<font face="stringRef:Face"/>)", R"(<font face="stringRef:Face"/>)"},
        {R"(<html><font face="stringRef:Face" fontHeight="stringRef:Height" color="stringRef:Hello">x</font></html>)",
         R"(<html><font face="DejaVu Sans" fontHeight="36" color="stringRef:Hello">x</font></html>)"},
    };
    for (const auto& [before, after] : kCases) {
        std::string content = before;
        EXPECT_EQ(S_OK, Resolve(content));
        EXPECT_EQ(after, content) << before;
    }
}

TEST_F(StringRefsTest, EachPassReadsTheStringFileAnewWhereThereIsOne)
{
    const std::string reference = R"(<a label="stringRef:Hello"/><html>stringRef:Hello</html>)";
    WriteStrings(R"(<Strings><Language id="1041"><String id="Hello">Changed</String></Language></Strings>)");
    std::string content = reference;
    EXPECT_EQ(S_OK, Resolve(content));
    EXPECT_EQ(R"(<a label="Changed"/><html>Changed</html>)", content);
    WriteStrings("<Strings");
    EXPECT_EQ(E_FAIL, Resolve(content = reference));
    EXPECT_EQ(reference, content);
    EXPECT_THROW(SharedStringRefs().LookUp("stringRef:Hello"), Error);
    EXPECT_EQ(S_OK, Resolve(content = "<a label=\"no reference\"/>"));
}

TEST_F(StringRefsTest, LoadingAProjectResolvesItsDocument)
{
    for (const char* xml :
         {R"(<Root><Project label="stringRef:Face"><Titles><Title ID="5" label="stringRef:Hello"/>)"
          "</Titles></Project></Root>",
          R"(<Root><Titles/><Project><Titles><Title label="stringRef:Hello"/></Titles></Project></Root>)"}) {
        const auto project = NewProject();
        ASSERT_EQ(S_OK, project->loadXML(ParseElement(ToUtf16(xml)).Get()));
        EXPECT_EQ(u"Hello", Text(*TitleAt(*project.Get(), 1).Get(), &IKVTitle::get_Label));
    }
    // A document without a root of this name is left alone.
    const auto other = ParseElement(uR"(<Other label="stringRef:Hello"><a label="stringRef:Hello"/></Other>)");
    EXPECT_EQ(S_OK, ResolveStringRefs(other.Get()));
    EXPECT_EQ(S_OK, other->selectSingleNode(Bstr(u"//a[@label='stringRef:Hello']").Get(), ComPtr<IXMLDOMNode>().Put()));
}

} // namespace
} // namespace kv::test
