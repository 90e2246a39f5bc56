#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/persistence/XMLDataLoader.h"
#include "KVProjectData/tree/ObjectID.h"
#include "platform/system/ErrorReporter.h"
#include "platform/system/Locale.h"
#include "support/Contents.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <limits>

namespace kv::test {
namespace {

class LoadingTest : public testing::Test {
protected:
    /// Loads from the document itself, with `content` below its `Project` element.
    void Load(std::u16string_view content, std::u16string_view attributes = {})
    {
        std::u16string xml(u"<Root><Project ");
        xml.append(attributes).append(u">").append(content).append(u"</Project></Root>");
        EXPECT_EQ(S_OK, project->loadXML(ParseXml(xml).Get()));
    }

    ComPtr<IKVTitle> Title(LONG position) { return TitleAt(*project.Get(), position); }
    LONG Bitrate(LONG title)
    {
        return ValueOf(*Query<IKVEncodingParams>(Title(title)).Get(), &IKVEncodingParams::get_VideoBitrate);
    }
    std::vector<LONG> Titles() { return TitleIds(*project.Get()); }
    std::u16string Label() { return Text(*project.Get(), &IKVProjectData::get_Label); }

    ComPtr<IKVProjectData> project = NewProject();
};

/// What the error reporter is told meanwhile, without the places in the sources.
struct ReportsOf {
    ReportsOf()
    {
        SetErrorReporter([this](std::string_view line) {
            constexpr std::string_view kMark = ": *** Error ";
            EXPECT_TRUE(line.starts_with("KVXMLDataLoader(") && line.ends_with('\n')) << line;
            line.remove_prefix(line.find(kMark) + kMark.size());
            lines.emplace_back(line.substr(0, line.size() - 1));
        });
    }
    ReportsOf(const ReportsOf&) = delete;
    ReportsOf& operator=(const ReportsOf&) = delete;
    ~ReportsOf() { SetErrorReporter(nullptr); }

