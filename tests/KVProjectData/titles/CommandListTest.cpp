#include "support/Contents.h"

#include <thread>

namespace kv::test {
namespace {

class CommandListTest : public testing::Test {
protected:
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVTitle> title = AddTitle(*project.Get());
};

TEST_F(CommandListTest, KeepsCommandsAndCopiesOfTheirXml)
{
    const auto fragment = ParseElement(u"<file name='a.mpg'/>");
    std::array records{DiscCommandParams{PlayClip, 1, 2, fragment.Get()},
                       DiscCommandParams{PlayNextTitle, -3, 0, nullptr}};
    const auto commands = Query<IKVCommandList>(title);
    ASSERT_EQ(S_OK, commands->SetCommandList(2, records.data()));
    fragment->setAttribute(Str(u"name").Get(), Variant(u"changed"));
    const std::vector<std::u16string> kept{u"6 1 2 <file name=\"a.mpg\"/>", u"9 -3 0"};
    EXPECT_EQ(kept, CommandsOf(title.Get()));

    LONG count = 0;
    DiscCommandParams* handed = nullptr;
    ASSERT_EQ(S_OK, commands->GetCommandList(&count, &handed));
    const UniqueTaskMem<DiscCommandParams> owned(handed);
    const auto copy = ComPtr<IXMLDOMNode>::Attach(handed[0].pXMLData);
    Query<IXMLDOMElement>(copy)->setAttribute(Str(u"name").Get(), Variant(u"changed"));
    EXPECT_EQ(kept, CommandsOf(title.Get()));
}

TEST_F(CommandListTest, RefusesWhatIsMissingAndTellsItsOwner)
{
    const auto sink = Make<RecordingSink>();
    const Connection connection(*project, *sink);
    const auto commands = Query<IKVCommandList>(title);
    LONG count = 7;
    DiscCommandParams* records = nullptr;
    EXPECT_EQ(E_POINTER, commands->GetCommandList(nullptr, &records));
    EXPECT_EQ(E_POINTER, commands->GetCommandList(&count, nullptr));
    EXPECT_EQ(S_OK, commands->GetCommandList(&count, &records));
    EXPECT_EQ(0, count);
    EXPECT_EQ(nullptr, records);
    EXPECT_EQ(E_POINTER, commands->SetCommandList(1, nullptr));
    Delivered(*project, *sink);

    DiscCommandParams record{StopPlayback, 0, 0, nullptr};
    EXPECT_EQ(S_OK, commands->SetCommandList(1, &record));
    EXPECT_EQ(S_OK, commands->SetCommandList(-1, nullptr));
    EXPECT_EQ(S_OK, commands->SetCommandList(0, nullptr));
    EXPECT_TRUE(CommandsOf(title.Get()).empty());
    EXPECT_EQ(std::vector(3, Event(EVENT_CommandListChanged, {IdOf(title)})), Delivered(*project, *sink));

    Query<IKVLocking>(title)->LockObject(VARIANT_TRUE);
    EXPECT_EQ(KV_E_LOCKED, commands->SetCommandList(0, nullptr));
    EXPECT_EQ(S_OK, commands->GetCommandList(&count, &records)) << "reading needs no lock check";
}

TEST_F(CommandListTest, SurvivesADocument)
{
    const auto file = ParseElement(u"<file><name>a.mpg</name></file>");
    const auto other = ParseElement(u"<File/>");
    std::vector<DiscCommandParams> records;
    for (LONG code = 0; code <= 9; ++code)
        records.push_back({static_cast<DiscCommand>(code), code, -code, nullptr});
    records.push_back({static_cast<DiscCommand>(42), 1, 2, nullptr});
    records.push_back({PlayClip, 0, 0, file.Get()});
    records.push_back({PlayClip, 0, 0, other.Get()});
    ASSERT_EQ(S_OK, Query<IKVCommandList>(title)->SetCommandList(static_cast<LONG>(records.size()), records.data()));
    ASSERT_EQ(S_OK, Query<IKVCommandList>(project)->SetCommandList(1, &records[3]));
    std::vector<std::u16string> kept = CommandsOf(title.Get());
    const auto document = SaveToDocument(*project);

    for (int load = 0; load < 2; ++load) {
        ASSERT_EQ(S_OK, project->loadXML(document.Get()));
        ASSERT_EQ(S_OK, project->GetTitle(1, title.Put()));
        kept.back() = u"6 0 0";
        EXPECT_EQ(kept, CommandsOf(title.Get())) << "only file and effect elements are kept";
        EXPECT_EQ(1u, CommandsOf(project.Get()).size()) << "loading again doubles nothing";
    }
}

TEST_F(CommandListTest, HandsOutXmlThatStandsForItself)
{
    const auto file = ParseElement(u"<file><name>a.mpg</name></file>");
    std::array records{DiscCommandParams{PlayClip, 1, 2, file.Get()}, DiscCommandParams{PlayMenu, 3, 4, file.Get()}};
    for (const auto& owner : {title, AddTitle(*project.Get())})
        ASSERT_EQ(S_OK, Query<IKVCommandList>(owner)->SetCommandList(2, records.data()));
    ASSERT_EQ(S_OK, project->loadXML(SaveToDocument(*project.Get()).Get()));
    const auto read = [this](LONG position) {
        const auto own = TitleAt(*project.Get(), position);
        for (int i = 0; i < 200; ++i) {
            EXPECT_EQ((std::vector<std::u16string>{u"6 1 2 <file><name>a.mpg</name></file>",
                                                   u"2 3 4 <file><name>a.mpg</name></file>"}),
                      CommandsOf(own.Get()));
        }
    };
    std::thread other(read, 2);
    read(1);
    other.join();

    LONG count = 0;
    DiscCommandParams* handed = nullptr;
    ASSERT_EQ(S_OK, Query<IKVCommandList>(TitleAt(*project.Get(), 1))->GetCommandList(&count, &handed));
    const UniqueTaskMem<DiscCommandParams> owned(handed);
    const auto first = ComPtr<IXMLDOMNode>::Attach(handed[0].pXMLData);
    ComPtr<IXMLDOMNode>::Attach(handed[1].pXMLData).Reset();
    ComPtr<IXMLDOMDocument> document;
    EXPECT_EQ(S_OK, first->get_ownerDocument(document.Put()));
    EXPECT_EQ(S_FALSE, document->get_documentElement(ComPtr<IXMLDOMElement>().Put())) << "not the one that was loaded";
    EXPECT_EQ(S_FALSE, first->get_parentNode(ComPtr<IXMLDOMNode>().Put()));
}

TEST_F(CommandListTest, RefusesXmlThatNoDocumentCouldHold)
{
    const auto nested = [](int levels) -> ComPtr<IXMLDOMNode> {
        std::u16string xml;
        for (int i = 1; i < levels; ++i)
            xml += u"<file>";
        xml += u"<file/>";
        for (int i = 1; i < levels; ++i)
            xml += u"</file>";
        return ParseElement(xml);
    };
    const auto document = ParseXml(u"<file/>");
    ComPtr<IXMLDOMNode> text;
    document->createTextNode(Str(u"a").Get(), text.Put());
    const auto commands = Query<IKVCommandList>(title);
    for (const ComPtr<IXMLDOMNode>& bad : {ComPtr<IXMLDOMNode>(document.Get()), text, nested(249)}) {
        std::array records{DiscCommandParams{PlayMenu, 0, 0, nullptr}, DiscCommandParams{PlayClip, 0, 0, bad.Get()}};
        EXPECT_EQ(E_INVALIDARG, commands->SetCommandList(2, records.data())) << ToUtf8(XmlOf(*bad.Get()));
        EXPECT_EQ(std::vector<std::u16string>{u"2 0 0"}, CommandsOf(title.Get()));
    }
    const auto deep = nested(248);
    DiscCommandParams deepest{PlayClip, 0, 0, deep.Get()};
    ASSERT_EQ(S_OK, commands->SetCommandList(1, &deepest));
    ASSERT_EQ(S_OK, project->loadXML(SaveToDocument(*project.Get()).Get()));
    ASSERT_EQ(S_OK, project->GetTitle(1, title.Put()));
    EXPECT_EQ(std::vector{u"6 0 0 " + XmlOf(*deep.Get())}, CommandsOf(title.Get()));
}

} // namespace
} // namespace kv::test
