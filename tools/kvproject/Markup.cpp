#include "Markup.h"

#include "Failure.h"
#include "Session.h"
#include "platform/com/Activation.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kvproject {

using kv::ComPtr;
using kv::Variant;

std::string Element::Name() const
{
    std::string_view name;
    if (const auto element = kv::Query<IXMLElementAttributes>(m_node)) element->ElementName(&name);
    return std::string(name);
}

std::map<std::string, std::string> Element::Attributes() const
{
    class Collector final : public XMLAttributeVisitor {
    public:
        void Attribute(std::string_view name, std::string_view value) override { found.emplace(name, value); }
        std::map<std::string, std::string> found;
    } collector;
    if (const auto element = kv::Query<IXMLElementAttributes>(m_node)) element->ReadAttributes(&collector);
    return std::move(collector.found);
}

std::vector<Element> Element::Children() const
{
    std::vector<Element> children;
    ComPtr<IXMLDOMNode> child;
    m_node->get_firstChild(child.Put());
    while (child) {
        if (kv::Query<IXMLDOMElement>(child)) children.emplace_back(child);
        ComPtr<IXMLDOMNode> next;
        child->get_nextSibling(next.Put());
        child = std::move(next);
    }
    return children;
}

std::vector<Content> Element::Contents() const
{
    static constexpr std::array<std::pair<DOMNodeType, std::string_view>, 4> kKinds{
        {{NODE_TEXT, "a text"},
         {NODE_CDATA_SECTION, "a text"},
         {NODE_COMMENT, "a comment"},
         {NODE_PROCESSING_INSTRUCTION, "a processing instruction"}}};
    std::vector<Content> contents;
    ComPtr<IXMLDOMNode> child;
    m_node->get_firstChild(child.Put());
    while (child) {
        DOMNodeType type = NODE_INVALID;
        kv::Bstr name;
        Variant value;
        child->get_nodeType(&type);
        child->get_nodeName(name.Put());
        child->get_nodeValue(value.Put());
        const auto* kind = std::ranges::find(kKinds, type, &std::pair<DOMNodeType, std::string_view>::first);
        std::string text = value.vt == VT_BSTR ? kv::ToUtf8(kv::View(value.bstrVal)) : std::string();
        const bool blank = type == NODE_TEXT && text.find_first_not_of(" \t\r\n") == text.npos;
        const bool declaration = type == NODE_PROCESSING_INSTRUCTION && name.View() == u"xml";
        if (kind != kKinds.end() && !blank && !declaration) contents.push_back({kind->second, std::move(text)});
        ComPtr<IXMLDOMNode> next;
        child->get_nextSibling(next.Put());
        child = std::move(next);
    }
    return contents;
}

ComPtr<IXMLDOMDocument> ParseFile(const std::string& file)
{
    ComPtr<IXMLDOMDocument> document;
    Require(kv::CreateInstance(CLSID_DOMDocument, document), "cannot create a document");
    VARIANT_BOOL parsed = VARIANT_FALSE;
    document->load(Variant(kv::ToUtf16(file)), &parsed);
    if (!parsed) throw Failure("cannot load " + file + ": " + ParseFailure(file));
    return document;
}

ComPtr<IXMLDOMNode> FindProject(IXMLDOMDocument& document)
{
    ComPtr<IXMLDOMNode> project;
    document.selectSingleNode(kv::Bstr(u"/Root/Project").Get(), project.Put());
    return project;
}

Element RootOf(IXMLDOMDocument& document)
{
    ComPtr<IXMLDOMElement> root;
    Require(document.get_documentElement(root.Put()), "cannot read the document");
    return Element(root);
}

std::optional<ULONG> ReadId(const std::string& text)
{
    Variant value(kv::ToUtf16(text));
    const bool fits = SUCCEEDED(VariantChangeType(&value, &value, 0, VT_I8)) &&
                      value.llVal >= std::numeric_limits<LONG>::min() &&
                      value.llVal <= std::numeric_limits<ULONG>::max();
    return fits ? std::optional(static_cast<ULONG>(value.llVal)) : std::nullopt;
}

} // namespace kvproject
