#pragma once
// Documents for the tests, and what is in them as UTF-8.

#include "platform/com/Activation.h"
#include "platform/xml/Dom.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace kv::test {

inline Bstr Text(std::string_view utf8)
{
    return Bstr(ToUtf16(utf8));
}

inline ComPtr<IXMLDOMDocument> NewDocument()
{
    ComPtr<IXMLDOMDocument> document;
    EXPECT_EQ(CreateInstance(CLSID_DOMDocument, document), S_OK);
    return document;
}

inline ComPtr<IXMLDOMDocument> Parsed(std::string_view xml)
{
    auto document = NewDocument();
    VARIANT_BOOL parsed = VARIANT_FALSE;
    EXPECT_EQ(document->loadXML(Text(xml).Get(), &parsed), S_OK) << xml;
    EXPECT_TRUE(parsed);
    return document;
}

/// Null when nothing is found.
inline ComPtr<IXMLDOMNode> Find(IXMLDOMNode& from, std::string_view expression)
{
    ComPtr<IXMLDOMNode> found;
    EXPECT_GE(from.selectSingleNode(Text(expression).Get(), found.Put()), S_OK) << expression;
    return found;
}

inline ComPtr<IXMLDOMElement> FindElement(IXMLDOMNode& from, std::string_view expression)
{
    return Query<IXMLDOMElement>(Find(from, expression));
}

/// The text that a getter gives.
template <class Interface>
std::string Read(Interface& from, HRESULT (Interface::*getter)(BSTR*))
{
    Bstr text;
    EXPECT_GE((from.*getter)(text.Put()), S_OK);
    return ToUtf8(text.View());
}

/// The markup, without the lines and blanks of its layout.
inline std::string XmlOf(IXMLDOMNode& node)
{
    std::string xml = Read(node, &IXMLDOMNode::get_xml);
    for (auto line = xml.find('\n'); line != xml.npos; line = xml.find('\n', line)) {
        const auto next = xml.find_first_not_of(' ', line + 1);
        xml.erase(line, next == xml.npos ? next : next - line);
    }
    return xml;
}

inline std::string TextOf(IXMLDOMNode& node)
{
    return Read(node, &IXMLDOMNode::get_text);
}

} // namespace kv::test
