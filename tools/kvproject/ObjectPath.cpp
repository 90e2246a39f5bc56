#include "ObjectPath.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "Properties.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <optional>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Variant;

struct Segment {
    std::string_view name;
    /// From 1; empty where the path has no brackets.
    std::optional<LONG> position;
};

Segment ParseSegment(std::string_view text)
{
    const std::size_t open = text.find('[');
    if (open == text.npos) return {text, std::nullopt};
    LONG position = 0;
    const char* first = text.data() + open + 1;
    const char* last = text.data() + text.size() - 1;
    const auto [end, error] = std::from_chars(first, std::max(first, last), position);
    if (!text.ends_with(']') || error != std::errc() || end != last) {
        throw Failure("'" + std::string(text) + "' needs a position such as " + std::string(text.substr(0, open)) +
                      "[1]");
    }
    return {text.substr(0, open), position};
}

DISPID FindMember(IDispatch& object, std::string_view name)
{
    std::u16string wide = kv::ToUtf16(name);
    OLECHAR* text = wide.data();
    DISPID member = DISPID_UNKNOWN;
    Require(object.GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &member), "'" + std::string(name) + "'");
    return member;
}

HRESULT WriteProperty(IDispatch& object, DISPID property, Variant value)
{
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS params{&value, &put, 1, 1};
    return object.Invoke(property, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &params, nullptr, nullptr,
                         nullptr);
}

HRESULT GetItem(IDispatch& object, DISPID getter, LONG position, Variant& item)
{
    Variant argument(position);
    DISPPARAMS params{&argument, nullptr, 1, 0};
    return object.Invoke(getter, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, item.Put(), nullptr, nullptr);
}

/// The member that hands out an item of a list.
std::string_view ItemGetter(std::string_view list)
{
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kLists{
        {{"titles", "GetTitle"}, {"menus", "GetMenu"}, {"dataFiles", "GetDataFile"}}};
    for (const auto& [name, getter] : kLists) {
        if (SameName(name, list)) return getter;
    }
    throw Failure("'" + std::string(list) + "' is no list: there are titles[N], menus[N] and dataFiles[N]");
}

ComPtr<IDispatch> StepInto(IDispatch& object, const Segment& segment)
{
    if (segment.position) {
        Variant item;
        const DISPID getter = FindMember(object, ItemGetter(segment.name));
        Require(GetItem(object, getter, *segment.position, item),
                std::string(segment.name) + "[" + std::to_string(*segment.position) + "]");
        return item.pdispVal;
    }
    ComPtr<IDispatch> part;
    if (SameName(segment.name, "encoding")) part = kv::Query<IKVEncodingParams>(&object);
    if (!part) throw Failure("'" + std::string(segment.name) + "' has no members");
    return part;
}

/// The object that holds a path's last name.
struct Target {
    ComPtr<IDispatch> object;
    DISPID member;
};

Target Find(IKVProjectData& project, std::string_view path)
{
    ComPtr<IDispatch> object(&project);
    for (std::size_t dot = path.find('.'); dot != path.npos; dot = path.find('.')) {
        object = StepInto(*object, ParseSegment(path.substr(0, dot)));
        path.remove_prefix(dot + 1);
    }
    if (path.find('[') != path.npos) throw Failure("'" + std::string(path) + "' is an object: name one of its members");
    return {object, FindMember(*object, path)};
}

/// Empty for a member that is no property.
std::optional<Property> PropertyAt(const Target& target)
{
    for (Property& property : PropertiesOf(*target.object)) {
        if (property.id == target.member) return std::move(property);
    }
    return std::nullopt;
}

std::string ValueText(const Variant& value)
{
    if (value.vt == VT_EMPTY) return {};
    if (value.vt == VT_BOOL) return value.boolVal ? "true" : "false";
    return kv::ToUtf8(kv::View(value.As(VT_BSTR).bstrVal));
}

} // namespace

std::string GetMember(IKVProjectData& project, std::string_view path)
{
    const Target target = Find(project, path);
    Variant value;
    const HRESULT result = ReadProperty(*target.object, target.member, value);
    if (result != S_OK) throw Failure(std::string(path) + ": " + Describe(result));
    const auto property = PropertyAt(target);
    const auto name = property ? property->ValueName(value) : std::nullopt;
    return name ? *name : ValueText(value);
}

void SetMember(IKVProjectData& project, std::string_view path, std::string_view value)
{
    const Target target = Find(project, path);
    const std::string what = std::string(path) + "=" + std::string(value);
    HRESULT result = WriteProperty(*target.object, target.member, Variant(kv::ToUtf16(value)));
    const auto property = result == DISP_E_TYPEMISMATCH ? PropertyAt(target) : std::nullopt;
    if (property && property->enumeration) {
        const Enumeration& names = *property->enumeration;
        const std::optional<LONG> named = names.Value(value);
        if (!named) throw Failure(what + ": the value is none of " + names.List());
        result = WriteProperty(*target.object, target.member, Variant(*named));
    }
    Require(result, what);
}

Item ParseItem(std::string_view text)
{
    const Segment segment = ParseSegment(text);
    const bool isTitle = SameName(segment.name, "titles");
    if (!segment.position || !(isTitle || SameName(segment.name, "dataFiles"))) {
        throw Failure("'" + std::string(text) + "' is neither titles[N] nor dataFiles[N]");
    }
    return {isTitle ? Item::List::Titles : Item::List::DataFiles, *segment.position};
}

void RemoveItem(IKVProjectData& project, const Item& item)
{
    if (item.list == Item::List::DataFiles) {
        Require(project.RemoveDataFile(item.position, nullptr), "cannot remove the data file");
        return;
    }
    ComPtr<IKVTitle> title;
    LONG id = 0;
    Require(project.GetTitle(item.position, title.Put()), "cannot remove the title");
    Require(title->get_ID(&id), "cannot remove the title");
    Require(project.RemoveTitle(id, nullptr), "cannot remove the title");
}

void MoveItem(IKVProjectData& project, const Item& item, LONG to)
{
    Require(item.list == Item::List::Titles ? project.MoveTitle(item.position, to)
                                            : project.MoveDataFile(item.position, to),
            "cannot move it to position " + std::to_string(to));
}

void AddDataFile(IKVProjectData& project, const std::string& text, LONG position)
{
    const std::size_t equals = text.find('=');
    const std::string source = text.substr(0, equals);
    const std::string destination =
        equals == text.npos ? std::filesystem::path(source).filename().string() : text.substr(equals + 1);
    ComPtr<IKVDataFile> file;
    Require(project.AddDataFile(position, file.Put()), "cannot add a data file");
    Require(file->put_SourcePath(kv::Bstr(kv::ToUtf16(source)).Get()), source);
    Require(file->put_DestPath(kv::Bstr(kv::ToUtf16(destination)).Get()), destination);
}

} // namespace kvproject
