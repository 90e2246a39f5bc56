// What is read of a rich text, and what setting one attribute makes of it.

#include "KVProjectData/Engine/TextMarkup.h"
#include "KVProjectData/effects/RichTextEditor.h"
#include "TextSupport.h"

namespace kv::test {
namespace {

std::string Repeated(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(TextPlugInHelper, TellsWhatRunsHaveInCommon)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "Arial 24 null 1 -1 101 ffffff '?'"},
        {"abc", "Arial 24 null 1 -1 101 ffffff 'abc'"},
        {"<p align='center'><font face='A' fontHeight='30' color='#11223344' SelectedStyleId='7'>a<br/>b</font></p>",
         "A 30 30 2 7 101 44332211 'ab'"},
        {"<font face='A'><p align='right'><font face='B'><b><i><u>x</u></i></b></font></p></font>",
         "B 24 null 4 -1 20202 ffffff 'x'"},
        {"<b>a</b>b", "Arial 24 null 1 -1 401 ffffff 'ab'"},
        {"<u>a</u><i>b</i>", "Arial 24 null 1 -1 40104 ffffff 'ab'"},
        {"<b>a</b><i><b>b</b></i><b>c</b>", "Arial 24 null 1 -1 204 ffffff 'abc'"},
        {"<font face='A' fontHeight='9' color='Red' SelectedStyleId='1'><p align='left'>a</p></font>b",
         "undetermined 0? undetermined 0 -1 101 ffffff? 'ab'"},
        {"<p align='left'>a</p><p align='right'>b</p><p align='left'>c</p>", "Arial 24 null 0 -1 101 ffffff 'abc'"},
        {"<p align='diagonal'>a</p>", "Arial 24 null ffffffff -1 101 ffffff 'a'"},
        {"<p align=''>a</p>", "Arial 24 null ffffffff? -1 101 ffffff 'a'"},
        {"<p align='justify'>a</p>", "Arial 24 null 8 -1 101 ffffff 'a'"},
        {"<font face='' fontHeight='' SelectedStyleId='' color=''>a</font>", " 0?  1 0 101 0 'a'"},
        {"<font fontHeight=' 42.9pt' SelectedStyleId='99999999999' color='REDdish'>a</font>",
         "Arial 42  42.9pt 1 2147483647 101 ff 'a'"},
        {"<font fontHeight='+-5' SelectedStyleId='+5'>a</font>", "Arial 0? +-5 1 5 101 ffffff 'a'"},
        {"<font fontHeight='NaN' SelectedStyleId='-3x'>a</font>", "Arial 0? NaN 1 -3 101 ffffff 'a'"},
        {"<font fontHeight='stringRef:Height'>a</font>", "Arial 0? stringRef:Height 1 -1 101 ffffff 'a'"},
        // Without a text the last element tells.
        {"<font face='A'><p/></font><p align='right'><font face='B'><b/></font></p><!-- -->",
         "B 24 null 4 -1 201 ffffff '?'"},
        {"<p>a&#32;</p>&#32;<table><![CDATA[<b>]]></table><?font a?>", "Arial 24 null 1 -1 101 ffffff 'a  <b>'"},
        {"<p placeholder='1'><b>~</b></p>", "Arial 24 null 1 -1 201 ffffff '?'"},
        {"<p placeholder='1'>~words</p><p>~</p>", "Arial 24 null 1 -1 101 ffffff '~words~'"},
        {"<p placeholder='1'><!-- c -->~<b>b</b></p><p placeholder='1'>~<p>~</p></p>",
         "Arial 24 null 1 -1 401 ffffff '~b~~'"},
        {"<font face='A'><body>a</body></font>", "A 24 null 1 -1 101 ffffff 'a'"},
    };
    for (const auto& [content, told] : cases) {
        CZXPTextPlugInHelper text;
        ASSERT_EQ(S_OK, text.Load(TextData(content))) << content;
        EXPECT_EQ(Told(text), told) << content;
    }
}

