#include "platform/system/AtomicFile.h"
#include "platform/xml/Documents.h"
#include "support/Files.h"

#include <chrono>
#include <sys/stat.h>

namespace kv::test {
namespace {

struct Failure {
    LONG code = 0;
    LONG line = 0;
    LONG position = 0;
    LONG offset = 0;
    std::string reason;
    std::string source;
};

Failure FailureOf(IXMLDOMDocument& document)
{
    ComPtr<IXMLDOMParseError> error;
    EXPECT_EQ(document.get_parseError(error.Put()), S_OK);
    Failure failure;
    EXPECT_EQ(error->get_errorCode(&failure.code), S_OK);
    EXPECT_EQ(error->get_line(&failure.line), S_OK);
    EXPECT_EQ(error->get_linepos(&failure.position), S_OK);
    EXPECT_EQ(error->get_filepos(&failure.offset), S_OK);
    failure.reason = Read(*error, &IXMLDOMParseError::get_reason);
    failure.source = Read(*error, &IXMLDOMParseError::get_srcText);
    return failure;
}

class DocumentTest : public testing::Test {
protected:
    HRESULT Load(std::string_view name)
    {
        VARIANT_BOOL parsed = VARIANT_TRUE;
        const HRESULT result = document->load(Variant(folder.File(name)), &parsed);
        EXPECT_EQ(parsed != VARIANT_FALSE, result == S_OK);
        return result;
    }

    HRESULT LoadBytes(std::string_view bytes)
    {
        folder.Write("file.xml", bytes);
        return Load("file.xml");
    }

