#include "Tree.h"

#include "Commands.h"
#include "KVProjectData/KVProjectData.h"
#include "MemberValues.h"
#include "Properties.h"
#include "Storyboard.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <string>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Variant;

Json ToJson(const VARIANT& value)
{
    switch (value.vt) {
    case VT_BSTR:
        return value.bstrVal ? Json(kv::ToUtf8(kv::View(value.bstrVal))) : Json();
    case VT_BOOL:
        return value.boolVal != VARIANT_FALSE;
    case VT_R8:
        return value.dblVal;
    case VT_R4:
        return FloatValue(value.fltVal);
    case VT_I4:
        return value.lVal;
    case VT_UI4:
        return value.ulVal;
    case VT_I8:
        return value.llVal;
    default:
        return {};
    }
}

/// What is read of a project.
enum class Extent { All, WithoutProductions, Settable };

/// Reads objects of one interface. What they have is looked up at the first of them.
class ObjectReader {
public:
    explicit ObjectReader(Extent extent) : m_settable(extent == Extent::Settable) {}

    /// Every property, late bound, in the order of the interface; null for one that has no value at the moment. Then
    /// the members that have a form of their own.
    Json Read(IDispatch& object, const std::vector<Member>& members = {})
    {
        if (m_properties.empty()) m_properties = PropertiesOf(object);
        if (m_settable) std::erase_if(m_properties, [](const Property& property) { return !property.settable; });
        Json values = Json::object();
        for (const Property& property : m_properties) {
            if (std::ranges::count(members, property.name, &Member::name)) continue;
            Variant value;
            const bool read = ReadProperty(object, property.id, value) == S_OK;
            values[property.name] = read ? ValueOf(property, value) : Json();
        }
        for (const Member& member : members) {
            if (!m_settable || member.write) values[member.name] = member.Value();
        }
        return values;
    }

private:
    static Json ValueOf(const Property& property, const VARIANT& value)
    {
        const std::optional<LONG> number = property.EnumerationValue(value);
        if (!number) return ToJson(value);
        const Enumeration& names = *property.enumeration;
        return names.flags ? Flags(names, *number) : Json(names.Text(*number));
    }

    static Json Flags(const Enumeration& names, LONG value)
    {
        const auto [set, rest] = names.Split(value);
        Json list = set;
        for (ULONG bit = 1; bit != 0; bit <<= 1) {
            if (rest & bit) list.push_back(bit);
        }
        return list;
    }

    const bool m_settable;
    std::vector<Property> m_properties;
};

Json Commands(IUnknown* owner)
{
    Json list = Json::array();
    for (const Command& command : CommandsOf(owner)) {
        list.push_back(Json{{"Command", command.name},
                            {"Param1", command.param1},
                            {"Param2", command.param2},
                            {"XML", command.xml ? Json(*command.xml) : Json()}});
    }
    return list;
}

/// What a project and a title have besides their properties.
void AddParts(Json& tree, IUnknown* object, ObjectReader& encodings)
{
    if (const auto encoding = kv::Query<IKVEncodingParams>(object)) tree["Encoding"] = encodings.Read(*encoding);
    tree["Commands"] = Commands(object);
}

Json Production(IKVTitle& title, Extent extent)
{
    Json production = Json::object();
    for (const std::string_view name : kProductionMembers)
        production[std::string(name)] = Json();
    if (extent == Extent::All) {
        for (const auto& [name, value] : StoryboardOf(title))
            production[std::string(name)] = ToJson(value);
    }
    return production;
}

constexpr std::array<std::string_view, 6> kLists{"Commands", "Titles", "Menus", "Elements", "Groups", "DataFiles"};

/// Reads menus with all that stands in them.
class MenuReader {
public:
    MenuReader(ObjectReader& encodings, Extent extent)
        : m_extent(extent), m_encodings(encodings), m_menus(extent), m_groups(extent)
    {
    }

    Json Read(const ComPtr<IKVMenu>& menu)
    {
        m_view = std::make_shared<const MenuView>(menu);
        Json tree = m_menus.Read(*menu, MembersOf(*menu, m_view));
        AddParts(tree, menu.Get(), m_encodings);
        tree["Elements"] = ReadElements(menu.Get(), {});
        Json& groups = tree["Groups"] = Json::array();
        for (const auto& group : m_view->Groups())
            groups.push_back(m_groups.Read(*group, MembersOf(*group, m_view)));
        return tree;
    }

private:
    Json ReadElements(IUnknown* owner, const std::string& prefix)
    {
        Json list = Json::array();
        std::map<const ElementKind*, int> counts;
        for (const auto& element : ElementsOf(owner)) {
            const ElementKind* kind = KindOf(*element);
            if (!kind) continue;
            const std::string name = prefix + std::string(kind->list) + "[" + std::to_string(++counts[kind]) + "]";
            Json item{{"Kind", kind->name}, {"Name", name}};
            item.update(m_elements.try_emplace(kind, m_extent)
                            .first->second.Read(*OwnInterface(*element), MembersOf(*element, m_view)));
            // Of elements that share an ID the first one bears it in the menu.
            item["Name"] = name;
            if (kv::Query<IKVCommandList>(element)) item["Commands"] = Commands(element.Get());
            if (kv::Query<IKVMenuElementList>(element)) item["Elements"] = ReadElements(element.Get(), name + ".");
            list.push_back(std::move(item));
        }
        return list;
    }

