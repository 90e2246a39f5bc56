#include "platform/xml/Documents.h"

#include <barrier>
#include <thread>
#include <vector>

namespace kv::test {
namespace {

constexpr int kThreads = 3;

template <class Body>
void RunThreads(Body&& body)
{
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&body, i] { body(i); });
}

TEST(DomThreads, ReadAndCopyOneDocumentAtOnce)
{
    const std::string xml =
        "<effect id=\"1\"><plugin_data><html>a<b>c</b></html></plugin_data><Time>1.5</Time></effect>";
    const auto document = Parsed(xml);
    const auto effect = Find(*document, "/effect");
    RunThreads([&](int) {
        for (int round = 0; round < 300; ++round) {
            ComPtr<IXMLDOMNode> copy;
            ASSERT_EQ(effect->cloneNode(VARIANT_TRUE, copy.Put()), S_OK);
            const auto html = Find(*copy, "plugin_data/html");
            ASSERT_EQ(html->put_text(Text("own").Get()), S_OK);
            EXPECT_EQ(TextOf(*copy), "own1.5");
            const auto own = NewDocument();
            ASSERT_EQ(own->importNode(Find(*document, "//html").Get(), VARIANT_TRUE, copy.Put()), S_OK);
            ASSERT_EQ(own->appendChild(copy.Get(), nullptr), S_OK);
            EXPECT_EQ(XmlOf(*own), "<html>a<b>c</b></html>");
            ComPtr<IXMLDOMElement> made;
            ASSERT_EQ(document->createElement(Text("made").Get(), made.Put()), S_OK);
            ASSERT_EQ(made->appendChild(html.Get(), nullptr), S_OK);
            EXPECT_EQ(XmlOf(*made), "<made><html>own</html></made>");

            ComPtr<IXMLDOMNode> parent;
            ASSERT_EQ(Find(*document, "//b")->get_parentNode(parent.Put()), S_OK);
            EXPECT_EQ(TextOf(*parent), "ac");
            EXPECT_EQ(parent.Get(), Find(*document, "//html").Get()) << "one object while it is held";
            EXPECT_EQ(XmlOf(*document), xml);
        }
    });
    EXPECT_EQ(XmlOf(*document), xml);
}

TEST(DomThreads, ReleaseNodesWhileOthersEditThem)
{
    constexpr std::size_t kItems = 60;
    std::string items;
    for (std::size_t i = 0; i < kItems; ++i)
        items += "<i n=\"1\"><j/></i>";
    for (int round = 0; round < 40; ++round) {
        const auto first = Parsed("<r><part>" + items + "</part><text>x</text></r>");
        const auto second = Parsed("<s/>");
        std::vector<ComPtr<IXMLDOMNode>> held;
        ComPtr<IXMLDOMNodeList> all;
        ASSERT_EQ(first->selectNodes(Text("//i | //i/@n | //j").Get(), all.Put()), S_OK);
        ComPtr<IXMLDOMNode> node;
        while (all->nextNode(node.Put()) == S_OK)
            held.push_back(std::move(node));
        ASSERT_EQ(held.size(), 3 * kItems);
        all.Reset();

        std::barrier start(kThreads + 1);
        std::jthread editor([&] {
            start.arrive_and_wait();
            const auto part = Find(*first, "//part");
            const auto target = Find(*second, "/s");
            for (int move = 0; move < 5; ++move) {
                ASSERT_EQ(target->appendChild(part.Get(), nullptr), S_OK);
                ASSERT_EQ(target->removeChild(part.Get(), nullptr), S_OK);
                ASSERT_EQ(Find(*first, "/r")->appendChild(part.Get(), nullptr), S_OK);
                const auto item = FindElement(*part, "i[last()]");
                ASSERT_EQ(item->removeAttribute(Text("n").Get()), S_OK);
                ASSERT_EQ(part->removeChild(item.Get(), nullptr), S_OK);
            }
            ASSERT_EQ(Find(*first, "//text")->put_text(Text("y").Get()), S_OK);
        });
        RunThreads([&](int index) {
            start.arrive_and_wait();
            for (std::size_t i = static_cast<std::size_t>(index); i < held.size(); i += kThreads)
                held[i].Reset();
        });
        editor.join();
        EXPECT_EQ(XmlOf(*first),
                  "<r><text>y</text><part>" + items.substr(0, items.size() / kItems * (kItems - 5)) + "</part></r>");
        EXPECT_EQ(XmlOf(*second), "<s/>");
    }
}

} // namespace
} // namespace kv::test
