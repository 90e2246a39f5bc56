#include "Tree.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "platform/automation/TypeInfo.h"
#include "platform/com/TaskMemory.h"

#include <algorithm>
#include <string>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Variant;

/// The name of an enumerator, or the number where the value has none.
Json Named(const kv::EnumDescription& description, LONG value)
{
    const auto found = std::ranges::find(description.values, value, &kv::EnumeratorDescription::value);
    return found == description.values.end() ? Json(value) : Json(found->name);
}

/// The enumeration of that name; null for what is none.
const kv::EnumDescription* FindEnum(std::string_view name)
{
    static constexpr std::array kEnums{
        &kv::kEnumDescription<DiscFormat>,      &kv::kEnumDescription<TVStandard>,
        &kv::kEnumDescription<DiscSizeEnum>,    &kv::kEnumDescription<DiscVideoType>,
        &kv::kEnumDescription<VideoFormat>,     &kv::kEnumDescription<VideoResolution>,
        &kv::kEnumDescription<AspectRatio>,     &kv::kEnumDescription<AudioFormat>,
        &kv::kEnumDescription<WideDisplayMode>, &kv::kEnumDescription<SubpictureFormat>,
    };
    const auto found = std::ranges::find(kEnums, name, &kv::EnumDescription::name);
    return found == kEnums.end() ? nullptr : *found;
}

Json ToJson(const VARIANT& value, const kv::TypeDescription& type)
{
    switch (value.vt) {
    case VT_BSTR:
        return value.bstrVal ? Json(kv::ToUtf8(kv::View(value.bstrVal))) : Json();
    case VT_BOOL:
        return value.boolVal != VARIANT_FALSE;
    case VT_R8:
        return value.dblVal;
    case VT_UI4:
        return value.ulVal;
    case VT_I8:
        return value.llVal;
    case VT_I4: {
        const kv::EnumDescription* names = FindEnum(type.name);
        return names ? Named(*names, value.lVal) : Json(value.lVal);
    }
    default:
        return {};
    }
}

/// Every property that can be read, late bound, in the order of the interface.
template <class Interface>
Json Properties(Interface& object)
{
    Json properties = Json::object();
    for (const kv::MemberDescription& member : kv::kInterfaceDescription<Interface>.members) {
        if (member.kind != DISPATCH_PROPERTYGET) continue;
        Variant value;
        DISPPARAMS none{};
        const HRESULT result = object.Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                             value.Put(), nullptr, nullptr);
        // A property that has no value at the moment is left out.
        if (result == S_OK) properties[std::string(member.name)] = ToJson(value, member.parameters[0].type);
    }
    return properties;
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
        Json command{{"Command", Named(kv::kEnumDescription<DiscCommand>, records[i].cmd)},
                     {"Param1", records[i].lParam1},
                     {"Param2", records[i].lParam2}};
        kv::Bstr text;
        if (xml && SUCCEEDED(xml->get_xml(text.Put()))) command["XML"] = kv::ToUtf8(text.View());
        list.push_back(std::move(command));
    }
    return list;
}

/// What a project and a title have besides their properties.
void AddParts(Json& tree, IUnknown* object)
{
    if (const auto encoding = kv::Query<IKVEncodingParams>(object)) tree["Encoding"] = Properties(*encoding);
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
    Json tree = Properties(project);
    AddParts(tree, &project);
    Json& titles = tree["Titles"] = Json::array();
    ComPtr<IKVTitle> title;
    for (LONG i = 1; SUCCEEDED(project.GetTitle(i, title.Put())); ++i) {
        Json item = Properties(*title);
        AddParts(item, title.Get());
        titles.push_back(std::move(item));
    }
    Json& files = tree["DataFiles"] = Json::array();
    ComPtr<IKVDataFile> file;
    for (LONG i = 1; SUCCEEDED(project.GetDataFile(i, file.Put())); ++i)
        files.push_back(Properties(*file));
    return tree;
}

void PrintTree(const Json& tree, std::ostream& out)
{
    Print(tree, 0, out);
}

} // namespace kvproject
