#include "KVProjectData/titles/XmlFragment.h"

#include "platform/com/Activation.h"

namespace kv {
namespace {

/// The elements from the document's root to a button's command.
constexpr int kLevelsAbove = 8;

/// Throws Error(E_INVALIDARG) for what is no document.
ComPtr<IXMLDOMDocument> Parse(std::u16string_view markup)
{
    ComPtr<IXMLDOMDocument> document;
    ThrowIfFailed(CreateInstance(CLSID_DOMDocument, document));
    VARIANT_BOOL parsed = VARIANT_FALSE;
    ThrowIfFailed(document->loadXML(Bstr(markup).Get(), &parsed));
    if (!parsed) throw Error(E_INVALIDARG);
    return document;
}

/// Markup as it stands in a project's document.
std::u16string Embedded(std::u16string_view markup)
{
    std::u16string text;
    for (int level = 0; level < kLevelsAbove; ++level)
        text += u"<x>";
    text += markup;
    for (int level = 0; level < kLevelsAbove; ++level)
        text += u"</x>";
    return text;
}

} // namespace

XmlFragment::XmlFragment(IXMLDOMNode* element)
{
    if (!element) return;
    DOMNodeType type = NODE_INVALID;
    ThrowIfFailed(element->get_nodeType(&type));
    if (type != NODE_ELEMENT) throw Error(E_INVALIDARG);
    Bstr markup;
    ThrowIfFailed(element->get_xml(markup.Put()));
    Parse(Embedded(markup.View()));
    m_markup = std::make_unique<const std::string>(ToUtf8(markup.View()));
}

ComPtr<IXMLDOMNode> XmlFragment::CopyFor(IXMLDOMDocument& document) const
{
    const ComPtr<IXMLDOMDocument> parsed = Parse(ToUtf16(*m_markup));
    ComPtr<IXMLDOMElement> element;
    ComPtr<IXMLDOMNode> copy;
    ThrowIfFailed(parsed->get_documentElement(element.Put()));
    ThrowIfFailed(document.importNode(element.Get(), VARIANT_TRUE, copy.Put()));
    return copy;
}

} // namespace kv
