#include "ObjectPath.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"

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

bool SameName(std::string_view left, std::string_view right)
{
    const auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::ranges::equal(left, right, {}, fold, fold);
}

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

/// With one argument, or none.
HRESULT Call(IDispatch& object, DISPID member, WORD flags, VARIANT* argument, Variant* result)
{
    DISPID put = DISPID_PROPERTYPUT;
    const bool puts = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS params{argument, puts ? &put : nullptr, argument ? 1u : 0u, puts ? 1u : 0u};
    return object.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result ? result->Put() : nullptr,
                         nullptr, nullptr);
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
        Variant position(*segment.position);
        Variant item;
        const DISPID getter = FindMember(object, ItemGetter(segment.name));
        Require(Call(object, getter, DISPATCH_METHOD, &position, &item),
                std::string(segment.name) + "[" + std::to_string(*segment.position) + "]");
        return item.pdispVal;
    }
    ComPtr<IDispatch> part;
    if (SameName(segment.name, "encoding")) part = kv::Query<IKVEncodingParams>(&object);
    if (SameName(segment.name, "locking")) part = kv::Query<IKVLocking>(&object);
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

/// The number that an enumerator's name stands for.
std::optional<LONG> EnumeratorValue(std::string_view name)
{
    static constexpr std::array kEnums{
        &kv::kEnumDescription<DiscFormat>,      &kv::kEnumDescription<TVStandard>,
        &kv::kEnumDescription<TargetType>,      &kv::kEnumDescription<ProjectOptions>,
        &kv::kEnumDescription<DiscSizeEnum>,    &kv::kEnumDescription<DiscVideoType>,
        &kv::kEnumDescription<TitleFlags>,      &kv::kEnumDescription<TitleTypes>,
        &kv::kEnumDescription<VideoResolution>, &kv::kEnumDescription<AspectRatio>,
        &kv::kEnumDescription<VideoFormat>,     &kv::kEnumDescription<AudioFormat>,
        &kv::kEnumDescription<WideDisplayMode>, &kv::kEnumDescription<SubpictureFormat>,
        &kv::kEnumDescription<DiscCommand>,
    };
    for (const kv::EnumDescription* description : kEnums) {
        for (const kv::EnumeratorDescription& enumerator : description->values) {
            if (SameName(enumerator.name, name)) return enumerator.value;
        }
    }
    return std::nullopt;
}

/// "PAL", or "Archive_MenuSources|Audio_NormalizeLevels".
std::optional<LONG> NamedValue(std::string_view text)
{
    LONG value = 0;
    while (true) {
        const std::size_t bar = text.find('|');
        const std::optional<LONG> part = EnumeratorValue(text.substr(0, bar));
        if (!part) return std::nullopt;
        value |= *part;
        if (bar == text.npos) return value;
        text.remove_prefix(bar + 1);
    }
}

} // namespace

Variant GetMember(IKVProjectData& project, std::string_view path)
{
    const Target target = Find(project, path);
    Variant value;
    Require(Call(*target.object, target.member, DISPATCH_PROPERTYGET, nullptr, &value), path);
    return value;
}

void SetMember(IKVProjectData& project, std::string_view path, std::string_view value)
{
    const Target target = Find(project, path);
    Variant text(kv::ToUtf16(value));
    HRESULT result = Call(*target.object, target.member, DISPATCH_PROPERTYPUT, &text, nullptr);
    if (result == DISP_E_TYPEMISMATCH) {
        if (const std::optional<LONG> number = NamedValue(value)) {
            Variant named(*number);
            result = Call(*target.object, target.member, DISPATCH_PROPERTYPUT, &named, nullptr);
        }
    }
    Require(result, std::string(path) + "=" + std::string(value));
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

std::string ValueText(const Variant& value)
{
    if (value.vt == VT_EMPTY) return {};
    if (value.vt == VT_BOOL) return value.boolVal ? "true" : "false";
    return kv::ToUtf8(kv::View(value.As(VT_BSTR).bstrVal));
}

} // namespace kvproject