TEST(TextPlugInHelper, ReadsColours)
{
    const std::pair<const char*, ZXTextColour> cases[] = {
        {"red", {255, 0, 0, 0}},
        {"reD and more", {255, 0, 0, 0}},
        {"fuchsia", {255, 0, 255, 0}},
        {"Re", {14, 0, 0, 0}},
        {"#11223344", {0x11, 0x22, 0x33, 0x44}},
        {"#FF8000", {255, 128, 0, 0}},
        {"#1G2233", {1, 0, 0, 0}},
        {"#", {0, 0, 0, 0}},
        {" #112233", {0, 0, 0, 0}},
        {"R10G20B30T40", {0x10, 0x20, 0x30, 0x40}},
        {"T 4, G5", {0, 5, 0, 4}},
        {"r10g20", {0, 0, 0, 0}},
        {"", {0, 0, 0, 0}},
    };
    for (const auto& [text, colour] : cases)
        EXPECT_EQ(ParseTextColour(text), colour) << text;
}

TEST(TextPlugInHelper, SetsOneAttributeAndLeavesTheRest)
{
    struct Case {
        const char* content;
        const char* setting;
        const char* edited;
    };
    const Case cases[] = {
        // Fonts.
        {"<p>a</p><p><font color='Red'>b</font></p>", "face=B",
         "<font face='B'><p>a</p><p><font color='Red' face='B'>b</font></p></font>"},
        {"<font face='A'>a</font>", "face=B", "<font face='B'>a</font>"},
        {"a<!-- c --><font face='A'>a</font><p>b</p><br/><p><font>c</font></p>d<i>e</i>", "face=B",
         "<font face='B'>a</font><!-- c --><font face='B'>a</font><font face='B'><p>b</p></font><br/>"
         "<p><font face='B'>c</font></p><font face='B'>d<i>e</i></font>"},
        {"<font face='A'>a</font>", "face=a", "<font face='A'>a</font>"},
        {"<font face='A'>a</font>", "face=", "<font face=''>a</font>"},
        {"<font face='A'>a</font>", "face=a,b;c\\d>e<f='&", "<font face='a,b;c\\d&gt;e&lt;f='&amp;'>a</font>"},
        {"<font face='A' fontHeight='9'>a</font>", "face=TEXTED_REMOVE", "<font fontHeight='9'>a</font>"},
        {"<p>a</p>", "face=Arial", "<p>a</p>"},
        {"", "face=B", "<font face='B'/>"},
        {"<p/>", "height=30", "<font fontHeight='30'><p/></font>"},
        {"<font fontHeight='24.5'>a</font>", "height=24", "<font fontHeight='24.5'>a</font>"},
        {"<font fontHeight='24'>a</font>", "heightString=24", "<font fontHeight='24'>a</font>"},
        {"a", "heightString=stringRef:H", "<font fontHeight='stringRef:H'>a</font>"},
        {"<font/><p><br/></p>", "styleId=-5",
         "<font SelectedStyleId='-5'/><font SelectedStyleId='-5'><p><br/></p></font>"},
        {"<font color='White'>a</font>", "colour=ffffff", "<font color='White'>a</font>"},
        {"<font color='Red'>a</font>b", "colour=44332211",
         "<font color='#11223344' faceTexture='0'>a</font><font color='#11223344' faceTexture='0'>b</font>"},
        {"<?font a?>a", "face=B", "<font face='B'><?font a?>a</font>"},
        // Paragraphs.
        {"<p>a</p><p align='right'>b<p>c</p></p>", "justify=2",
         "<p align='center'>a</p><p align='center'>b<p>c</p></p>"},
        {"<p>a<p align='left'>b</p></p>", "justify=8", "<p align='justify'>a<p align='justify'>b</p></p>"},
        {"<font><p>a</p></font><p>b</p>", "justify=4", "<font><p align='right'>a</p></font><p align='right'>b</p>"},
        {"a<b>b</b>", "justify=2", "<p align='center'>a<b>b</b></p>"},
        {"<font>a<p>b</p>c<br/>d</font><i>e</i>", "justify=2",
         "<font><p align='center'>a</p><p align='center'>b</p><p align='center'>c<br/>d</p></font>"
         "<p align='center'><i>e</i></p>"},
        {"<br/>", "justify=2", "<p align='center'><br/></p>"},
        {"", "justify=2", "<p align='center'/>"},
        {"a", "justify=1", "a"},
        // Styles.
        {"a<b>b<i>c</i></b>&#32;<i>d</i>", "style=200", "<b>a</b><b>b<i>c</i></b><b>&#32;</b><i><b>d</b></i>"},
        {"<p><![CDATA[a]]></p>", "style=20002", "<p><i><u><![CDATA[a]]></u></i></p>"},
        {"<p><br/></p>", "style=200", "<p><b><br/></b></p>"},
        {"", "style=200", "<b/>"},
        {"<b>a</b>", "style=202", "<b>a</b>"},
        {"<b>a</b>", "style=2", "<b><i>a</i></b>"},
        {"a<b>b</b>", "style=100", "a b"},
        {"a <b>b</b>c<i>d<b>e</b></i>", "style=100", "a bc<i>d e</i>"},
        {"<b>a<i>b</i>c<!-- d --></b>e", "style=100", "a<i>b</i>c<!-- d -->e"},
        {"<p>a<b><b>b</b><i><b>c</b></i></b></p>", "style=100", "<p>a b<i>c</i></p>"},
        {"<b>a<![CDATA[b]]></b><b>c</b>d<b>e</b>", "style=100", "a b cd e"},
        {"<b>a<b/><b>b</b></b><b><i>c</i>d<![CDATA[]]></b>", "style=100", "a b<i>c</i>d"},
        {"<p placeholder='1'>~<b><![CDATA[]]></b></p>", "style=100", "<p placeholder='1'>~</p>"},
        {"<u><b/></u>", "style=10100", ""},
        {"<i>a</i>b", "style=20001", "<u>a</u><u>b</u>"},
        // Words.
        {"<p align='right' id='1'><font face='A'>a<b>b</b></font>c</p><p>d</p><hr/>", "string=new <words>",
         "<p align='right' id='1'><font face='A'>new &lt;words&gt;</font></p>"},
        {"<font face='A'><p>a</p><p/></font><font>b</font>", "string=r:~", "<font face='A'><p>r:~</p></font>"},
        {"<b>a</b>b", "string=c", "<b>c</b>"},
        {"<p/><p align='right'><font face='A'/></p>", "string=a", "<p align='right'><font face='A'>a</font></p>"},
        {"<p><br/></p>", "string=a", "<p>a</p>"},
        {"<br/>", "string=a", "<p>a</p>"},
        {"", "string=&#32;", "<p>&amp;#32;</p>"},
        {"<p placeholder='1' align='right'><b>~</b></p>", "string= ", "<p align='right'><b>&#32;</b></p>"},
        {"a<br/>b", "string=", "<p placeholder='1'>~</p>"},
        {"", "string=", "<p placeholder='1'>~</p>"},
        {"<font face='A'><i><p align='right'><b>a</b>c</p></i></font>",
         "string=", "<p align='right' placeholder='1'><font face='A'><i><b>~</b></i></font></p>"},
    };
    for (const auto& [content, setting, edited] : cases) {
        SCOPED_TRACE(std::string(content) + " " + setting);
        const XmlElement data = TextData(content);
        CZXPTextPlugInHelper text;
        ASSERT_EQ(S_OK, text.Attach(data));
        EXPECT_EQ(S_OK, Put(text, setting));
        EXPECT_EQ(BodyOf(data), edited);
        const std::string told = Told(text);
        EXPECT_EQ(S_OK, Put(text, setting));
        EXPECT_EQ(BodyOf(data), edited) << "twice";
        EXPECT_EQ(Told(text), told) << "twice";
    }
}

