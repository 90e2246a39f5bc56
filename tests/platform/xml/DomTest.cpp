#include "platform/com/Object.h"
#include "platform/xml/DataTypes.h"
#include "platform/xml/Documents.h"

#include <functional>

namespace kv::test {
namespace {

class Foreign : public Object<IUnknown> {};

template <class Interface>
ComPtr<IXMLDOMNode> Made(IXMLDOMDocument& document, HRESULT (IXMLDOMDocument::*create)(BSTR, Interface**),
                         std::string_view content)
{
    ComPtr<Interface> node;
    EXPECT_EQ((document.*create)(Text(content).Get(), node.Put()), S_OK) << content;
    return ComPtr<IXMLDOMNode>(node.Get());
}

ComPtr<IXMLDOMNode> MadeElement(IXMLDOMDocument& document, std::string_view name)
{
    return Made(document, &IXMLDOMDocument::createElement, name);
}

ComPtr<IXMLDOMNamedNodeMap> AttributesOf(IXMLDOMNode& element)
{
    ComPtr<IXMLDOMNamedNodeMap> map;
    EXPECT_EQ(element.get_attributes(map.Put()), S_OK);
    return map;
}

ComPtr<IXMLDOMNode> ParentOf(IXMLDOMNode& node)
{
    ComPtr<IXMLDOMNode> parent;
    EXPECT_GE(node.get_parentNode(parent.Put()), S_OK);
    return parent;
}

HRESULT InsertBefore(IXMLDOMNode& parent, IXMLDOMNode* child, IUnknown* reference)
{
    return parent.insertBefore(child, Variant(reference), nullptr);
}

/// Writes attributes in one go.
HRESULT Write(IXMLDOMNode& element, std::vector<XMLAttribute> attributes)
{
    class Source final : public XMLAttributeSource {
    public:
        explicit Source(std::vector<XMLAttribute> all) : m_all(std::move(all)) {}
        bool Next(XMLAttribute& attribute) override
        {
            if (m_next == m_all.size()) return false;
            attribute = m_all[m_next++];
            return true;
        }

    private:
        std::vector<XMLAttribute> m_all;
        std::size_t m_next = 0;
    };
    Source source(std::move(attributes));
    return Query<IXMLElementAttributes>(&element)->WriteAttributes(&source);
}

/// What an expression selects: attributes as their markup, other nodes by name, in order.
std::string Selected(IXMLDOMNode& from, std::string_view expression)
{
    ComPtr<IXMLDOMNodeList> nodes;
    const HRESULT result = from.selectNodes(Text(expression).Get(), nodes.Put());
    if (FAILED(result)) return result == E_INVALIDARG ? "refused" : "other";
    std::string names;
    ComPtr<IXMLDOMNode> node;
    while (nodes->nextNode(node.Put()) == S_OK) {
        DOMNodeType type = NODE_INVALID;
        EXPECT_EQ(node->get_nodeType(&type), S_OK);
        names += type == NODE_ATTRIBUTE ? XmlOf(*node) : Read(*node, &IXMLDOMNode::get_nodeName);
        names += ' ';
    }
    return names.substr(0, names.empty() ? 0 : names.size() - 1);
}

TEST(Dom, MovesNodesBetweenParents)
{
    // Child, parent, reference (empty: the last place), whether it is replaced, and what comes of it.
    const std::tuple<std::string_view, std::string_view, std::string_view, bool, std::string_view> cases[]{
        {"//c", "/r", "", false, "<r><a/><b>t<d/></b><c/></r>"},
        {"//c", "/r", "//a", false, "<r><c/><a/><b>t<d/></b></r>"},
        {"//c", "//a", "", false, "<r><a><c/></a><b>t<d/></b></r>"},
        {"//d", "//b", "//c", false, "<r><a/><b><d/><c/>t</b></r>"},
        {"//a", "/r", "", false, "<r><b><c/>t<d/></b><a/></r>"},
        {"//b", "/r", "//b", false, "<r><a/><b><c/>t<d/></b></r>"},
        {"//c", "/r", "//a", true, "<r><c/><b>t<d/></b></r>"},
        {"//c", "/r", "//b", true, "<r><a/><c/></r>"},
        {"//b", "/r", "//a", true, "<r><b><c/>t<d/></b></r>"},
        {"//a", "/r", "//b", true, "<r><a/></r>"},
        {"//a", "/r", "//a", true, "<r><a/><b><c/>t<d/></b></r>"},
        {"//d", "/", "/r", true, "<d/>"}};
    for (const auto& [moved, to, before, replaces, expected] : cases) {
        const auto document = Parsed("<r><a/><b><c/>t<d/></b></r>");
        const auto child = Find(*document, moved);
        const auto reference = before.empty() ? nullptr : Find(*document, before);
        const auto parent = to == "/" ? ComPtr<IXMLDOMNode>(document.Get()) : Find(*document, to);
        EXPECT_EQ(replaces ? parent->replaceChild(child.Get(), reference.Get(), nullptr)
                           : InsertBefore(*parent, child.Get(), reference.Get()),
                  S_OK);
        EXPECT_EQ(XmlOf(*document), expected) << moved << " to " << to << ' ' << before;
        EXPECT_EQ(ParentOf(*child).Get(), parent.Get());
        const bool leaves = replaces && reference != child;
        EXPECT_TRUE(!leaves || !ParentOf(*reference)) << "a replaced node has no parent";
    }
}

TEST(Dom, RefusesWhatTheRulesOfTheTreeForbid)
{
    const auto document = Parsed("<?xml version='1.0'?><!--c--><r><a><b/></a>text</r>");
    const auto other = Parsed("<other x='1'/>");
    const auto root = Find(*document, "/r");
    const auto a = Find(*document, "//a");
    const auto b = Find(*document, "//b");
    const auto text = Find(*document, "//text()");
    const auto comment = Find(*document, "/comment()");
    const auto attribute = Find(*other, "//@x");
    const auto element = MadeElement(*document, "new");
    ComPtr<IXMLDOMNode> ours;
    ComPtr<IXMLDOMNode> declaration;
    ASSERT_EQ(document->get_firstChild(ours.Put()), S_OK);
    ASSERT_EQ(ours->cloneNode(VARIANT_TRUE, declaration.Put()), S_OK);
    const auto foreign = Make<Foreign>();
    const std::string before = XmlOf(*document);
    const std::pair<std::string_view, HRESULT> results[]{
        {"below itself", b->appendChild(a.Get(), nullptr)},
        {"replacing below itself", a->replaceChild(root.Get(), b.Get(), nullptr)},
        {"a document", root->appendChild(other.Get(), nullptr)},
        {"nothing", root->appendChild(nullptr, nullptr)},
        {"text in the document", document->appendChild(text.Get(), nullptr)},
        {"a second root", document->appendChild(element.Get(), nullptr)},
        {"a second root for a comment", document->replaceChild(element.Get(), comment.Get(), nullptr)},
        {"below an attribute", attribute->appendChild(element.Get(), nullptr)},
        {"an attribute as a child", root->appendChild(attribute.Get(), nullptr)},
        {"before a node elsewhere", InsertBefore(*root, element.Get(), b.Get())},
        {"before an object that is no node", InsertBefore(*root, element.Get(), foreign.Get())},
        {"removed from where it is not", root->removeChild(b.Get(), nullptr)},
        {"a declaration in an element", root->appendChild(declaration.Get(), nullptr)},
        {"a declaration behind", document->appendChild(declaration.Get(), nullptr)},
        {"a second declaration", InsertBefore(*document, declaration.Get(), ours.Get())},
        {"before the declaration", InsertBefore(*document, comment.Get(), ours.Get())}};
    for (const auto& [what, result] : results)
        EXPECT_EQ(result, E_INVALIDARG) << what;
    EXPECT_EQ(XmlOf(*document), before);
    EXPECT_EQ(document->replaceChild(declaration.Get(), ours.Get(), nullptr), S_OK);
    EXPECT_EQ(document->removeChild(declaration.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(*document), "<!--c--><r><a><b/></a>text</r>");
    EXPECT_EQ(InsertBefore(*document, ours.Get(), comment.Get()), S_OK);
    EXPECT_EQ(XmlOf(*document), before);
}

TEST(Dom, NestsNoDeeperThanDocumentsMay)
{
    const auto document = Parsed("<r/>");
    auto deepest = Find(*document, "/r");
    HRESULT result = S_OK;
    int levels = 1;
    while (levels < 1000 && result == S_OK) {
        const auto next = MadeElement(*document, "e");
        result = deepest->appendChild(next.Get(), nullptr);
        if (result == S_OK) ++levels, deepest = next;
    }
    EXPECT_EQ(result, E_INVALIDARG);
    EXPECT_EQ(levels, 256);
    EXPECT_EQ(deepest->put_text(Text("text is no level").Get()), S_OK);
    Parsed(XmlOf(*document));
}

TEST(Dom, RefusesWhatXmlCannotHold)
{
    const auto document = Parsed("<r a='1'><!--c--><?p d?>t</r>");
    const auto root = FindElement(*document, "/r");
    using Create = std::function<HRESULT(BSTR)>;
    ComPtr<IXMLDOMNode> made;
    const auto by = [&](HRESULT (IXMLDOMDocument::*create)(BSTR, IXMLDOMNode**)) -> Create {
        return [&, create](BSTR text) { return (*document.*create)(text, made.Put()); };
    };
    const auto value = [&](std::string_view expression) -> Create {
        return [node = Find(*document, expression)](BSTR text) { return node->put_nodeValue(Variant(View(text))); };
    };
    const auto instruction = [&](std::string_view target) -> Create {
        return [&, target](BSTR data) {
            return document->createProcessingInstruction(Text(target).Get(), data, made.Put());
        };
    };
    const Create comment = by(&IXMLDOMDocument::createComment);
    const Create attribute = [&](BSTR name) { return root->setAttribute(name, Variant(u"")); };
    const std::tuple<std::string_view, Create, std::u16string_view, HRESULT> cases[]{
        {"comment", comment, u"a-b >", S_OK},
        {"comment", comment, u"a--b", E_INVALIDARG},
        {"comment", comment, u"a-", E_INVALIDARG},
        {"comment's value", value("//comment()"), u"--", E_INVALIDARG},
        {"section", by(&IXMLDOMDocument::createCDATASection), u"a]]>b", S_OK},
        {"text", by(&IXMLDOMDocument::createTextNode), u"]]> \x7f \xfffd", S_OK},
        {"text", by(&IXMLDOMDocument::createTextNode), {u"a\0b", 3}, E_INVALIDARG},
        {"text's value", value("//text()"), u"\xd800", E_INVALIDARG},
        {"attribute's value", value("//@a"), u"\xffff", E_INVALIDARG},
        {"instruction", instruction("p"), u"x?y", S_OK},
        {"instruction", instruction("p"), u"x?>y", E_INVALIDARG},
        {"instruction's value", value("//processing-instruction()"), u"?>", E_INVALIDARG},
        {"declaration", instruction("xml"), u"version='1.0' encoding=\"utf-16\" standalone='yes'", S_OK},
        {"declaration", instruction("xml"), u"", E_INVALIDARG},
        {"declaration", instruction("xml"), u"version='1.0' encoding='latin1'", E_INVALIDARG},
        {"declaration", instruction("xml"), u"version='1.0'?><r/><?x ", E_INVALIDARG},
        {"declaration in capitals", instruction("XML"), u"version='1.0'", E_INVALIDARG},
        {"name", attribute, u"_\x00e4-.7", S_OK},
        {"name", attribute, u"", E_INVALIDARG},
        {"name", attribute, {u"a\0", 2}, E_INVALIDARG},
        {"name", attribute, u"a\xfdd0", E_INVALIDARG},
        {"name", attribute, u"\xfdef", E_INVALIDARG},
        {"name", attribute, u"a\xfdcf\xfdf0\xfffd", S_OK},
        {"name", attribute, u"a=", E_INVALIDARG},
        {"set text", [&](BSTR text) { return root->put_text(text); }, u"\xfffe", E_INVALIDARG},
        {"remove attribute", [&](BSTR n) { return root->removeAttribute(n); }, {u"a\0", 2}, S_FALSE}};
    for (const auto& [what, create, text, expected] : cases)
        EXPECT_EQ(create(Bstr(text).Get()), expected) << what << ' ' << ToUtf8(text);
    EXPECT_EQ(XmlOf(*document),
              "<r a=\"1\" _\xc3\xa4-.7=\"\" a\xef\xb7\x8f\xef\xb7\xb0\xef\xbf\xbd=\"\"><!--c--><?p d?>t</r>");

    for (const std::string_view bad : {"\xff", "\xc3", "a\xed\xa0\x80", "\x1f", "\xc0\x80", "\xef\xbf\xbf"})
        EXPECT_EQ(Write(*root, {{"a", bad}}), E_INVALIDARG);
    EXPECT_EQ(Write(*root, {{"a", "\t\xc3\xa4\xf0\x9f\x8e\xac"}}), S_OK);
    EXPECT_EQ(XmlOf(*Find(*root, "@a")), "a=\"&#9;\xc3\xa4\xf0\x9f\x8e\xac\"");
}

TEST(Dom, AttributesWrittenTogetherAreSetOneByOne)
{
    using namespace std::string_view_literals;
    const std::tuple<std::string_view, std::vector<XMLAttribute>, HRESULT, std::string_view> cases[]{
        {"<r/>", {}, S_OK, "<r/>"},
        {"<r/>", {{"a", "1"sv}, {"b", u"\xe4"sv}, {"c", ""sv}}, S_OK, "<r a=\"1\" b=\"\xc3\xa4\" c=\"\"/>"},
        {"<r/>", {{"b", "1"sv}, {"a", "2"sv}, {"b", "3"sv}, {"c", "4"sv}}, S_OK, "<r b=\"3\" a=\"2\" c=\"4\"/>"},
        {"<r/>", {{"a", "1"sv}, {"a", "2"sv}}, S_OK, "<r a=\"2\"/>"},
        {"<r b='0'/>", {{"a", "1"sv}, {"b", "2"sv}}, S_OK, "<r b=\"2\" a=\"1\"/>"},
        {"<r/>", {{"a", "1"sv}, {"b", u"\xd800"sv}, {"c", "3"sv}}, E_INVALIDARG, "<r a=\"1\"/>"},
        {"<r/>", {{"a", "1"sv}, {"b c", "2"sv}}, E_INVALIDARG, "<r a=\"1\"/>"}};
    for (const auto& [before, attributes, result, after] : cases) {
        const auto document = Parsed(before);
        EXPECT_EQ(Write(*Find(*document, "/r"), attributes), result) << after;
        EXPECT_EQ(XmlOf(*document), after);
    }
    EXPECT_EQ(Query<IXMLElementAttributes>(Find(*Parsed("<r/>"), "/r"))->WriteAttributes(nullptr), E_POINTER);
}

TEST(Dom, AttributesLiveOnApartFromTheirElement)
{
    for (const bool byMap : {false, true}) {
        const auto document = Parsed("<r><b x='1' y='2' z='3'/></r>");
        const auto b = FindElement(*document, "//b");
        const auto x = Find(*b, "@x");
        ComPtr<IXMLDOMNode> removed;
        EXPECT_EQ(byMap ? AttributesOf(*b)->removeNamedItem(Text("x").Get(), removed.Put())
                        : b->removeAttribute(Text("x").Get()),
                  S_OK);
        EXPECT_TRUE(!byMap || removed == x);
        EXPECT_EQ(AttributesOf(*b)->removeNamedItem(Text("y").Get(), nullptr), S_OK);
        EXPECT_EQ(AttributesOf(*b)->removeNamedItem(Text("y").Get(), removed.Put()), S_FALSE);
        EXPECT_FALSE(removed);
        ASSERT_EQ(x->put_text(Text("<").Get()), S_OK);
        EXPECT_EQ(XmlOf(*x), "x=\"&lt;\"");
        EXPECT_EQ(Selected(*x, "."), "x=\"&lt;\"");
        EXPECT_EQ(Selected(*x, ".. | //*"), "") << "it has no element any more";
        EXPECT_EQ(XmlOf(*document), "<r><b z=\"3\"/></r>");
    }
}

TEST(Dom, NamedMapsShowTheAttributesAsTheyAre)
{
    const auto document = Parsed("<r a='1'/>");
    const auto root = FindElement(*document, "/r");
    const auto map = AttributesOf(*root);
    ASSERT_EQ(root->setAttribute(Text("b").Get(), Variant(u"2")), S_OK);
    ComPtr<IXMLDOMNode> node;
    EXPECT_EQ(map->getNamedItem(Text("d").Get(), node.Put()), S_FALSE);
    ASSERT_EQ(map->getNamedItem(Text("b").Get(), node.Put()), S_OK);
    ASSERT_EQ(node->put_text(Text("x").Get()), S_OK);
    LONG length = 0;
    EXPECT_EQ(map->get_length(&length), S_OK);
    EXPECT_EQ(length, 2);
    for (const auto& [index, expected] : {std::pair{-1, ""}, {0, "a=\"1\""}, {1, "b=\"x\""}, {2, ""}}) {
        EXPECT_EQ(map->get_item(index, node.Put()), *expected ? S_OK : S_FALSE);
        EXPECT_EQ(node ? XmlOf(*node) : "", expected);
    }
}

TEST(Dom, ConvertsTypedValues)
{
    const auto of = [](VARTYPE type, LONGLONG value) {
        Variant variant;
        variant.vt = type;
        variant.llVal = value;
        return variant;
    };
    const std::tuple<VARTYPE, std::string_view, Variant, std::string_view> cases[]{
        {VT_BSTR, "string", Variant(u" a "), " a "},
        {VT_BSTR, "string", Variant(u""), ""},
        {VT_I1, "i1", of(VT_I1, 0x80), "-128"},
        {VT_I2, "i2", of(VT_I2, 0x8000), "-32768"},
        {VT_I4, "i4", Variant(LONG{-5}), "-5"},
        {VT_I8, "i8", of(VT_I8, INT64_MIN), "-9223372036854775808"},
        {VT_UI1, "ui1", of(VT_UI1, 255), "255"},
        {VT_UI2, "ui2", of(VT_UI2, 65535), "65535"},
        {VT_UI4, "ui4", Variant(ULONG{4'000'000'000}), "4000000000"},
        {VT_UI8, "ui8", of(VT_UI8, -1), "18446744073709551615"},
        {VT_R4, "r4", Variant(0.1f), "0.1"},
        {VT_R8, "r8", Variant(1.0 / 3), "0.3333333333333333"},
        {VT_BOOL, "boolean", Variant(true), "1"},
        {VT_EMPTY, "", Variant(), ""}};
    for (const auto& [vt, type, value, text] : cases) {
        EXPECT_EQ(DataTypeName(vt), type);
        EXPECT_EQ(DataTypeOf(type), vt);
        const auto document = Parsed("<r>old</r>");
        const auto root = Find(*document, "/r");
        ASSERT_EQ(root->put_dataType(Text(type).Get()), type.empty() ? E_INVALIDARG : S_OK) << text;
        ASSERT_EQ(root->put_nodeTypedValue(value), S_OK) << text;
        EXPECT_EQ(TextOf(*root), text);
        Variant read;
        ASSERT_EQ(root->get_nodeTypedValue(read.Put()), S_OK) << text;
        EXPECT_EQ(read.vt, vt) << text;
        ASSERT_EQ(root->put_nodeTypedValue(read), S_OK);
        EXPECT_EQ(TextOf(*root), text);
    }
    EXPECT_EQ(DataTypeName(VT_UNKNOWN), "");
    EXPECT_EQ(DataTypeName(VT_INT), "i4");
    EXPECT_EQ(DataTypeOf("float"), VT_R8);
    const auto document = Parsed("<r dt:dt='i2'>70000</r>");
    const auto root = Find(*document, "/r");
    Variant value;
    EXPECT_EQ(root->get_nodeTypedValue(value.Put()), DISP_E_OVERFLOW);
    EXPECT_EQ(root->put_nodeTypedValue(Variant(u"x")), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(root->put_dataType(Text("date").Get()), E_INVALIDARG);
}

TEST(Dom, MarkupDeclaresThePrefixOfDataTypesWhereItStandsAlone)
{
    const std::string declared = " xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"";
    const std::string inner = "<a><b dt:dt=\"i4\">1</b><b dt:dt=\"i4\">2</b></a>";
    const std::string own = "<a><b dt:dt=\"i4\"" + declared + ">1</b></a>";
    const auto document = Parsed("<r" + declared + ">" + inner + own + "<c/></r>");
    EXPECT_EQ(XmlOf(*document), "<r" + declared + ">" + inner + own + "<c/></r>");
    const std::string alone = "<a" + declared + inner.substr(2);
    const auto a = Find(*document, "//a");
    EXPECT_EQ(XmlOf(*a), alone);
    EXPECT_EQ(XmlOf(*Find(*document, "//a[2]")), own);
    EXPECT_EQ(XmlOf(*Find(*document, "//c")), "<c/>");
    ComPtr<IXMLDOMNode> copy;
    ASSERT_EQ(a->cloneNode(VARIANT_TRUE, copy.Put()), S_OK);
    EXPECT_EQ(XmlOf(*copy), alone);
    const auto other = NewDocument();
    ASSERT_EQ(other->appendChild(copy.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(*other), alone);
    ASSERT_EQ(Find(*document, "//c")->appendChild(copy.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(*document), "<r" + declared + ">" + inner + own + "<c>" + inner + "</c></r>");
}

TEST(Dom, CopiesAreWholeAndStandAlone)
{
    const std::string_view xml = "<?xml version=\"1.0\"?><!--c--><r a=\"1\">t<b><![CDATA[d]]></b><?p q?></r>";
    const auto document = Parsed(xml);
    const auto root = Find(*document, "/r");
    ComPtr<IXMLDOMNode> copy;
    for (const auto& [deep, expected] :
         {std::pair{VARIANT_FALSE, "<r a=\"1\"/>"}, {VARIANT_TRUE, "<r a=\"1\">t<b><![CDATA[d]]></b><?p q?></r>"}}) {
        ASSERT_EQ(root->cloneNode(deep, copy.Put()), S_OK);
        EXPECT_EQ(XmlOf(*copy), expected);
        EXPECT_FALSE(ParentOf(*copy));
        ASSERT_EQ(Query<IXMLDOMElement>(copy)->setAttribute(Text("a").Get(), Variant(u"2")), S_OK);
        EXPECT_EQ(XmlOf(*document), xml);
        ASSERT_EQ(NewDocument()->importNode(root.Get(), deep, copy.Put()), S_OK);
        EXPECT_EQ(XmlOf(*copy), expected);
    }
    ASSERT_EQ(Find(*root, "@a")->cloneNode(VARIANT_TRUE, copy.Put()), S_OK);
    EXPECT_EQ(XmlOf(*copy), "a=\"1\"");
    ComPtr<IXMLDOMNode> declaration;
    ASSERT_EQ(document->get_firstChild(declaration.Put()), S_OK);
    ASSERT_EQ(declaration->cloneNode(VARIANT_TRUE, copy.Put()), S_OK);
    EXPECT_EQ(XmlOf(*copy), "<?xml version=\"1.0\"?>");
    ASSERT_EQ(document->cloneNode(VARIANT_TRUE, copy.Put()), S_OK);
    ASSERT_EQ(document->removeChild(root.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(*copy), xml);
}

TEST(Dom, NodesOfOneDocumentGoIntoAnother)
{
    const auto source = Parsed("<s><a k='v'>t<b><c/></b></a><d/></s>");
    const auto target = Parsed("<r><x/></r>");
    const auto a = Find(*source, "//a");
    const auto b = Find(*source, "//b");
    const auto c = Find(*source, "//c");
    const auto k = Find(*source, "//@k");
    const auto x = Find(*target, "//x");
    ComPtr<IXMLDOMDocument> owner;
    ASSERT_EQ(InsertBefore(*Find(*target, "/r"), a.Get(), x.Get()), S_OK);
    EXPECT_EQ(XmlOf(*source), "<s><d/></s>");
    EXPECT_EQ(XmlOf(*target), "<r><a k=\"v\">t<b><c/></b></a><x/></r>");
    EXPECT_EQ(Find(*target, "//a[@k='v']/b").Get(), b.Get());
    EXPECT_EQ(ParentOf(*c).Get(), b.Get());
    EXPECT_EQ(Find(*a, "@k").Get(), k.Get());
    ASSERT_EQ(k->put_text(Text("w").Get()), S_OK);
    ASSERT_EQ(c->get_ownerDocument(owner.Put()), S_OK);
    EXPECT_EQ(owner.Get(), target.Get());

    ASSERT_EQ(source->replaceChild(a.Get(), Find(*source, "/s").Get(), nullptr), S_OK) << "and back, as the root";
    EXPECT_EQ(XmlOf(*source), "<a k=\"w\">t<b><c/></b></a>");
    ASSERT_EQ(x->appendChild(c.Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(*target), "<r><x><c/></x></r>");
    // What is held goes on when its document and all else of it is gone.
    ASSERT_EQ(x->appendChild(Find(*Parsed("<only/>"), "/only").Get(), nullptr), S_OK);
    EXPECT_EQ(XmlOf(*target), "<r><x><c/><only/></x></r>");
}

TEST(Dom, SelectsAsThoughNothingDetachedWereThere)
{
    const std::pair<std::string_view, std::string_view> cases[]{{"/*", "r"},
                                                                {"/*[last()]", "r"},
                                                                {"/*[count(/*)=1]", "r"},
                                                                {"//b/@id", "id=\"1\" id=\"2\""},
                                                                {"(//b)[last()]/@id", "id=\"2\""},
                                                                {"//b[count(//b)=2]", "b b"},
                                                                {"//c/ancestor::*", "r b"},
                                                                {"/r/following::*", ""},
                                                                {"//b[//new]", ""},
                                                                {"b[c]/@id | b[not(c)]/@id", "id=\"1\" id=\"2\""},
                                                                {"//@id/..", "b b"},
                                                                {"..", "#document"},
                                                                {"count(//b)", "refused"},
                                                                {"//b[", "refused"},
                                                                {"", "refused"}};
    const auto document = Parsed("<r><b id='1'><c/></b><b id='2'/></r>");
    const auto root = Find(*document, "/r");
    for (const bool holding : {false, true}) {
        const auto made = holding ? MadeElement(*document, "new") : nullptr;
        ComPtr<IXMLDOMNode> copy;
        EXPECT_EQ(holding ? root->cloneNode(VARIANT_TRUE, copy.Put()) : S_OK, S_OK);
        for (const auto& [expression, expected] : cases)
            EXPECT_EQ(Selected(*root, expression), expected) << expression << (holding ? " beside detached parts" : "");
        EXPECT_EQ(Find(*document, "(//b)[1]").Get(), Find(*root, "b").Get()) << "the same object";
        if (!holding) continue;
        EXPECT_EQ(Find(*copy, "ancestor-or-self::node()").Get(), copy.Get()) << "nothing stands above";
        EXPECT_EQ(Selected(*copy, "/*"), "r");
        EXPECT_EQ(Selected(*copy, "//b/@id"), "id=\"1\" id=\"2\"");
        EXPECT_EQ(Selected(*Find(*copy, "//c"), "/ | ancestor::* | /r/b[last()]"), "r b b");
        EXPECT_EQ(ParentOf(*Find(*copy, "b")).Get(), copy.Get()) << "a node of the copy, not of the document";
    }
    EXPECT_EQ(document->selectNodes(Bstr({u"/r\0", 3}).Get(), ComPtr<IXMLDOMNodeList>().Put()), E_INVALIDARG);
}

TEST(Dom, DetachedPartsLiveAsLongAsAnyNodeOfThemIsHeld)
{
    auto document = Parsed("<r><a k='v'><b>text<c/></b></a></r>");
    auto a = Find(*document, "//a");
    auto c = Find(*document, "//c");
    auto k = Find(*document, "//@k");
    ASSERT_EQ(Find(*document, "/r")->removeChild(a.Get(), nullptr), S_OK);
    a.Reset();
    // What is made meanwhile must not take the place of what is held.
    for (int i = 0; i < 100; ++i)
        MadeElement(*document, "other");
    document.Reset();
    EXPECT_EQ(XmlOf(*ParentOf(*ParentOf(*c))), "<a k=\"v\"><b>text<c/></b></a>");
    c.Reset();
    EXPECT_EQ(XmlOf(*k), "k=\"v\"");

    ComPtr<IXMLDOMDocument> owner;
    ASSERT_EQ(k->get_ownerDocument(owner.Put()), S_OK);
    EXPECT_EQ(XmlOf(*owner), "<r/>");
    VARIANT_BOOL parsed = VARIANT_FALSE;
    ASSERT_EQ(owner->loadXML(Text("<new/>").Get(), &parsed), S_OK);
    EXPECT_EQ(XmlOf(*k), "k=\"v\"") << "nodes of an earlier load keep their tree";

    ComPtr<IXMLDOMNodeList> list;
    ComPtr<IXMLDOMNode> made = MadeElement(*owner, "p");
    for (const std::string_view name : {"x", "y"})
        ASSERT_EQ(made->appendChild(MadeElement(*owner, name).Get(), nullptr), S_OK);
    ASSERT_EQ(made->get_childNodes(list.Put()), S_OK);
    ASSERT_EQ(made->put_text(nullptr), S_OK) << "drops the children that the list holds";
    made.Reset();
    ASSERT_EQ(list->get_item(1, made.Put()), S_OK);
    EXPECT_EQ(XmlOf(*made), "<y/>");
}

} // namespace
} // namespace kv::test