    TemporaryFolder folder;
    ComPtr<IXMLDOMDocument> document = NewDocument();
};

/// A text in UTF-16, low or high byte first.
std::string Utf16Bytes(std::string_view utf8, bool highFirst)
{
    std::string bytes;
    for (const char16_t unit : ToUtf16(utf8)) {
        const char low = static_cast<char>(unit & 0xff);
        const char high = static_cast<char>(unit >> 8);
        bytes += highFirst ? high : low;
        bytes += highFirst ? low : high;
    }
    return bytes;
}

std::string Nested(int levels)
{
    std::string xml;
    for (int i = 0; i < levels; ++i)
        xml += "<e>";
    for (int i = 0; i < levels; ++i)
        xml += "</e>";
    return xml;
}

TEST_F(DocumentTest, TellsWhyAndWhereATextIsNoDocument)
{
    // reason: a part of it
    const std::tuple<std::string, std::string_view, LONG, LONG> cases[]{
        {"", "no element", 1, 1},
        {"not XML", "outside of the root", 1, 1},
        {"<r/>\n x", "outside of the root", 2, 2},
        {"<r>\n<a>", "ends within an element", 2, 4},
        {"<r a='1", "does not end", 1, 8},
        {"<r", "malformed", 1, 3},
        {"<r>\n</s>", "does not match", 2, 4},
        {"<r/>\n<s/>", "more than one root", 2, 2},
        {"<r a='1'\n b='2' a='3'/>", "told twice", 2, 8},
        {"<r a='1'b='2'/>", "malformed", 1, 9},
        {"<r a='<'/>", "'<'", 1, 7},
        {"<r>\xc3\xa4 &nbsp;</r>", "unknown entity", 1, 6},
        {"<r>&amp</r>", "no reference", 1, 4},
        {"<r>&#0;</r>", "does not allow", 1, 4},
        {"<r>a\x01</r>", "does not allow", 1, 5},
        {"<r>a]]>b</r>", "']]>'", 1, 7},
        {"<r>\n<!-- a--b --></r>", "'--'", 2, 7},
        {"<r><!-- a---></r>", "'--'", 1, 10},
        {"<r><!-- a </r>", "comment does not end", 1, 8},
        {"<![CDATA[a]]><r/>", "outside of the root", 1, 1},
        {"<!DOCTYPE r [<!ENTITY a 'b'>]><r>&a;</r>", "document types", 1, 1},
        {"<r><?XML a?></r>", "does not stand at the start", 1, 9},
        {" <?xml version='1.0'?><r/>", "does not stand at the start", 1, 7},
        {"<r \xef\xb7\x90='1'/>", "name is malformed", 1, 4},
        {"<r a\xef\xb7\xaf='1'/>", "no value", 1, 5},
        {"<?xml?><r/>", "version", 1, 6},
        {"<?xml version='2.0'?><r/>", "version of XML is not supported", 1, 16},
        {"<?xml version='1.0' version='1.0'?><r/>", "in this order", 1, 21},
        {"<?xml version='1.0' encoding='utf-8' encoding='utf-8'?><r/>", "in this order", 1, 38},
        {"<?xml version='1.0'encoding='utf-8'?><r/>", "in this order", 1, 20},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><r/>", "encoding is not supported", 1, 31},
        {"<?xml version='1.0' standalone='maybe'?><r/>", "'standalone'", 1, 33},
        {"<?xml version=1.0?><r/>", "not quoted", 1, 15},
        {"<?xml version='1.0", "does not end", 1, 16},
        {Nested(257), "too deep", 1, 3 * 257 + 1},
        {Nested(10'000), "too deep", 1, 3 * 257 + 1}};
    for (const auto& [xml, reason, line, position] : cases) {
        VARIANT_BOOL parsed = VARIANT_TRUE;
        EXPECT_EQ(document->loadXML(Text(xml).Get(), &parsed), S_FALSE) << xml;
        EXPECT_FALSE(parsed);
        EXPECT_EQ(XmlOf(*document), "");
        const Failure failure = FailureOf(*document);
        EXPECT_NE(failure.code, 0);
        EXPECT_NE(failure.reason.find(reason), std::string::npos) << xml << ": " << failure.reason;
        EXPECT_EQ(std::pair(failure.line, failure.position), std::pair(line, position)) << xml;
    }
    EXPECT_EQ(document->loadXML(Text("<r>\n\xf0\x9f\x8e\xac &x;\n</r>").Get(), nullptr), S_FALSE);
    const Failure failure = FailureOf(*document);
    EXPECT_EQ(failure.source, "\xf0\x9f\x8e\xac &x;");
    EXPECT_EQ(failure.offset, 6);
}

TEST_F(DocumentTest, AcceptsAllThatXmlAllows)
{
    for (const std::string& xml :
         {std::string("<r/>"), Nested(256), std::string("<?xml version = \"1.7\"\nstandalone='no' ?>\n<r/>"),
          std::string("<?xml version='1.0' encoding='utf-16'?><r/>"), std::string("<?xml-s encoding='utf-16'?><r/>"),
          std::string("<!-- - --><r a='>]]>' b=\"'\"\n>]] > ]&gt; <!----><?p?><![CDATA[]]]]>></r  ><?q ?>\n"),
          std::string("<\xc3\xa4:\xe2\x80\x8c.\xef\xb7\x8f\xf0\x90\x80\x80 _='&#x10FFFF;&#9;&quot;'/>")}) {
        Parsed(xml);
        EXPECT_EQ(LoadBytes(xml), xml.find("?xml ") != xml.npos && xml.find("utf-16") != xml.npos ? S_FALSE : S_OK);
    }
}

TEST_F(DocumentTest, ReadsTheEncodings)
{
    const std::string text = "<r a=\"\xc3\xa4\xe2\x82\xac\">\xf0\x9f\x8e\xac</r>";
    const std::string said = "<?xml version='1.0' encoding='";
    const std::string low("\xff\xfe");
    const std::string high("\xfe\xff");
    const std::tuple<std::string, std::string_view, LONG> cases[]{
        {text, "", 0},
        {"\xef\xbb\xbf" + text, "", 0},
        {said + "UTF-8'?>" + text, "", 0},
        {low + Utf16Bytes(text, false), "", 0},
        {high + Utf16Bytes(text, true), "", 0},
        {Utf16Bytes(text, false), "", 0},
        {Utf16Bytes(text, true), "", 0},
        {low + Utf16Bytes(said + "Utf-16'?>" + text, false), "", 0},
        {Utf16Bytes(said + "UTF-16'?>" + text, true), "", 0},
        {said + "UTF-16'?>" + text, "says UTF-16", 31},
        {low + Utf16Bytes(said + "UTF-8'?>" + text, false), "UTF-16 but says otherwise", 31},
        {said + "ISO-8859-1'?><r a='\xe4'/>", "encoding is not supported", 31},
        {"<r a='\xe4'/>", "not UTF-8", 7},
        {"<r>\xc3\xa4\xc0\x80</r>", "not UTF-8", 5},
        {"<r>\xed\xa0\x80</r>", "not UTF-8", 4},
        {low + Utf16Bytes(text, false) + ' ', "ends within a character", 16},
        {low + Utf16Bytes("<r>\xc3\xa4", false) + "\x3c\xd8", "half of a surrogate", 5},
        {high + Utf16Bytes("<r>", true) + "\xdc\x3c\xd8\x3c", "half of a surrogate", 4},
        {std::string("<r>\0</r>", 8), "does not allow", 4}};
    for (const auto& [bytes, reason, position] : cases) {
        ASSERT_EQ(LoadBytes(bytes), reason.empty() ? S_OK : S_FALSE) << testing::PrintToString(bytes);
        if (reason.empty()) {
            EXPECT_EQ(XmlOf(*Find(*document, "/*")), text);
        } else {
            const Failure failure = FailureOf(*document);
            EXPECT_NE(failure.reason.find(reason), std::string::npos) << failure.reason;
            EXPECT_EQ(failure.position, position) << reason;
        }
    }
    // Wherever in plain text another character stands.
    constexpr std::size_t kRuns = 70;
    for (std::size_t before = 0; before < kRuns; ++before) {
        const std::string mixed =
            "<r>" + std::string(before, 'a') + "\xf0\x9f\x8e\xac" + std::string(kRuns, 'b') + "</r>";
        for (const std::string& bytes : {Utf16Bytes(mixed, false), Utf16Bytes(mixed, true)}) {
            ASSERT_EQ(LoadBytes(bytes), S_OK);
            EXPECT_EQ(XmlOf(*Find(*document, "/*")), mixed);
        }
    }
}

TEST_F(DocumentTest, KeepsEveryTextThroughAFile)
{
    std::string everything;
    for (char c = 1; c < 127; ++c)
        if (c >= ' ' || c == '\t' || c == '\n' || c == '\r') everything += c;
    const std::string long16 = std::string(100'001, 'x') + "\xf0\x9f\x8e\xac\r";
    for (const std::string& text :
         {std::string(" "), std::string("\r"), std::string("\n"), std::string("\t \r\n"), std::string(" a\r\n\r b "),
          std::string("]]>"), std::string("]]]]>>\r]"), std::string("<!--&amp;--><?x?>"), std::string("\"'&lt;&#13;"),
          std::string("\xc2\x80\xc2\x85\xe2\x80\xa8\xef\xbf\xbd\xf4\x8f\xbf\xbf"), everything, long16}) {
        for (const std::string_view encoding : {"utf-8", "UTF-16"}) {
            const auto saved =
                Parsed("<?xml version='1.0' encoding='" + std::string(encoding) + "'?><r><t/><c><x/></c></r>");
            ComPtr<IXMLDOMNode> section;
            ASSERT_EQ(saved->createCDATASection(Text(text).Get(), section.Put()), S_OK);
            ASSERT_EQ(FindElement(*saved, "/r")->setAttribute(Text("a").Get(), Variant(ToUtf16(text))), S_OK);
            ASSERT_EQ(Find(*saved, "//t")->put_text(Text(text).Get()), S_OK);
            ASSERT_EQ(Find(*saved, "//c")->appendChild(section.Get(), nullptr), S_OK);
            ASSERT_EQ(saved->save(Variant(folder.File("file.xml"))), S_OK);
            ASSERT_EQ(folder.Read("file.xml").starts_with("\xff\xfe"), encoding == "UTF-16");
            ASSERT_EQ(Load("file.xml"), S_OK) << text;
            EXPECT_EQ(TextOf(*Find(*document, "/r/@a")), text);
            EXPECT_EQ(TextOf(*Find(*document, "//t")), text);
            EXPECT_EQ(TextOf(*Find(*document, "//c")), text);
        }
    }
}

TEST_F(DocumentTest, ReadsRegularFilesOnly)
{
    ASSERT_EQ(mkfifo(folder.PathOf("pipe").c_str(), 0600), 0);
    std::filesystem::create_directory(folder.Path() / "sub");
    folder.Write("huge", "<r/>");
    std::filesystem::resize_file(folder.Path() / "huge", (std::uintmax_t{512} << 20) + 3);
    for (const auto& [name, code] : {std::pair{"pipe", E_ACCESSDENIED},
                                     {"sub", E_ACCESSDENIED},
                                     {"missing", ResultFromErrno(ENOENT)},
                                     {"huge", HRESULT{MakeResult(0xC00CE500)}}}) {
        document = Parsed("<old/>");
        EXPECT_EQ(Load(name), S_FALSE);
        EXPECT_EQ(FailureOf(*document).code, code) << name << ": " << FailureOf(*document).reason;
        EXPECT_EQ(XmlOf(*document), "");
    }
}

TEST_F(DocumentTest, SavesToTheFileThatIsNamedOrNotAtAll)
{
    const Variant cut(std::u16string(folder.File("file").View()) + std::u16string(u"\0.xml", 5));
    EXPECT_EQ(Parsed("<r/>")->save(cut), E_INVALIDARG);
    EXPECT_EQ(document->load(cut, nullptr), E_INVALIDARG);
    EXPECT_EQ(document->save(Variant(u"")), E_INVALIDARG);
    EXPECT_EQ(document->save(Variant(LONG{1})), E_INVALIDARG);
    EXPECT_EQ(folder.Entries(), 0);
    folder.Write("file", "old");
    {
        const FileSizeLimit limit(100);
        const auto big = Parsed("<r>" + std::string(200'000, 'x') + "</r>");
        EXPECT_EQ(big->save(Variant(folder.File("file"))), ResultFromErrno(EFBIG));
    }
    EXPECT_EQ(folder.Read("file"), "old");
    EXPECT_EQ(folder.Entries(), 1);
}

TEST_F(DocumentTest, AMillionAttributesTakeBoundedTime)
{
    struct Counter final : XMLAttributeVisitor {
        void Attribute(std::string_view, std::string_view value) override { sum += value.size(); }
        std::size_t sum = 0;
    };
    constexpr int kAttributes = 1'000'000;
    std::string xml = "<r";
    for (int i = 0; i < kAttributes; ++i)
        xml += " a" + std::to_string(i) + "='1'";
    const auto start = std::chrono::steady_clock::now();
    Counter counter;
    ASSERT_EQ(LoadBytes(xml + "/>"), S_OK);
    EXPECT_EQ(Query<IXMLElementAttributes>(Find(*document, "/r"))->ReadAttributes(&counter), S_OK);
    EXPECT_EQ(counter.sum, kAttributes);
    EXPECT_EQ(document->save(Variant(folder.File("file.xml"))), S_OK);
    EXPECT_EQ(LoadBytes(xml + " a17='1'/>"), S_FALSE);
    EXPECT_EQ(FailureOf(*document).position, static_cast<LONG>(xml.size()) + 2);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

} // namespace
} // namespace kv::test