TEST(TextPlugInHelper, LeavesTheDocumentAloneUntilItIsSaved)
{
    const XmlElement data = XmlElement::Parse("<plugin_data><Speed>2</Speed><html lang='en'><head/><body bgcolor='1'>"
                                              "<p>a</p></body><body>b</body></html><html/></plugin_data>");
    const std::string before = data.Markup();
    CZXPTextPlugInHelper text;
    ASSERT_EQ(S_OK, text.Load(data));
    ASSERT_EQ(S_OK, Put(text, "style=200"));
    EXPECT_EQ(data.Markup(), before);
    XmlElement saved;
    ASSERT_EQ(S_OK, text.Save(saved));
    EXPECT_EQ(Plain(saved.Child("html").Markup()), "<html lang=\"en\"><head/><body bgcolor=\"1\"><p><b>a</b></p></body>"
                                                   "<body>b</body></html>");
    CZXPTextPlugInHelper again;
    ASSERT_EQ(S_OK, again.Load(XmlElement::Parse(saved.Markup())));
    EXPECT_EQ(Told(again), Told(text));
    double speed = 0;
    EXPECT_EQ(S_OK, again.Transform().get_Speed(&speed));
    EXPECT_EQ(2, speed);
}

TEST(TextPlugInHelper, AnswersClearlyToWhatCannotBe)
{
    CZXPTextPlugInHelper text;
    const std::string nothing = "Arial? 24? null ffffffff! -1 101? ffffff? '?'";
    const auto same = {"face=Arial", "height=24", "heightString=24", "justify=1",
                       "styleId=-1", "style=101", "colour=ffffff",   "string="};
    const auto expectNothing = [&](const char* why) {
        EXPECT_EQ(Told(text), nothing) << why;
        for (const char* setting : same)
            EXPECT_EQ(E_FAIL, Put(text, setting)) << why << setting;
        XmlElement saved;
        EXPECT_EQ(E_FAIL, text.Save(saved)) << why;
    };
    expectNothing("new");
    EXPECT_EQ(E_INVALIDARG, text.Load({}));
    for (const char* xml :
         {"<plugin_data/>", "<plugin_data><html/></plugin_data>", "<plugin_data><body/></plugin_data>",
          "<effect><plugin_data><html><body/></html></plugin_data></effect>"}) {
        ASSERT_EQ(S_OK, text.Load(TextData("<b>a</b>")));
        EXPECT_EQ(E_INVALIDARG, text.Load(XmlElement::Parse(xml))) << xml;
        expectNothing(xml);
    }

    const XmlElement data = TextData("a<font face='A' fontHeight='0'>b</font>");
    ASSERT_EQ(S_OK, text.Attach(data));
    const std::string before = BodyOf(data);
    const std::pair<HRESULT, std::vector<const char*>> results[] = {
        {E_INVALIDARG,
         {"height=7", "height=301", "height=-1", "justify=0", "justify=3", "justify=-1", "style=4", "style=600",
          "style=40001"}},
        {E_FAIL, {"face=a\x01", "heightString=\x1f", "string=a\xef\xbf\xbf"}},
        {S_OK, {"style=0"}}};
    for (const auto& [result, settings] : results) {
        for (const char* setting : settings) {
            EXPECT_EQ(result, Put(text, setting)) << setting;
            EXPECT_EQ(BodyOf(data), before) << setting;
        }
    }
    EXPECT_EQ(S_OK, Put(text, "height=8"));
    EXPECT_EQ(S_OK, Put(text, "height=300"));
    const char16_t halfPair[] = {0xD800, 0};
    EXPECT_EQ(E_FAIL, text.put_String(Bstr(halfPair).Get()));
    EXPECT_EQ(E_POINTER, text.get_Face(nullptr));
    EXPECT_EQ(E_POINTER, text.get_Height(nullptr));
    EXPECT_EQ(E_POINTER, text.get_HeightString(nullptr));
    EXPECT_EQ(E_POINTER, text.get_Justify(nullptr));
    EXPECT_EQ(E_POINTER, text.get_SelectedStyleId(nullptr));
    EXPECT_EQ(E_POINTER, text.get_Style(nullptr));
    EXPECT_EQ(E_POINTER, text.get_Color(nullptr));
    EXPECT_EQ(E_POINTER, text.get_String(nullptr));
}

