#include "platform/xml/Element.h"

#include "platform/xml/DataTypes.h"
#include "platform/xml/Documents.h"
#include "platform/xml/XmlMarkup.h"
#include "support/Files.h"

#include <functional>
#include <limits>

namespace kv::test {
namespace {

XmlElement RootOf(std::string_view xml)
{
    return XmlElement(Find(*Parsed(xml), "/*").Get());
}

HRESULT ResultOf(const std::function<void()>& edit)
{
    return Guarded([&] {
        edit();
        return S_OK;
    });
}

TEST(Element, KeepsValuesOfEveryType)
{
    auto data = XmlElement::New("plugin_data");
    data.Add("ParameterSet");
    XmlElement set = data.Add("ParameterSet");
    set.Set("Caps", ULONG{0xffffffff});
    set.Set("Caps", ULONG{0x70fff});
    set.Replace("IsSelectable", true);
    set.Add("x", 1e-7f);
    set.Add("y", 3e8f);
    set.Add("Time", 1.0 / 3);
    data.Replace(set);
    const auto sets = data.Children("ParameterSet");
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_EQ(sets[0], set);
    EXPECT_EQ(XmlOf(*set.Get()),
              "<ParameterSet xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"><Caps dt:dt=\"ui4\">462847</Caps>"
              "<IsSelectable dt:dt=\"boolean\">1</IsSelectable><x dt:dt=\"r4\">1e-07</x><y dt:dt=\"r4\">300000000</y>"
              "<Time dt:dt=\"r8\">0.3333333333333333</Time></ParameterSet>");
    const XmlElement loaded = XmlElement::Parse(data.Markup()).Child("ParameterSet");
    EXPECT_EQ(std::tuple(loaded.Typed("Caps", ULONG{0}), loaded.Typed("IsSelectable", false), loaded.Typed("x", 0.f),
                         loaded.Typed("y", 0.f), loaded.Typed("Time", 0.0)),
              std::tuple(0x70fffu, true, 1e-7f, 3e8f, 1.0 / 3));
    EXPECT_EQ(loaded.Child("Crop").Typed<ULONG>("EditMode"), std::nullopt);
    EXPECT_TRUE(loaded.Child("Rotation").Child("StartOffsetElements").Children("KeyFrame").empty());

    const Variant values[]{Variant(LONG{1028}), Variant(u"C:\\m <&> \xe4.png"), Variant(-0.5), Variant(true),
                           Variant()};
    XmlElement first = set.Add("Value");
    for (const Variant& value : values) {
        first.SetValue(value);
        const Variant read = XmlElement::Parse(set.Markup()).Typed("Value", Variant(u"none"));
        EXPECT_EQ(read.vt, value.vt);
        EXPECT_EQ(View(read.As(VT_BSTR).bstrVal), View(value.As(VT_BSTR).bstrVal));
    }
    EXPECT_EQ(first.Typed<Variant>("none"), std::nullopt);
    EXPECT_EQ(XmlOf(*first.Get()), "<Value/>");
    first.SetValue(Bstr(u"\x20ac").Get());
    EXPECT_EQ(first.Value<std::string>(), "\xe2\x82\xac");
    EXPECT_EQ(first.Attribute("dt:dt"), "string");
}

TEST(Element, TellsChildrenOfOneNameApartByLabelOrIndex)
{
    auto data = XmlElement::New("Crop");
    for (const LONG index : {0, 1, 10})
        data.Add({"fRect", index}, static_cast<float>(index) / 2);
    XmlElement named = data.Add({"fRect", "Crop"});
    named.Add("left", -1.0f);
    data.Set({"fRect", 1}, 7.0f);
    data.Set({"fRect", 2}, 8.0f);
    data.Remove({"fRect", 10});
    EXPECT_EQ(XmlOf(*data.Get()), "<Crop xmlns:dt=\"urn:schemas-microsoft-com:datatypes\">"
                                  "<fRect Name=\"0\" dt:dt=\"r4\">0</fRect><fRect Name=\"1\" dt:dt=\"r4\">7</fRect>"
                                  "<fRect Name=\"Crop\"><left dt:dt=\"r4\">-1</left></fRect>"
                                  "<fRect Name=\"2\" dt:dt=\"r4\">8</fRect></Crop>");
    EXPECT_EQ(data.Typed<float>({"fRect", 2}), 8.0f);
    EXPECT_EQ(data.Typed<float>({"fRect", 3}), std::nullopt);
    EXPECT_EQ(data.Child({"fRect", "Crop"}), named);
    EXPECT_EQ(data.Child({"fRect", "Crop"}).Get(), Find(*data.Get(), "fRect[@Name=\"Crop\"]").Get());
    EXPECT_TRUE(data.Remove("fRect"));
    EXPECT_FALSE(data.Remove("fRect"));
    EXPECT_EQ(
        XmlOf(*named.Get()),
        "<fRect Name=\"Crop\" xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"><left dt:dt=\"r4\">-1</left></fRect>")
        << "what is held lives on";
}

TEST(Element, ReadsTextAsTheTypeThatIsWantedOrNotAtAll)
{
    const std::optional<LONG> none;
    const std::tuple<std::string_view, std::optional<LONG>, std::optional<double>, std::optional<bool>> cases[]{
        {"5", 5, 5.0, true},     {"-1", -1, -1.0, true},    {" +7\n", 7, 7.0, true},
        {"2.5", 2, 2.5, true},   {".5e1", 5, 5.0, true},    {"0", 0, 0.0, false},
        {"true", {}, {}, true},  {"False", {}, {}, false},  {"2147483648", none, 2147483648.0, true},
        {"1e999", none, {}, {}}, {"", none, {}, {}},        {"-", none, {}, {}},
        {"12 KB", none, {}, {}}, {"-inf", none, {}, {}},    {"nan", none, {}, {}},
        {"0x10", none, {}, {}},  {"1<i/>0", 10, 10.0, true}};
    for (const auto& [text, number, real, truth] : cases) {
        const XmlElement root = RootOf("<r><v dt:dt='i2'>" + std::string(text) + "</v><v>3</v></r>");
        EXPECT_EQ(root.Typed<LONG>("v"), number) << text;
        EXPECT_EQ(root.Typed<double>("v"), real) << text;
        EXPECT_EQ(root.Typed<bool>("v"), truth) << text;
        EXPECT_EQ(root.Child("v").Value<double>(), real) << text;
        EXPECT_EQ(root.Typed("v", 1.5), real.value_or(1.5)) << text;
    }
    const XmlElement root = RootOf("<r><a>3000000000</a><b dt:dt='i2'>70000</b><c dt:dt='x'>1</c><d>x</d></r>");
    EXPECT_EQ(root.Typed<ULONG>("a"), 3'000'000'000u);
    EXPECT_EQ(root.Typed<ULONG>("none"), std::nullopt);
    EXPECT_EQ(root.Typed<Variant>("b"), std::nullopt);
    EXPECT_EQ(root.Typed<LONG>("b"), 70000);
    EXPECT_EQ(root.Typed("c", Variant()).vt, VT_BSTR);
    EXPECT_EQ(root.Typed("d", Variant()).vt, VT_BSTR);
    EXPECT_EQ(root.Typed<std::string>("d"), "x");
    EXPECT_EQ(root.Value<std::string>(), "300000000070000"
                                         "1x");
}

/// Every text in its own element of a name, and every such element around texts gone again.
void Wrap(XmlElement element, std::string_view name)
{
    for (XmlNode& node : element.Nodes()) {
        if (!node.IsText()) {
            Wrap(XmlElement(node), name);
            continue;
        }
        XmlElement wrapper = element.Add(name);
        element.Insert(wrapper, node);
        wrapper.SetText(node.Text());
        node.Remove();
    }
}

void Unwrap(XmlElement element, std::string_view name)
{
    for (XmlNode& node : element.Nodes()) {
        XmlElement child(node);
        if (!child) continue;
        Unwrap(child, name);
        if (child.Name() != name) continue;
        for (const XmlNode& inner : child.Nodes())
            element.Insert(inner, child);
        child.Remove();
    }
}

TEST(Element, EditsRichText)
{
    const auto html = RootOf("<html><body>a<p align='left'>b &amp; <font face='X'>c</font></p><br/></body></html>");
    XmlElement body = html.Child("body");
    EXPECT_EQ(body.Text(), "ab & c");
    Wrap(body, "b");
    EXPECT_EQ(XmlOf(*html.Get()),
              "<html><body><b>a</b><p align=\"left\"><b>b &amp; </b><font face=\"X\"><b>c</b></font>"
              "</p><br/></body></html>");
    Unwrap(body, "b");
    // All into one new element.
    const auto inside = body.Nodes();
    XmlElement font = body.Add("font");
    for (const XmlNode& node : inside)
        font.Insert(node);
    font.SetAttribute("face", "Y");
    XmlElement inner = font.Child("p").Child("font");
    EXPECT_EQ(inner.Attribute("face"), "X");
    EXPECT_TRUE(inner.RemoveAttribute("face"));
    EXPECT_FALSE(inner.RemoveAttribute("face"));
    EXPECT_FALSE(inner.HasAttribute("face"));
    EXPECT_EQ(inner.Attribute("face"), "");
    font.Insert(inner.Copy(), font.Child("br"));
    font.AddText("~");
    EXPECT_EQ(XmlOf(*html.Get()), "<html><body><font face=\"Y\">a<p align=\"left\">b &amp; <font>c</font></p>"
                                  "<font>c</font><br/>~</font></body></html>");
    EXPECT_EQ(inner.Parent().Parent(), font);
    body.SetText("");
    body.Add("p").SetText("~");
    EXPECT_EQ(XmlOf(*html.Get()), "<html><body><p>~</p></body></html>");
    EXPECT_EQ(inner.Parent().Name(), "p") << "what was held is whole";
    EXPECT_FALSE(font.Parent());
}

TEST(Element, IsReadWithoutObjectsByViews)
{
    const XmlElement data = RootOf("<d><k>1</k>text<n/><k>x</k><k>2.5</k></d>");
    std::vector<std::optional<double>> values;
    for (XmlView k = data.View("k"); k; k = k.Next("k"))
        values.push_back(k.Value<double>());
    EXPECT_EQ(values, (std::vector<std::optional<double>>{1, std::nullopt, 2.5}));
    EXPECT_EQ(data.View().Typed<LONG>("k"), 1);
    EXPECT_EQ(data.View().Typed<std::string>("n"), "");
    EXPECT_EQ(XmlView().Child("k").Typed<LONG>("k"), std::nullopt);
    EXPECT_FALSE(XmlView().Next("k") || data.View("none") || XmlElement().View("k"));
}

TEST(Element, MovesAllChildrenOfANameBehindTheOthers)
{
    XmlElement data = RootOf("<d><a/>text<b i='1'/><c/><b i='2'/></d>");
    const XmlElement held = data.Child("b");
    EXPECT_TRUE(data.MoveLast("b"));
    EXPECT_TRUE(data.MoveLast("b"));
    EXPECT_TRUE(data.MoveLast("a"));
    EXPECT_TRUE(data.MoveLast("a")) << "the last one stays";
    EXPECT_FALSE(data.MoveLast("none"));
    EXPECT_EQ(XmlOf(*data.Get()), "<d>text<c/><b i=\"1\"/><b i=\"2\"/><a/></d>");
    EXPECT_EQ(held, data.Child("b"));
}

TEST(Element, WhatIsHeldOutlivesTheRemovalOfWhatIsAroundIt)
{
    for (const bool attribute : {false, true}) {
        for (const std::size_t others : {0, 100}) {
            XmlElement data = RootOf("<d><gone><far><held x='1'>text</held></far></gone></d>");
            std::vector<XmlElement> many;
            for (std::size_t i = 0; i < others; ++i)
                many.push_back(data.Add("other"));
            const ComPtr<IXMLDOMNode> held = Find(*data.Get(), attribute ? "gone/far/held/@x" : "gone/far/held");
            EXPECT_TRUE(data.Remove("gone"));
            EXPECT_FALSE(data.Child("gone"));
            Bstr text;
            EXPECT_EQ(S_OK, held->get_text(text.Put()));
            EXPECT_EQ(attribute ? u"1" : u"text", text.View());
            const auto above = Find(*held.Get(), "ancestor::gone");
            EXPECT_TRUE(above);
        }
    }
}

TEST(Element, CopiesBelongToADocumentOfTheirOwn)
{
    auto source = Parsed("<r><e k='v'>t</e></r>");
    const XmlElement element(Find(*source, "//e").Get());
    const XmlElement copy = element.Copy();
    source.Reset();
    EXPECT_EQ(XmlOf(*copy.Get()), "<e k=\"v\">t</e>");
    EXPECT_FALSE(copy.Parent());
    ComPtr<IXMLDOMDocument> documents[2];
    ASSERT_EQ(element.Get()->get_ownerDocument(documents[0].Put()), S_OK);
    ASSERT_EQ(copy.Element()->get_ownerDocument(documents[1].Put()), S_OK);
    EXPECT_NE(documents[0].Get(), documents[1].Get());
    EXPECT_EQ(XmlElement::Parse("<?xml version='1.0'?><!--c--><e>t</e><?p?>").Markup(), "<e>t</e>");

    EXPECT_FALSE(XmlElement(nullptr));
    EXPECT_FALSE(XmlElement(documents[0].Get())) << "a document";
    EXPECT_FALSE(XmlNode(Find(*copy.Get(), "@k").Get()));
    const auto text = Find(*copy.Get(), "text()");
    EXPECT_FALSE(XmlElement(text.Get()));
    EXPECT_TRUE(XmlNode(text.Get()).IsText());
}

/// A document as it is saved.
std::string Saved(const ComPtr<IXMLDOMDocument>& document, const XmlStandIns& standIns = {})
{
    const TemporaryFolder folder;
    EXPECT_EQ(SaveXml(document.Get(), ToUtf16(folder.PathOf("d.xml")), XmlMarkup(1), standIns), S_OK);
    return folder.Read("d.xml");
}

TEST(Element, MarkupThatStandsInIsSavedAsTheElementWouldBe)
{
    const auto holder = [](const std::string& content) {
        return Parsed("<r xmlns:dt='urn:schemas-microsoft-com:datatypes'><p>" + content + "</p></r>");
    };
    for (const std::string content :
         {"<s/>", "<s a=\"&gt;/&quot;'\" b=\"/\"/>", "<s>text</s>",
          "<s><a dt:dt=\"i4\">1</a><b><c/><d k=\"v\">&lt;</d></b></s>", "<s><a><b/></a>text<a><b><c/></b></a></s>",
          "<s><a><b/><!--<x>--><?p <y>?></a><a><b>&#32;</b></a></s>", "<s><![CDATA[<z>]]></s>",
          "<s><a><b/><![CDATA[]]]]><![CDATA[>]]></a><b><c/></b></s>"}) {
        for (const std::string beside : {"", "<t/>", "text"}) {
            const auto document = holder("<s/>" + beside);
            const XmlElement place(Find(*document, "//s").Get());
            XmlStandIns standIns;
            standIns.Put(place, content);
            EXPECT_EQ(standIns.HasContent(place), content.find("><") != content.npos || content.ends_with("</s>"));
            EXPECT_EQ(Saved(document, standIns), Saved(holder(content + beside)));
            standIns.Drop(place);
            EXPECT_EQ(Saved(document, standIns), Saved(holder("<s/>" + beside)));
        }
    }

    const auto nested = [](int levels) {
        std::string markup = "<s/>";
        for (int level = 1; level < levels; ++level)
            markup = "<s>" + markup + "</s>";
        return markup;
    };
    const auto document = holder("<s/>");
    const XmlElement place(Find(*document, "//s").Get());
    XmlStandIns standIns;
    for (const std::string& markup :
         {std::string(), std::string("s"), std::string("<s"), std::string("<t/>"), std::string("<st/>"),
          std::string("<s></t>"), std::string("<s>&x;</s>"), std::string("<s/><s/>"), std::string("<s/>\n"),
          std::string("<!--c--><s/>"), nested(255), nested(300)})
        EXPECT_EQ(ResultOf([&] { standIns.Put(place, markup); }), E_INVALIDARG) << markup;
    EXPECT_TRUE(standIns.Empty());
    EXPECT_EQ(ResultOf([&] { standIns.Put(place, nested(254)); }), S_OK);
    EXPECT_EQ(Saved(document, standIns), Saved(holder(nested(254))));
}

TEST(Element, RefusedEditsChangeNothing)
{
    XmlElement root = RootOf("<r><a dt:dt='i4'>1</a><b/></r>");
    const std::string before = root.Markup();
    XmlElement empty;
    XmlElement deepest = XmlElement::New("e");
    for (int level = 1; level < 256; ++level)
        deepest = deepest.Add("e");
    const std::string bad = "\x01";
    const std::tuple<std::string_view, HRESULT, std::function<void()>> cases[]{
        {"a name", E_INVALIDARG, [&] { root.Add("1"); }},
        {"a name", E_INVALIDARG, [&] { root.SetAttribute("a b", ""); }},
        {"no element", E_INVALIDARG, [&] { root.SetAttribute(XmlView(), "a", ""); }},
        {"a label", E_INVALIDARG,
         [&] {
             root.Add({"c", bad});
         }},
        {"a text", E_INVALIDARG, [&] { root.Set("a", bad); }},
        {"a text", E_INVALIDARG, [&] { root.Replace("a", bad); }},
        {"a text", E_INVALIDARG, [&] { root.AddText("c", bad); }},
        {"a text", E_INVALIDARG, [&] { root.AddText(bad); }},
        {"a text", E_INVALIDARG, [&] { root.SetText(bad); }},
        {"a text", E_INVALIDARG, [&] { root.SetAttribute("a", bad); }},
        {"a surrogate", E_INVALIDARG, [&] { root.Set("a", std::u16string_view(u"\xd800")); }},
        {"a number", DISP_E_TYPEMISMATCH, [&] { root.Set("a", std::numeric_limits<double>::infinity()); }},
        {"an object", DISP_E_TYPEMISMATCH, [&] { root.Set("a", Variant(root.Get())); }},
        {"nothing", E_INVALIDARG, [&] { root.Insert(empty); }},
        {"below itself", E_INVALIDARG, [&] { root.Child("b").Insert(root); }},
        {"before no child", E_INVALIDARG, [&] { root.Insert(XmlElement::New("c"), root); }},
        {"too deep", E_INVALIDARG, [&] { deepest.Add("e"); }},
        {"too deep", E_INVALIDARG, [&] { deepest.Insert(root); }},
        {"no document", E_INVALIDARG, [&] { XmlElement::Parse("<a>"); }},
        {"empty", E_POINTER, [&] { empty.Add("a"); }},
        {"empty", E_POINTER, [&] { empty.SetText("a"); }},
        {"empty", E_POINTER, [&] { empty.Remove(); }}};
    for (const auto& [what, result, edit] : cases)
        EXPECT_EQ(ResultOf(edit), result) << what;
    EXPECT_EQ(root.Markup(), before);
    EXPECT_TRUE(root.FitsBelow(254));
    EXPECT_FALSE(root.FitsBelow(255));

    EXPECT_EQ(empty.Name(), "");
    EXPECT_EQ(empty.Text(), "");
    EXPECT_EQ(empty.Markup(), "");
    EXPECT_FALSE(empty.Parent() || empty.Copy() || empty.Child("a") || empty.HasAttribute("a") || empty.IsText());
    EXPECT_TRUE(empty.Children().empty() && empty.Nodes().empty());
    EXPECT_EQ(empty.Value<LONG>(), std::nullopt);
}

} // namespace
} // namespace kv::test