    std::vector<std::string> lines;
};

/// A document with a value other than its default in every attribute.
constexpr std::u16string_view kFull =
    uR"x(<Project DiscSize="8 (BluRay_25)" ID="0" TVStandard="2 (PAL)" ThemeSource="t&amp;t" Version="900")x"
    uR"x( discFormat="7 (BluRay_BDMV)" discVideoType="3 (RealD_3D)" doCompression="0" fitToDisc="1" label="&lt;L&gt;")x"
    uR"x( menuless="-1" name="N" onDiscProject="1" onDiscSizeKB="4000000000" options="64 (Cmd_PlayRemainingTitles)")x"
    uR"x( remainingCaptures="2"><Titles NumItems="1"><Title ID="1000057" discIndex="3" flags="4" label="One")x"
    uR"x( stillWaitSecs="9" tag="2 (FirstPlay)" vobDuration="77" vobSize="2.5"><Encoding VBREncoding="1")x"
    uR"x( aspectRatio="2 (16x9)" audioBitrate="448000" audioChannels="6" audioFormat="6 (DTS)")x"
    uR"x( subpictureFormat="2 (RLE_8Bit)" syncToProject="0" twoPassEncoding="1" videoBitrate="20000000")x"
    uR"x( videoFormat="1 (AVC/H.264)" videoResolution="15 (HD_1080p_1920)" wideDisplayMode="3 (Both)"/>)x"
    uR"x(<Commands><PlayClip code="6" param1="1" param2="2"><effect a="1"><b/></effect></PlayClip></Commands></Title>)x"
    uR"x(</Titles><Menus NumItems="0"/><DataFiles NumItems="1"><File ID="1000060" destPath="d" sourcePath="/no/s")x"
    uR"x( tag="4294967295"/></DataFiles><Commands><StopPlayback code="3" param1="-2147483648" param2="2147483647"/>)x"
    uR"x(</Commands><Encoding VBREncoding="0" aspectRatio="1 (4x3)" audioBitrate="1" audioChannels="1")x"
    uR"x( audioFormat="1 (LPCM)" subpictureFormat="1 (RLE)" syncToProject="0" twoPassEncoding="0" videoBitrate="2")x"
    uR"x( videoFormat="3 (MPEG-1)" videoResolution="4 (Quarter_D1)" wideDisplayMode="2 (PanAndScan)"/></Project>)x";

TEST_F(LoadingTest, GivesBackADocumentWithEveryAttributeSet)
{
    ReportsOf reports;
    const auto document = ParseXml(std::u16string(u"<Root>").append(kFull).append(u"</Root>"));
    ASSERT_EQ(S_OK, project->loadXML(document.Get()));
    ComPtr<IXMLDOMNode> saved;
    SaveToDocument(*project.Get())->selectSingleNode(Str(u"/Root/Project").Get(), saved.Put());
    EXPECT_EQ(kFull, XmlOf(*saved.Get()));
    EXPECT_THAT(reports.lines, testing::IsEmpty());
}

TEST_F(LoadingTest, LooksForTheProjectTwoLevelsBelowTheNode)
{
    const auto document =
        ParseXml(u"<a><!-- x --><Root><Project label='inner'><Titles><Title ID='9'/></Titles></Project></Root></a>");
    for (const char16_t* path : {u"/", u"/a", u"/a/Root", u"/a/Root/Project"}) {
        ComPtr<IXMLDOMNode> node;
        ASSERT_EQ(S_OK, document->selectSingleNode(Str(path).Get(), node.Put())) << ToUtf8(path);
        const bool reaches = std::u16string_view(path) != u"/";
        EXPECT_EQ(S_OK, project->loadXML(node.Get()));
        EXPECT_EQ(reaches ? u"inner" : u"", Label()) << ToUtf8(path);
        EXPECT_EQ(reaches ? 1u : 0u, Titles().size()) << ToUtf8(path);
    }
}

TEST_F(LoadingTest, StartsFromAClearedProject)
{
    project->put_Label(Str(u"old").Get());
    project->AddTitle(0, nullptr);
    EXPECT_EQ(KV_E_NO_XML_NODE, project->loadXML(nullptr));
    EXPECT_EQ(u"old", Label());
    EXPECT_EQ(1u, Titles().size());
    Load(u"", u"DiscSize='1'");
    EXPECT_EQ(u"", Label());
    EXPECT_EQ(SZ_CD650, ValueOf(*project.Get(), &IKVProjectData::get_DiscSize));
    EXPECT_TRUE(Titles().empty());
}

TEST_F(LoadingTest, MakesOfEveryTextWhatASaveTellsAgain)
{
    // Taken up by the first number that is read in the process; where the machine has no German, it stays as it is.
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    const std::u16string ofComma = ParseDoubleUserLocale(u"12,5") ? u"12.5|" : u"0|";
    const auto saved = [this](const std::u16string& attribute, std::initializer_list<const char16_t*> texts) {
        std::u16string all;
        const bool ofTitle = attribute == u"vobSize" || attribute == u"stillWaitSecs";
        for (const char16_t* text : texts) {
            const std::u16string written = attribute + u"='" + text + u"'";
            Load(ofTitle ? u"<Titles><Title " + written + u"/></Titles>" : u"", ofTitle ? u"" : written);
            EXPECT_EQ(S_OK, project->loadXML(SaveToDocument(*project.Get()).Get()));
            const auto document = SaveToDocument(*project.Get());
            all += AttributeText(*document.Get(), ofTitle ? u"//Title" : u"//Project", attribute) + u'|';
        }
        return all;
    };
    EXPECT_EQ(u"3 (DVD_dashVR)|3 (DVD_dashVR)|11 (AVCHD)|0 ()|0 ()|-7 (unknown)|12 (unknown)|",
              saved(u"discFormat", {u"3 (any)", u"  3 (DVD_dashVR)", u"11", u"DVD_Video", u"", u"-7x", u"+12"}));
    EXPECT_EQ(u"9 (BluRay_50)|10 (unknown)|", saved(u"DiscSize", {u"9", u"10"}));
    EXPECT_EQ(u"5 (Archive_TitleImageSources|Archive_MenuSources)|"
              u"65 (Archive_TitleImageSources|Cmd_PlayRemainingTitles)|128 ()|"
              u"4294967295 (Archive_TitleImageSources|Archive_TitleVideoSources|Archive_MenuSources|"
              u"Audio_NormalizeLevels|Video_ProgressiveOutput|Editor_BtnFreeResizing|Cmd_PlayRemainingTitles)|",
              saved(u"options", {u"5", u"65", u"128", u"4294967295"}));
    EXPECT_EQ(u"2147483648 ()|2147483648 ()|2147483648 ()|4294967168 ()|4294967168 ()|",
              saved(u"options", {u"2147483648 (x)", u"-2147483648", u"-99999999999999999999", u"4294967168", u"-128"}));
    EXPECT_EQ(
        u"0.1|1234.5|4700000000|1e+300|1.5e-07|0|0|0|" + ofComma,
        saved(u"vobSize", {u"0.1", u"1234.5", u"4700000000", u"1e+300", u"1.5e-7", u"inf", u"nan", u"1e999", u"12,5"}));
    EXPECT_EQ(u"5|5|5|5|", saved(u"stillWaitSecs", {u"99999999999", u"-2147483649", u"1e40", u"NaN"}));
    Load(u"", u"options='99999999999999999999'");
    EXPECT_EQ(0xFFFFFFFF, ValueOf(*project.Get(), &IKVProjectData::get_Options));
}

/// A project whose attributes cannot be read for lack of memory, or for another failure.
class FailingProject final : public CProjectNode, public Object<IUnknown> {
public:
    explicit FailingProject(HRESULT failure) : CProjectNode(typeProject), m_failure(failure) {}

    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive&) override { throw Error(m_failure); }

private:
    const HRESULT m_failure;
};

TEST(LoaderTest, EndsForLackOfMemoryOnly)
{
    const auto document = ParseXml(u"<Root><Project/></Root>");
    for (const char16_t* path : {u"/Root", u"/Root/Project"}) {
        ComPtr<IXMLDOMNode> node;
        document->selectSingleNode(Str(path).Get(), node.Put());
        for (const auto& [failure, result] : {std::pair{E_OUTOFMEMORY, E_OUTOFMEMORY}, {DISP_E_OVERFLOW, S_OK}}) {
            const auto failing = Make<FailingProject>(failure);
            CKVXMLDataLoader loader(*failing.Get());
            EXPECT_EQ(result, Guarded([&] { return loader.Load(node.Get()); })) << ToUtf8(path);
        }
    }
}

TEST_F(LoadingTest, KeepsTheIdsOfADocumentAndNumbersTheRestAfterThem)
{
    const LONG next = IdOf(AddTitle(*project.Get())) + 50;
    const auto title = [](LONGLONG id) { return u"<Title ID='" + ToUtf16(std::to_string(id)) + u"'/>"; };
    // Whatever number the counter stands at, a later element has it.
    std::u16string titles = u"<Titles><Title/><Title ID='0'/>";
    for (LONG id = next; id > next - 50; --id)
        titles += title(id);
    for (const LONGLONG id : std::initializer_list<LONGLONG>{2147483647, 2146483648, 4294967291, next})
        titles += title(id);
    Load(titles + u"</Titles>");
    const std::vector<LONG> ids = Titles();
    ASSERT_EQ(56u, ids.size());
    EXPECT_GT(ids[0], next);
    EXPECT_GT(ids[1], ids[0]);
    for (LONG i = 0; i < 50; ++i)
        EXPECT_EQ(next - i, ids[static_cast<std::size_t>(i) + 2]);
    EXPECT_EQ((std::vector<LONG>{2147483647, 2146483648, -5, next}), std::vector(ids.end() - 4, ids.end()));
    for (LONG i = 0; i < 50; ++i) {
        ComPtr<IUnknown> found;
        EXPECT_EQ(S_OK, project->FindByID(next - i, found.Put()));
        EXPECT_EQ(Query<IUnknown>(Title(3 + i)), found) << "the first that has it; no part of a title has it before";
    }
    const LONG fresh = IdOf(AddTitle(*project.Get()));
    EXPECT_TRUE(fresh > ids[1] && fresh < 2146483648) << fresh << ": IDs are left for a host's work";
}

TEST(ObjectIDTest, LooksForFreeIdsNearTheEnd)
{
    constexpr LONG kLast = std::numeric_limits<LONG>::max();
    constexpr LONG kFirstScarce = kLast - 999'999;
    for (const LONG taken : {kLast, kFirstScarce, kFirstScarce + 1, kFirstScarce + 3})
        PassOverID(taken);
    EXPECT_LT(TakeNextID(), kFirstScarce - 1);
    PassOverID(kFirstScarce - 1);
    EXPECT_EQ(kFirstScarce + 2, TakeNextID());
    EXPECT_EQ(kFirstScarce + 4, TakeNextID());
    LONG last = 0;
    const auto takeAll = [&last] {
        for (;;)
            last = TakeNextID();
    };
    EXPECT_THROW(takeAll(), Error);
    EXPECT_EQ(kLast - 1, last);
}

TEST_F(LoadingTest, PassesOverAndReportsWhatItDoesNotKnow)
{
    ReportsOf reports;
    Load(u"<!-- note --><?target data?>text<Unknown><Titles><Title/></Titles><Commands><PlayMenu/></Commands></Unknown>"
         u"<titles><Title/></titles><Titles NumItems='99' other='1'><Unknown/><Title label='one'><Title/>"
         u"<Palette/><Encoding videoBitrate='5'><Commands/></Encoding></Title><File/></Titles>"
         u"<DataFiles><Title/><File tag='3'><Title/>a\nb</File></DataFiles><Title/>"
         u"<Palette><Project label='below a leaf'/></Palette><File><Project label='below a leaf'/></File>",
         u"unknown='1' label='L'");
    EXPECT_EQ(u"L", Label());
    ASSERT_EQ(1u, Titles().size());
    EXPECT_EQ(u"one", Text(*Title(1).Get(), &IKVTitle::get_Label));
    EXPECT_EQ(5, Bitrate(1));
    EXPECT_EQ(1, ValueOf(*project.Get(), &IKVProjectData::get_DataFileCount));
    EXPECT_TRUE(CommandsOf(project.Get()).empty());
    const std::string misplaced = ": the element does not belong here";
    const std::string unknown = ": the element is not known";
    EXPECT_THAT(
        reports.lines,
        testing::ElementsAre(
            "/Root/Project/@unknown: the attribute is not known", "/Root/Project: text does not belong here: \"text\"",
            "/Root/Project/Unknown" + unknown, "/Root/Project/titles" + unknown,
            "/Root/Project/Titles/@other: the attribute is not known", "/Root/Project/Titles/Unknown" + unknown,
            "/Root/Project/Titles/Title/Title" + misplaced, "/Root/Project/Titles/Title/Palette" + misplaced,
            "/Root/Project/Titles/Title/Encoding/Commands" + misplaced, "/Root/Project/Titles/File" + misplaced,
            "/Root/Project/DataFiles/Title" + misplaced, "/Root/Project/DataFiles/File/Title" + misplaced,
            "/Root/Project/DataFiles/File: text does not belong here: \"a b\"", "/Root/Project/Title" + misplaced,
            "/Root/Project/Palette" + misplaced, "/Root/Project/File" + misplaced));
}

TEST_F(LoadingTest, ReportsWhatStandsAroundTheProjectFromWhereverItIsLoaded)
{
    const auto document = ParseXml(u"<Root xmlns:dt='urn:x' odd='1'>text<Extra><Title/></Extra><Title/><Project/>"
                                   u"<Productions any='1'>kept<Thing/></Productions><Productions/></Root>");
    for (const char16_t* path : {u"/", u"/Root", u"/Root/Project"}) {
        ReportsOf reports;
        ComPtr<IXMLDOMNode> node;
        ASSERT_EQ(S_OK, document->selectSingleNode(Str(path).Get(), node.Put()));
        EXPECT_EQ(S_OK, project->loadXML(node.Get()));
        if (std::u16string_view(path) == u"/Root/Project") {
            EXPECT_THAT(reports.lines, testing::IsEmpty());
        } else {
            EXPECT_THAT(reports.lines,
                        testing::ElementsAre(
                            "/Root/@odd: the attribute is not known", "/Root: text does not belong here: \"text\"",
                            "/Root/Extra: the element is not known", "/Root/Title: the element does not belong here",
                            "/Root/Productions[2]: further productions are not loaded"));
        }
    }
}

TEST_F(LoadingTest, ReportsTheFirstPlacesAndCountsTheRest)
{
    ReportsOf reports;
    std::u16string titles;
    for (int i = 0; i < 1'000; ++i)
        titles += u"<Title ID='" + std::u16string(i, u'\u20ac') + u"'/>";
    Load(u"<Titles>" + titles + u"</Titles>");
    EXPECT_EQ(1'000u, Titles().size());
    ASSERT_EQ(201u, reports.lines.size());
    EXPECT_EQ("/Root/Project/Titles/Title[2]/@ID: the value \"\u20ac\" cannot be read", reports.lines[1]);
    EXPECT_EQ(std::string("/Root/Project/Titles/Title[200]/@ID: the value \"") + ToUtf8(std::u16string(26, u'\u20ac')) +
                  "...\" cannot be read",
              reports.lines[199]);
    EXPECT_EQ("800 other places of the document are passed over", reports.lines[200]);
}

TEST_F(LoadingTest, LeavesWhatCannotBeReadAsItIsAndLoadsTheRest)
{
    ReportsOf reports;
    Load(u"<Titles><Title label='bad' stillWaitSecs='many' tag='2'><Encoding videoBitrate='5'/></Title>"
         u"<Title label='good' stillWaitSecs='7'/></Titles>",
         u"onDiscSizeKB='12 KB' remainingCaptures='3' discFormat='DVD_Video'");
    EXPECT_THAT(reports.lines, testing::ElementsAre(
                                   "/Root/Project/@discFormat: the value \"DVD_Video\" is read as 0",
                                   "/Root/Project/@onDiscSizeKB: the value \"12 KB\" cannot be read",
                                   "/Root/Project/Titles/Title[1]/@stillWaitSecs: the value \"many\" cannot be read"));
    EXPECT_EQ(0u, ValueOf(*project.Get(), &IKVProjectData::get_OnDiscSize));
    EXPECT_EQ(3, ValueOf(*project.Get(), &IKVProjectData::get_RemainingCaptures));
    ASSERT_EQ(2u, Titles().size());
    EXPECT_EQ(5, Bitrate(1));
    EXPECT_EQ(5, ValueOf(*Title(1).Get(), &IKVTitle::get_StillWaitTime));
    EXPECT_EQ(2u, ValueOf(*Title(1).Get(), &IKVTitle::get_Tag));
    EXPECT_EQ(u"good", Text(*Title(2).Get(), &IKVTitle::get_Label));
    EXPECT_EQ(7, ValueOf(*Title(2).Get(), &IKVTitle::get_StillWaitTime));
    Load(u"", u"options='x'");
    EXPECT_EQ(1u, ZXUErrorStack().size()) << "those of the last load";
}

TEST_F(LoadingTest, KeepsTheXmlOfCommandsByName)
{
    for (const auto& [child, kept] : {std::pair{u"<file a='1'><b/></file>", u"6 0 0 <file a=\"1\"><b/></file>"},
                                      {u"<effect/><file/>", u"6 0 0 <effect/>"},
                                      {u"<File/>", u"6 0 0"},
                                      {u"<!-- first --><file/>", u"6 0 0"},
                                      {u"", u"6 0 0"}}) {
        Load(std::u16string(u"<Commands><PlayClip code='6'>").append(child).append(u"</PlayClip></Commands>"));
        EXPECT_EQ(std::vector<std::u16string>{kept}, CommandsOf(project.Get()));
    }
}

TEST_F(LoadingTest, BearsTheDeepestDocument)
{
    std::u16string deep(u"<Titles/>");
    for (int level = 3; level < 255; level += 2)
        deep = u"<Titles><Title>" + deep + u"</Title></Titles>";
    Load(deep);
    EXPECT_EQ(1u, Titles().size());
}

} // namespace
} // namespace kv::test