TEST(TextPlugInHelper, BoundsHugeTexts)
{
    std::string levels = "deep";
    for (int i = 0; i < 200; ++i)
        levels = i % 3 ? "<font face='" + std::to_string(i) + "'>" + levels + "</font>x" : "<b>" + levels + "</b>y";
    const std::string contents[] = {Repeated("<b>a </b>b<p align='right'>c</p><font face='A'>d</font>", 2'500),
                                    Repeated("a<b>some words</b>", 10'000),
                                    Repeated("<p/>", 10'000),
                                    levels,
                                    std::string(1 << 20, 'x'),
                                    "<font face='" + std::string(1 << 20, 'x') + "'>a</font>"};
    for (const std::string& content : contents) {
        const XmlElement data = TextData(content);
        CZXPTextPlugInHelper text;
        ASSERT_EQ(S_OK, text.Attach(data));
        for (const char* setting : {"face=B", "justify=2", "style=20202", "colour=1", "style=10101"})
            EXPECT_EQ(S_OK, Put(text, setting)) << content.substr(0, 40) << setting;
        EXPECT_EQ(S_OK, text.put_String(Bstr(std::u16string(1 << 20, u'y')).Get()));
        EXPECT_EQ(Told(text).substr(0, 25), "B 24 null 2 -1 101 1 'yyy") << content.substr(0, 40);
    }
}

TEST(TextPlugInHelper, LeavesTreesAloneThatCannotBecomeDeeper)
{
    // Too deep, with all that stands above a text in a project, to take one more.
    const XmlElement data = TextData("a" + Repeated("<s>", 225) + "b" + Repeated("</s>", 225));
    const std::string before = BodyOf(data);
    CZXPTextPlugInHelper text;
    ASSERT_EQ(S_OK, text.Attach(data));
    for (const char* setting : {"face=B", "justify=2", "style=200", "string="}) {
        EXPECT_EQ(E_FAIL, Put(text, setting)) << setting;
        EXPECT_EQ(BodyOf(data), before) << setting;
    }
    EXPECT_EQ(S_OK, Put(text, "string=c"));
    EXPECT_EQ(BodyOf(data), "c");
    // Several styles are set or none is: there is room for one.
    const XmlElement full = TextData("<b>" + Repeated("<s>", 222) + "a" + Repeated("</s>", 222) + "</b>");
    const std::string bold = BodyOf(full);
    ASSERT_EQ(S_OK, text.Attach(full));
    EXPECT_EQ(E_FAIL, Put(text, "style=20102"));
    EXPECT_EQ(BodyOf(full), bold);
    EXPECT_EQ(S_OK, Put(text, "style=2"));
}

TEST(TextCommand, IsReadFromItsTemplate)
{
    const std::pair<const char*, const char*> cases[] = {
        {"f:<b></b>", "f b||"},
        {"x:<u>", "x u||"},
        {"e:<p >", "e p||"},
        {"f:<font face=Times New Roman></font>", "f font face->Times New Roman||"},
        {"f:<font color=#11223344, faceTexture=0></font>", "f font color->#11223344 faceTexture->0||"},
        {"f:<font face=A;B=C\\;\\>\\\\,d=></font>", "f font face->A,B=C;>\\ d->||"},
        {"r:f:<b></b>", "r |f:<b></b>|"},
        {"r:", "r ||"},
    };
    for (const auto& [command, expected] : cases) {
        const TextCommand read = TextCommand::Parse(command);
        std::string told = std::string(1, read.mode) + " " + read.element;
        for (const auto& [name, value] : read.attributes)
            told += " " + name + "->" + value;
        EXPECT_EQ(told + "|" + read.text + "|", expected) << command;
    }
    for (const char* value : {"", "a, b; c", "\\;>\\", ";;", "<=>"})
        EXPECT_EQ(TextCommand::Parse("f:<font face=" + InCommand(value) + ">").attributes.front().second, value);
    for (const char* bad : {"", "f", "f<b>", "g:<b>", "f:b>", "f:<b", "f:<font a", "f:<font a>", "f:<font a=b",
                            "f:<font a=b\\", "F:<b>"}) {
        EXPECT_THROW(TextCommand::Parse(bad), Error) << bad;
    }
}

TEST(TextCommand, IsRefusedByTheEditorWhenItKnowsNone)
{
    const XmlElement data = TextData("<b>a</b>");
    RichTextEditor editor(data.Child("html").Child("body"));
    for (const char* command : {"f:<table></table>", "x:<font></font>", "x:<p></p>", "f:<></>"})
        EXPECT_THROW(editor.Apply(TextCommand::Parse(command)), Error) << command;
    editor.Apply(TextCommand::Parse("e:<b></b>"));
    EXPECT_EQ(BodyOf(data), "<b>a</b>");
    editor.Apply(TextCommand::Parse("f:<p align=TEXTED_REMOVE></p>"));
    EXPECT_EQ(BodyOf(data), "<p><b>a</b></p>");
}

} // namespace
} // namespace kv::test
