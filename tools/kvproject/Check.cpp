#include "Check.h"

#include "Failure.h"
#include "Session.h"
#include "platform/com/Activation.h"
#include "platform/system/Locale.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Variant;

constexpr std::string_view kProject = "Project";
/// The place of the host's productions, beside the project.
constexpr std::string_view kProductions = "Productions";

/// Attributes that are read as true or false, from a number or from a word.
constexpr std::array<std::string_view, 7> kBooleans{"VBREncoding",   "doCompression", "fitToDisc",      "menuless",
                                                    "onDiscProject", "syncToProject", "twoPassEncoding"};

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

ComPtr<IXMLDOMDocument> Parse(const std::string& file)
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

// Values, as the library reads them from texts

/// Empty for a text that is not read as that type.
std::optional<Variant> ReadAs(VARTYPE type, const std::string& text)
{
    Variant value(kv::ToUtf16(text));
    return SUCCEEDED(VariantChangeType(&value, &value, 0, type)) ? std::optional(std::move(value)) : std::nullopt;
}

std::optional<bool> ReadTruth(const std::string& text)
{
    const auto value = ReadAs(VT_BOOL, text);
    return value ? std::optional(value->boolVal != VARIANT_FALSE) : std::nullopt;
}

std::optional<double> ReadNumber(const std::string& text)
{
    const auto value = ReadAs(VT_R8, text);
    return value ? value->dblVal : kv::ParseDoubleUserLocale(kv::ToUtf16(text));
}

/// IDs have 32 bits, with a sign or without.
std::optional<ULONG> ReadId(const std::string& text)
{
    const auto value = ReadAs(VT_I8, text);
    const bool fits =
        value && value->llVal >= std::numeric_limits<LONG>::min() && value->llVal <= std::numeric_limits<ULONG>::max();
    return fits ? std::optional(static_cast<ULONG>(value->llVal)) : std::nullopt;
}

/// The number that enumeration texts such as "2 (PAL)" begin with.
std::optional<long> ReadLeadingInteger(const std::string& text)
{
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    return end == text.c_str() ? std::nullopt : std::optional(number);
}

template <class Value>
bool Same(const std::optional<Value>& left, const std::optional<Value>& right)
{
    return left && left == right;
}

/// Whether a text of the file means what the library wrote for it again.
bool MeansTheSame(std::string_view attribute, const std::string& text, const std::string& written)
{
    if (text == written) return true;
    // An object whose ID is 0 has none yet, and gets one.
    if (attribute == "ID") return ReadId(text) == 0u || Same(ReadId(text), ReadId(written));
    if (std::ranges::count(kBooleans, attribute)) return Same(ReadTruth(text), ReadTruth(written));
    if (written.find(" (") != written.npos) return Same(ReadLeadingInteger(text), ReadLeadingInteger(written));
    return Same(ReadNumber(text), ReadNumber(written));
}

/// Compares what the file says with what the library made of it.
class Comparison {
public:
    explicit Comparison(std::vector<std::string>& faults) : m_faults(faults) {}

    void Run(const Element& file, const Element& loaded, const std::string& path)
    {
        CompareAttributes(file, loaded, path);
        std::map<std::string, std::deque<Element>> rest;
        for (Element& child : loaded.Children())
            rest[child.Name()].push_back(std::move(child));
        ForEachChild(file, path, [&](const Element& child, const std::string& childPath) {
            std::deque<Element>& matches = rest[child.Name()];
            if (matches.empty()) return ReportUnread(child, childPath);
            Run(child, matches.front(), childPath);
            matches.pop_front();
        });
    }

    /// What stands around the first project.
    void RunOutside(const Element& root)
    {
        ReportAttributes(root, root.Name());
        bool first = true;
        ForEachChild(root, {}, [&](const Element& child, const std::string& path) {
            const std::string name = child.Name();
            if (name == kProject && std::exchange(first, false)) return;
            if (name != kProductions) return ReportUnread(child, path);
            ReportAttributes(child, path);
            ReportProjectsIn(child, path);
        });
    }

private:
    void CompareAttributes(const Element& file, const Element& loaded, const std::string& path)
    {
        const auto kept = loaded.Attributes();
        const auto attributes = file.Attributes();
        for (const auto& [name, value] : attributes) {
            // The version is the writer's, a count follows from the children, a project's ID is its process's.
            if (name == "Version" || name == "NumItems" || (name == "ID" && file.Name() == kProject)) continue;
            const bool oldName = name == "HDVideoFormat" && !attributes.contains("videoFormat");
            const auto found = kept.find(oldName ? "videoFormat" : name);
            if (found == kept.end()) {
                ReportIgnored(name, path);
            } else if (!MeansTheSame(name, value, found->second)) {
                m_faults.push_back(path + ": the attribute \"" + name + "\" is read as \"" + found->second +
                                   "\", not \"" + value + "\"");
            }
        }
    }

    /// Of an element that has none of its own: it may declare the namespace of data types.
    void ReportAttributes(const Element& element, const std::string& path)
    {
        for (const auto& [name, value] : element.Attributes()) {
            if (name != "xmlns:dt") ReportIgnored(name, path);
        }
    }

    void ReportIgnored(const std::string& attribute, const std::string& path)
    {
        m_faults.push_back(path + ": the attribute \"" + attribute + "\" is ignored");
    }

    void ReportUnread(const Element& element, const std::string& path)
    {
        if (element.Name() == kProject) {
            m_faults.push_back(path + ": a further project; a file is to have one");
        } else {
            m_faults.push_back(path + ": the element is ignored");
            ReportProjectsIn(element, path);
        }
    }

    /// Projects are found within elements that mean nothing, too.
    void ReportProjectsIn(const Element& element, const std::string& path)
    {
        ForEachChild(element, path, [&](const Element& child, const std::string& childPath) {
            if (child.Name() == kProject) ReportUnread(child, childPath);
        });
    }

    std::vector<std::string>& m_faults;
};

void FindDoubleIds(const Element& element, const std::string& path, std::set<ULONG>& seen,
                   std::vector<std::string>& faults)
{
    const auto attributes = element.Attributes();
    const auto text = attributes.find("ID");
    const auto id = text == attributes.end() ? std::nullopt : ReadId(text->second);
    if (id && *id != 0 && !seen.insert(*id).second) {
        faults.push_back(path + ": the ID " + text->second + " is used twice");
    }
    ForEachChild(element, path, [&](const Element& child, const std::string& childPath) {
        FindDoubleIds(child, childPath, seen, faults);
    });
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
    const auto original = FindProject(*document);
    if (!original) throw Failure("cannot load " + file + ": there is no project in it");
    // Once more from its element alone, without what loading a file adds.
    Require(session.Project().loadXML(original.Get()), "cannot load " + file);
    const auto written = session.Document();
    ComPtr<IXMLDOMElement> element;
    Require(document->get_documentElement(element.Put()), "cannot load " + file);
    const Element root(element);

    std::vector<std::string> faults;
    Comparison comparison(faults);
    comparison.Run(Element(original), Element(FindProject(*written)), "Project[1]");
    comparison.RunOutside(root);
    std::set<ULONG> seen;
    ForEachChild(root, {}, [&](const Element& child, const std::string& path) {
        // The IDs of productions are the host's.
        if (child.Name() != kProductions) FindDoubleIds(child, path, seen, faults);
    });
    FindMissingFiles(session.Project(), faults);
    return faults;
}

} // namespace kvproject
