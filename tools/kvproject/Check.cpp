#include "Check.h"

#include "Failure.h"
#include "Session.h"
#include "platform/com/Activation.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <map>
#include <set>

namespace kvproject {
namespace {

using kv::ComPtr;

constexpr const char* kProject = "Project";

/// An element as the check sees it: its name, attributes and child elements.
class Element {
public:
    explicit Element(ComPtr<IXMLDOMNode> node) : m_node(std::move(node)) {}

    std::string Name() const
    {
        std::string_view name;
        if (const auto element = kv::Query<IXMLElementAttributes>(m_node)) element->ElementName(&name);
        return std::string(name);
    }

    std::map<std::string, std::string> Attributes() const
    {
        class Collector final : public XMLAttributeVisitor {
        public:
            void Attribute(std::string_view name, std::string_view value) override { found.emplace(name, value); }
            std::map<std::string, std::string> found;
        } collector;
        if (const auto element = kv::Query<IXMLElementAttributes>(m_node)) element->ReadAttributes(&collector);
        return std::move(collector.found);
    }

    std::vector<Element> Children() const
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

private:
    ComPtr<IXMLDOMNode> m_node;
};

ComPtr<IXMLDOMDocument> NewDocument()
{
    ComPtr<IXMLDOMDocument> document;
    Require(kv::CreateInstance(CLSID_DOMDocument, document), "cannot create a document");
    return document;
}

ComPtr<IXMLDOMDocument> Parse(const std::string& file)
{
    auto document = NewDocument();
    VARIANT_BOOL parsed = VARIANT_FALSE;
    document->load(kv::Variant(kv::ToUtf16(file)), &parsed);
    if (!parsed) throw Failure("cannot load " + file + ": " + ParseFailure(file));
    return document;
}

/// The project as the library writes it again.
ComPtr<IXMLDOMDocument> WriteAgain(IKVProjectData& project)
{
    auto document = NewDocument();
    ComPtr<IXMLDOMElement> root;
    Require(document->createElement(kv::Bstr(u"Root").Get(), root.Put()), "cannot create a document");
    Require(document->putref_documentElement(root.Get()), "cannot create a document");
    Require(project.SaveXML(root.Get()), "cannot write the project again");
    return document;
}

ComPtr<IXMLDOMNode> FindProject(IXMLDOMDocument& document)
{
    ComPtr<IXMLDOMNode> project;
    document.selectSingleNode(kv::Bstr(u"/Root/Project").Get(), project.Put());
    return project;
}

/// Compares what the file says with what the library made of it.
class Comparison {
public:
    explicit Comparison(std::vector<std::string>& faults) : m_faults(faults) {}

    void Run(const Element& file, const Element& loaded, const std::string& path)
    {
        const auto kept = loaded.Attributes();
        for (const auto& [name, value] : file.Attributes()) {
            const auto found = kept.find(name);
            // The version is the writer's, a count follows from the children, a project's ID is its process's.
            if (name == "Version" || name == "NumItems" || (name == "ID" && path == kProject)) continue;
            if (found == kept.end()) {
                m_faults.push_back(path + ": the attribute \"" + name + "\" is ignored");
            } else if (found->second != value && LeadingNumber(found->second) != LeadingNumber(value)) {
                m_faults.push_back(path + ": the attribute \"" + name + "\" is read as \"" + found->second +
                                   "\", not \"" + value + "\"");
            }
        }
        CompareChildren(file, loaded, path);
    }

private:
    /// The number that enumeration texts are read by.
    static std::string LeadingNumber(const std::string& text)
    {
        const std::size_t end = text.find(" (");
        const std::string number = text.substr(0, end);
        const bool digits = !number.empty() && number.find_first_not_of("-0123456789") == number.npos;
        return digits && end != text.npos ? number : text;
    }

    void CompareChildren(const Element& file, const Element& loaded, const std::string& path)
    {
        std::vector<Element> rest = loaded.Children();
        std::map<std::string, int> counts;
        for (const Element& child : file.Children()) {
            const std::string name = child.Name();
            const std::string childPath = path + "/" + name + "[" + std::to_string(++counts[name]) + "]";
            const auto match = std::find_if(rest.begin(), rest.end(),
                                            [&](const Element& candidate) { return candidate.Name() == name; });
            if (match == rest.end()) {
                m_faults.push_back(childPath + ": the element is ignored");
                continue;
            }
            Run(child, *match, childPath);
            rest.erase(match);
        }
    }

    std::vector<std::string>& m_faults;
};

void FindDoubleIds(const Element& element, std::set<std::string>& seen, std::vector<std::string>& faults)
{
    const auto attributes = element.Attributes();
    if (const auto id = attributes.find("ID"); id != attributes.end() && id->second != "0") {
        if (!seen.insert(id->second).second)
            faults.push_back(element.Name() + ": the ID " + id->second + " is used twice");
    }
    for (const Element& child : element.Children())
        FindDoubleIds(child, seen, faults);
}

void FindMissingFiles(IKVProjectData& project, std::vector<std::string>& faults)
{
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i) {
        kv::Bstr source;
        file->get_SourcePath(source.Put());
        if (source.Empty()) {
            faults.push_back("dataFiles[" + std::to_string(i) + "] has no source");
        } else if (!kv::PathFileExists(source.View())) {
            faults.push_back("dataFiles[" + std::to_string(i) + "]: the file " + kv::ToUtf8(source.View()) +
                             " is missing");
        }
    }
}

} // namespace

std::vector<std::string> CheckFile(const std::string& file)
{
    Session session;
    session.Load(file);
    const auto document = Parse(file);
    std::vector<std::string> faults;
    const auto original = FindProject(*document);
    if (!original) throw Failure("cannot load " + file + ": there is no project in it");
    // Once more from the document alone, without what loading a file adds.
    Require(session.Project().loadXML(document.Get()), "cannot load " + file);
    const auto written = WriteAgain(session.Project());
    const auto loaded = FindProject(*written);
    Comparison(faults).Run(Element(original), Element(loaded), kProject);
    std::set<std::string> seen;
    FindDoubleIds(Element(original), seen, faults);
    FindMissingFiles(session.Project(), faults);
    return faults;
}

} // namespace kvproject
