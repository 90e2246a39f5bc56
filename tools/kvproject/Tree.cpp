#include "Tree.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "Properties.h"
#include "platform/com/TaskMemory.h"

#include <algorithm>
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

/// Reads objects of one interface. What they have is looked up at the first of them.
class ObjectReader {
public:
    /// Every property that has a value at the moment, late bound, in the order of the interface.
    Json Read(IDispatch& object)
    {
        if (m_properties.empty()) m_properties = PropertiesOf(object);
        Json values = Json::object();
        for (const Property& property : m_properties) {
            Variant value;
            if (ReadProperty(object, property.id, value) != S_OK) continue;
            const auto name = property.ValueName(value);
            values[property.name] = name ? Json(*name) : ToJson(value);
        }
        return values;
    }

private:
    std::vector<Property> m_properties;
};

/// The name of a command, or the number of one without a name.
Json CommandName(LONG command)
{
    const auto& names = kv::kEnumDescription<DiscCommand>.values;
    const auto found = std::ranges::find(names, command, &kv::EnumeratorDescription::value);
    return found == names.end() ? Json(command) : Json(found->name);
}

Json Commands(IUnknown* owner)
{
    Json list = Json::array();
    const auto commands = kv::Query<IKVCommandList>(owner);
    LONG count = 0;
    DiscCommandParams* records = nullptr;
    if (!commands || FAILED(commands->GetCommandList(&count, &records))) return list;
    const kv::UniqueTaskMem<DiscCommandParams> owned(records);
    for (LONG i = 0; i < count; ++i) {
        const auto xml = ComPtr<IXMLDOMNode>::Attach(records[i].pXMLData);
        Json command{
            {"Command", CommandName(records[i].cmd)}, {"Param1", records[i].lParam1}, {"Param2", records[i].lParam2}};
        kv::Bstr text;
        if (xml && SUCCEEDED(xml->get_xml(text.Put()))) command["XML"] = kv::ToUtf8(text.View());
        list.push_back(std::move(command));
    }
    return list;
}

/// What a project and a title have besides their properties.
void AddParts(Json& tree, IUnknown* object, ObjectReader& encodings)
{
    if (const auto encoding = kv::Query<IKVEncodingParams>(object)) tree["Encoding"] = encodings.Read(*encoding);
    tree["Commands"] = Commands(object);
}

void PrintValue(const Json& value, std::ostream& out)
{
    if (value.is_null()) {
        out << "-";
    } else if (value.is_string()) {
        out << value.get_ref<const std::string&>();
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
        } else if (value.is_array()) {
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

} // namespace

Json ReadTree(IKVProjectData& project)
{
    ObjectReader projects;
    ObjectReader titles;
    ObjectReader dataFiles;
    ObjectReader encodings;
    Json tree = projects.Read(project);
    AddParts(tree, &project, encodings);
    Json& titleList = tree["Titles"] = Json::array();
    ComPtr<IKVTitle> title;
    for (LONG i = 1; SUCCEEDED(project.GetTitle(i, title.Put())); ++i) {
        Json item = titles.Read(*title);
        AddParts(item, title.Get(), encodings);
        titleList.push_back(std::move(item));
    }
    Json& fileList = tree["DataFiles"] = Json::array();
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i)
        fileList.push_back(dataFiles.Read(*file));
    return tree;
}

void PrintTree(const Json& tree, std::ostream& out)
{
    Print(tree, 0, out);
}

} // namespace kvproject
