#pragma once
// The markup of a project file as it stands there, apart from what the library makes of it.

#include "platform/com/ComPtr.h"
#include "platform/xml/Dom.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kvproject {

constexpr std::string_view kProjectElement = "Project";
/// The place of the titles' productions, beside the project.
constexpr std::string_view kProductionsElement = "Productions";

/// What is no element.
struct Content {
    /// "a comment"
    std::string_view kind;
    std::string text;

    bool operator==(const Content&) const = default;
};

/// An element with its name, attributes and child elements.
class Element {
public:
    explicit Element(kv::ComPtr<IXMLDOMNode> node) : m_node(std::move(node)) {}

    std::string Name() const;
    std::map<std::string, std::string> Attributes() const;
    std::vector<Element> Children() const;
    /// What else stands in it, or in a document: comments, instructions, texts that are not blank.
    std::vector<Content> Contents() const;
    kv::ComPtr<IXMLDOMElement> Node() const { return kv::Query<IXMLDOMElement>(m_node); }

private:
    kv::ComPtr<IXMLDOMNode> m_node;
};

/// Visits the child elements with their paths below the root, whose own is empty: "Project[1]/Titles[1]/Title[2]".
template <class Visit>
void ForEachChild(const Element& element, const std::string& path, Visit&& visit)
{
    std::map<std::string, int> counts;
    for (const Element& child : element.Children()) {
        const std::string name = child.Name();
        visit(child, path + (path.empty() ? "" : "/") + name + "[" + std::to_string(++counts[name]) + "]");
    }
}

/// Throws Failure with the place and the reason for a file that does not parse.
kv::ComPtr<IXMLDOMDocument> ParseFile(const std::string& file);
/// The project's element; null for a document without.
kv::ComPtr<IXMLDOMNode> FindProject(IXMLDOMDocument& document);
Element RootOf(IXMLDOMDocument& document);

/// IDs have 32 bits, with a sign or without. Empty for any other text.
std::optional<ULONG> ReadId(const std::string& text);

} // namespace kvproject