    const Extent m_extent;
    ObjectReader& m_encodings;
    ObjectReader m_menus;
    ObjectReader m_groups;
    std::map<const ElementKind*, ObjectReader> m_elements;
    std::shared_ptr<const MenuView> m_view;
};

void PrintValue(const Json& value, std::ostream& out)
{
    if (value.is_null()) {
        out << "-";
    } else if (value.is_string()) {
        out << Shown(value.get_ref<const std::string&>());
    } else if (value.is_array()) {
        // Flags.
        const char* separator = "";
        for (const Json& flag : value) {
            out << separator;
            PrintValue(flag, out);
            separator = "|";
        }
        if (value.empty()) out << 0;
    } else {
        out << value;
    }
}

void Print(const Json& tree, int indent, std::ostream& out)
{
    const std::string blanks(static_cast<std::size_t>(indent) * 2, ' ');
    for (const auto& [name, value] : tree.items()) {
        if (value.is_object()) {
            out << blanks << name << '\n';
            Print(value, indent + 1, out);
        } else if (std::ranges::count(kLists, name)) {
            out << blanks << name << " (" << value.size() << ")\n";
            int position = 0;
            for (const Json& item : value) {
                out << blanks << "  [" << ++position << "]\n";
                Print(item, indent + 2, out);
            }
        } else {
            out << blanks << name << ": ";
            PrintValue(value, out);
            out << '\n';
        }
    }
}

/// Elements bear the names by which links and groups know them: those of the lists of their kinds.
std::string ItemPath(const std::string& list, const Json& item, int position)
{
    const auto name = item.find("Name");
    const bool isElement = name != item.end() && item.contains("Kind");
    if (!isElement) return list + "[" + std::to_string(position) + "]";
    const std::string& full = name->get_ref<const std::string&>();
    return full.substr(full.rfind('.') + 1);
}

void AddPaths(const Json& tree, const std::string& prefix, std::vector<std::string>& paths)
{
    for (const auto& [name, value] : tree.items()) {
        if (value.is_object()) {
            // The whole of it is a value, too, unless it is an object of the project.
            if (tree.contains("Elements") || tree.contains("Kind") || tree.contains("Members")) {
                if (name != "Encoding") paths.push_back(prefix + name);
            }
            AddPaths(value, prefix + name + ".", paths);
        } else if (std::ranges::count(kLists, name)) {
            int position = 0;
            for (const Json& item : value) {
                const std::string path = prefix + ItemPath(name, item, ++position);
                if (name == "Commands") paths.push_back(path);
                AddPaths(item, path + ".", paths);
            }
        } else {
            paths.push_back(prefix + name);
        }
    }
}

Json ReadTree(IKVProjectData& project, Extent extent)
{
    ObjectReader projects(extent);
    ObjectReader titles(extent);
    ObjectReader dataFiles(extent);
    ObjectReader encodings(extent);
    Json tree = projects.Read(project);
    AddParts(tree, &project, encodings);
    Json& titleList = tree["Titles"] = Json::array();
    ComPtr<IKVTitle> title;
    for (LONG i = 1; SUCCEEDED(project.GetTitle(i, title.Put())); ++i) {
        Json item = titles.Read(*title);
        AddParts(item, title.Get(), encodings);
        if (extent != Extent::Settable) item[std::string(kProductionPart)] = Production(*title, extent);
        titleList.push_back(std::move(item));
    }
    MenuReader menus(encodings, extent);
    Json& menuList = tree["Menus"] = Json::array();
    ComPtr<IKVMenu> menu;
    for (LONG i = 1; SUCCEEDED(project.GetMenu(i, menu.Put())); ++i)
        menuList.push_back(menus.Read(menu));
    Json& fileList = tree["DataFiles"] = Json::array();
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i)
        fileList.push_back(dataFiles.Read(*file));
    return tree;
}

} // namespace

Json ReadTree(IKVProjectData& project)
{
    return ReadTree(project, Extent::All);
}

Json ReadDocument(IKVProjectData& project, const std::string& file)
{
    constexpr int kSchemaVersion = 1;
    Json document{{"SchemaVersion", kSchemaVersion}};
    if (!file.empty()) document["File"] = file;
    document.update(ReadTree(project));
    return document;
}

std::vector<std::string> PathsOf(IKVProjectData& project, bool settable)
{
    std::vector<std::string> paths;
    AddPaths(ReadTree(project, settable ? Extent::Settable : Extent::WithoutProductions), {}, paths);
    return paths;
}

void PrintTree(const Json& tree, std::ostream& out)
{
    Print(tree, 0, out);
}

} // namespace kvproject
