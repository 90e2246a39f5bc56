#include "Losses.h"

#include "Commands.h"
#include "Failure.h"
#include "Markup.h"
#include "Session.h"
#include "platform/system/Locale.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <list>
#include <utility>

namespace kvproject {
namespace {

using kv::Variant;

/// Attributes that are read as true or false, from a number or from a word.
constexpr std::array<std::string_view, 13> kBooleans{"IsMenuBackgroundLoopPlay",
                                                     "VBREncoding",
                                                     "doCompression",
                                                     "fitToDisc",
                                                     "menuless",
                                                     "native",
                                                     "onDiscProject",
                                                     "stillImage",
                                                     "syncToProject",
                                                     "twoPassEncoding",
                                                     "valid",
                                                     "zoomMask",
                                                     "zoomSource"};

/// Attributes that are read as single floats.
constexpr std::array<std::string_view, 11> kFloats{"Center_X", "Center_Y", "Size_X", "Size_Y", "bottom", "left",
                                                   "right",    "rotation", "top",    "x",      "y"};

/// What a menu that is not native hands on to its production, which stands beside the project.
constexpr std::array<std::string_view, 3> kPlayed{"audio", "background", "duration"};

/// Names that attributes once had.
constexpr std::array<std::pair<std::string_view, std::string_view>, 2> kOldNames{
    {{"HDVideoFormat", "videoFormat"}, {"zoomToFill", "zoomSource"}}};

/// Whose children are parts: each stands for the only one of its name, however often it is there. All others hold
/// lists.
constexpr std::array<std::string_view, 4> kWithParts{"Project", "Title", "Menu", "Button"};

/// With which the library closes every file.
constexpr const char* kWritersComment = "DVD Project xml file created using KVProject object.";

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

/// The number of an enumeration, alone or as in "2 (PAL)". Empty for anything else, also where a number is in front.
std::optional<long> ReadEnumerator(const std::string& text)
{
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    const std::string_view rest = end;
    const bool hasName = rest.starts_with(" (") && rest.ends_with(')');
    return end != text.c_str() && (rest.empty() || hasName) ? std::optional(number) : std::nullopt;
}

/// "0x1F"
std::optional<unsigned long> ReadHex(const std::string& text)
{
    constexpr int kBase = 16;
    char* end = nullptr;
    const unsigned long number = std::strtoul(text.c_str(), &end, kBase);
    return !text.empty() && *end == '\0' ? std::optional(number) : std::nullopt;
}

std::optional<float> ReadFloat(const std::string& text)
{
    const auto number = ReadNumber(text);
    return number ? std::optional(static_cast<float>(*number)) : std::nullopt;
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
    if (std::ranges::count(kFloats, attribute)) return Same(ReadFloat(text), ReadFloat(written));
    if (written.starts_with("0x")) return Same(ReadHex(text), ReadHex(written));
    if (written.find(" (") != written.npos) return Same(ReadEnumerator(text), ReadEnumerator(written));
    return Same(ReadNumber(text), ReadNumber(written));
}

/// What an attribute is called today, unless that one is there as well.
std::string CurrentName(const std::string& name, const std::map<std::string, std::string>& attributes)
{
    for (const auto& [old, current] : kOldNames) {
        if (name == old && !attributes.contains(std::string(current))) return std::string(current);
    }
    return name;
}

/// What a child element is loaded as: a command is what its code says, whatever its name.
std::string KindOf(const std::string& name, const std::string& parent)
{
    return parent == "Commands" && IsCommandName(name) ? "a command" : name;
}

/// An element as the library wrote it again.
struct Written {
    explicit Written(Element node) : element(std::move(node))
    {
        const std::string name = element.Name();
        for (Element& child : element.Children())
            children[KindOf(child.Name(), name)].emplace_back(std::move(child));
    }

    Element element;
    /// By what they were loaded as; those in lists go as they are met.
    std::map<std::string, std::list<Written>> children;
};

/// Compares what the file says with what the library made of it.
class Comparison {
public:
    explicit Comparison(std::vector<std::string>& faults) : m_faults(faults) {}

    void Run(const Element& file, Written& loaded, const std::string& path)
    {
        CompareAttributes(file, loaded.element, path);
        CompareContents(file.Contents(), loaded.element.Contents(), path);
        const std::string name = file.Name();
        const bool hasParts = std::ranges::count(kWithParts, name);
        ForEachChild(file, path, [&](const Element& child, const std::string& childPath) {
            std::list<Written>& matches = loaded.children[KindOf(child.Name(), name)];
            if (matches.empty()) return ReportUnread(child, childPath);
            CompareNames(child, matches.front().element, childPath);
            Run(child, matches.front(), childPath);
            if (!hasParts) matches.pop_front();
        });
    }

    /// What stands around the first project. Of the productions all is kept.
    void RunOutside(IXMLDOMDocument& document)
    {
        const Element root = RootOf(document);
        ReportAttributes(root, root.Name());
        CompareContents(Element(&document).Contents(), {{"a comment", kWritersComment}}, "the document");
        CompareContents(root.Contents(), {}, root.Name());
        bool firstProject = true;
        ForEachChild(root, {}, [&](const Element& child, const std::string& path) {
            const std::string name = child.Name();
            if (name == kProjectElement && std::exchange(firstProject, false)) return;
            name == kProductionsElement ? ReportProjectsIn(child, path) : ReportUnread(child, path);
        });
    }

private:
    void CompareNames(const Element& file, const Element& loaded, const std::string& path)
    {
        if (file.Name() == loaded.Name()) return;
        const std::string code = loaded.Attributes()["code"];
        m_faults.push_back(path + ": the command is read as \"" + CommandName(std::stoi(code)) + "\", not \"" +
                           file.Name() + '"');
    }

    void CompareContents(const std::vector<Content>& file, const std::vector<Content>& kept, const std::string& path)
    {
        for (const Content& content : file) {
            if (!std::ranges::count(kept, content))
                m_faults.push_back(path + ": " + std::string(content.kind) + " is ignored");
        }
    }

    void CompareAttributes(const Element& file, const Element& loaded, const std::string& path)
    {
        const auto kept = loaded.Attributes();
        const auto attributes = file.Attributes();
        for (const auto& [name, value] : attributes) {
            // The version is the writer's, a count follows from the children, a project's ID is its process's.
            if (name == "Version" || name == "NumItems" || (name == "ID" && file.Name() == kProjectElement)) continue;
            const std::string known = CurrentName(name, attributes);
            const auto found = kept.find(known);
            if (found == kept.end()) {
                const bool isPlayed = file.Name() == "Menu" && std::ranges::count(kPlayed, name);
                if (!isPlayed) ReportIgnored(name, path);
            } else if (!MeansTheSame(known, value, found->second)) {
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
        if (element.Name() == kProjectElement) {
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
            if (child.Name() == kProjectElement) ReportUnread(child, childPath);
        });
    }

    std::vector<std::string>& m_faults;
};

} // namespace

std::vector<std::string> FindLosses(IXMLDOMDocument& document, const std::string& file)
{
    const auto original = FindProject(document);
    if (!original) throw Failure("cannot load " + file + ": there is no project in it");
    // From its element alone, without what loading a file adds.
    Session session;
    Require(session.Project().loadXML(original.Get()), "cannot load " + file);
    const auto written = session.Document();

    std::vector<std::string> losses;
    Comparison comparison(losses);
    Written loaded(Element(FindProject(*written)));
    comparison.Run(Element(original), loaded, "Project[1]");
    comparison.RunOutside(document);
    return losses;
}

} // namespace kvproject
