#include "ObjectPath.h"

#include "CommandEdits.h"
#include "Commands.h"
#include "Destination.h"
#include "Failure.h"
#include "Fonts.h"
#include "KVProjectData/KVProjectData.h"
#include "KVProjectData/ResultCodes.h"
#include "Members.h"
#include "MenuEdits.h"
#include "Properties.h"
#include "Storyboard.h"
#include "Text.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <optional>
#include <unistd.h>

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
    if (text.find(']') == text.npos) throw Failure("'" + std::string(text) + "': the closing bracket is missing");
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
        if (kv::SameText(name, list)) return getter;
    }
    throw Failure("'" + std::string(list) +
                  "' is no list: there are titles[N], menus[N] and dataFiles[N], in a menu "
                  "elements[N], buttons[N], overlays[N], texts[N] and groups[N]");
}

ComPtr<IDispatch> StepInto(IDispatch& object, const Segment& segment)
{
    if (segment.position) {
        if (auto item = ItemOfMenu(object, segment.name, *segment.position)) return item;
        Variant item;
        const DISPID getter = FindMember(object, ItemGetter(segment.name));
        Require(GetItem(object, getter, *segment.position, item),
                std::string(segment.name) + "[" + std::to_string(*segment.position) + "]");
        return item.pdispVal;
    }
    ComPtr<IDispatch> part;
    if (kv::SameText(segment.name, "encoding")) part = kv::Query<IKVEncodingParams>(&object);
    if (!part) throw Failure("'" + std::string(segment.name) + "' has no members");
    return part;
}

/// The object that holds a path's last name.
struct Target {
    ComPtr<IDispatch> object;
    /// The command of the object that holds it.
    std::optional<LONG> command;
    /// The production of the title that holds it.
    bool isOfProduction = false;
    /// What has a form of its own, and the part of it that is meant.
    std::optional<Member> special;
    std::optional<std::string> part;
    /// Empty for a command as a whole.
    std::string_view member;

    DISPID Id() const
    {
        if (isOfProduction) throw Failure("'" + std::string(member) + "': what a title shows cannot be set");
        return FindMember(*object, member);
    }
};

/// Takes the first name from a path.
Segment TakeSegment(std::string_view& path)
{
    const std::size_t dot = std::min(path.find('.'), path.size());
    const Segment segment = ParseSegment(path.substr(0, dot));
    path.remove_prefix(std::min(dot + 1, path.size()));
    return segment;
}

Target Find(IKVProjectData& project, std::string_view path)
{
    Target target;
    target.object = &project;
    // Groups know no menu: what is looked up for them is looked up in the menu that they were found in.
    std::shared_ptr<const MenuView> view;
    while (path.find('.') != path.npos) {
        const Segment segment = TakeSegment(path);
        if (target.command || target.isOfProduction || target.special)
            throw Failure("'" + std::string(segment.name) + "' has no members");
        if (segment.position && kv::SameText(segment.name, "commands")) {
            target.command = segment.position;
        } else if (!segment.position && kv::SameText(segment.name, kProductionPart) &&
                   kv::Query<IKVTitle>(target.object)) {
            target.isOfProduction = true;
        } else if (!segment.position && (target.special = FindSpecial(*target.object, segment.name, view))) {
            if (target.special->parts.empty()) throw Failure("'" + std::string(segment.name) + "' has no members");
        } else {
            if (kv::Query<IKVMenu>(target.object)) view = ViewMenuOf(target.object.Get());
            target.object = StepInto(*target.object, segment);
        }
    }
    const Segment last = ParseSegment(path);
    if (last.position && !target.command && !target.special && kv::SameText(last.name, "commands")) {
        target.command = last.position;
        return target;
    }
    if (last.position) throw Failure("'" + std::string(path) + "' is an object: name one of its members");
    if (target.special) {
        target.part = std::string(path);
    } else if (!target.command && !target.isOfProduction) {
        target.special = FindSpecial(*target.object, path, view);
    }
    target.member = path;
    return target;
}

std::string ValueText(const Variant& value)
{
    if (value.vt == VT_EMPTY) return {};
    if (value.vt == VT_BOOL) return value.boolVal ? "true" : "false";
    return kv::ToUtf8(kv::View(value.As(VT_BSTR).bstrVal));
}

/// A member of a command. Empty where it has no value.
std::optional<std::string> CommandMember(const Target& target)
{
    const std::vector<Command> commands = CommandsOf(target.object.Get());
    const LONG position = *target.command;
    if (position < 1 || static_cast<std::size_t>(position) > commands.size()) {
        throw Failure("commands[" + std::to_string(position) + "]: " + Describe(KV_E_BAD_POSITION));
    }
    const Command& command = commands[static_cast<std::size_t>(position) - 1];
    if (target.member.empty()) return command.Text();
    if (kv::SameText(target.member, "Command")) return command.name;
    if (kv::SameText(target.member, "Param1")) return std::to_string(command.param1);
    if (kv::SameText(target.member, "Param2")) return std::to_string(command.param2);
    if (kv::SameText(target.member, "XML")) return command.xml;
    throw Failure("'" + std::string(target.member) + "': " + Describe(DISP_E_UNKNOWNNAME));
}

/// Those of the command itself, which begin its text, too.
std::vector<std::string> CommandValueNames(const Target& target)
{
    if (target.member.empty() || kv::SameText(target.member, "Command")) return CommandNames();
    CommandMember(target);
    return {};
}

/// A member of a production. Empty where it has no value.
std::optional<std::string> ProductionMember(const Target& target)
{
    for (const auto& [name, value] : StoryboardOf(*kv::Query<IKVTitle>(target.object))) {
        if (kv::SameText(name, target.member))
            return value.vt == VT_EMPTY ? std::nullopt : std::optional(ValueText(value));
    }
    throw Failure("'" + std::string(target.member) + "': " + Describe(DISP_E_UNKNOWNNAME));
}

/// Empty for a member that is no property.
std::optional<Property> PropertyAt(const Target& target)
{
    const DISPID id = target.Id();
    for (Property& property : PropertiesOf(*target.object)) {
        if (property.id == id) return std::move(property);
    }
    return std::nullopt;
}

void SetCommandAt(IKVProjectData& project, const Target& target, std::string_view value)
{
    RequireStorable(value, "the command");
    if (target.member.empty()) return SetCommand(project, target.object.Get(), *target.command, value);
    SetCommandMember(project, target.object.Get(), *target.command, target.member, value);
}

/// The number that the property takes for it, as text.
std::string EnumeratorFor(const Enumeration& names, std::string_view text, const std::string& what)
{
    const std::optional<LONG> value = names.Value(text);
    if (!value) throw Failure(what + ": the value is none of " + names.List());
    return names.flags ? std::to_string(static_cast<ULONG>(*value)) : std::to_string(*value);
}

/// A number that an integer could take by rounding alone.
bool IsFraction(const std::string& text)
{
    Variant number(kv::ToUtf16(text));
    return SUCCEEDED(VariantChangeType(&number, &number, 0, VT_R8)) && number.dblVal != std::trunc(number.dblVal);
}

bool HoldsInteger(IDispatch& object, DISPID member)
{
    Variant value;
    if (ReadProperty(object, member, value) != S_OK) return false;
    return value.vt == VT_I4 || value.vt == VT_UI4 || value.vt == VT_I8;
}

/// Whether the member of a menu or an overlay names a file that is shown or played.
bool NamesSource(const Target& target)
{
    const auto is = [&](std::string_view name) { return kv::SameText(target.member, name); };
    return (kv::Query<IKVMenu>(target.object) && (is("Background") || is("Audio"))) ||
           (kv::Query<IKVMenuOverlay>(target.object) && (is("Source") || is("AlphaMask")));
}

/// Tells on standard error what is wrong with the destination of a data file that `what` set.
void TellDestination(const std::string& destination, const std::string& what)
{
    const std::string fault = DestinationFault(destination);
    if (!fault.empty()) std::cerr << "kvproject: " << Shown(what + ": " + fault) << '\n';
}

/// Where "SOURCE=DESTINATION" parts: a source may hold "=" itself, so that the longest one that is there counts.
std::size_t FindSourceEnd(const std::string& text)
{
    std::error_code error;
    if (std::filesystem::exists(HostPath(text), error)) return text.npos;
    for (std::size_t end = text.rfind('='); end != text.npos && end > 0; end = text.rfind('=', end - 1)) {
        if (std::filesystem::exists(HostPath(text.substr(0, end)), error)) return end;
    }
    return text.find('=');
}

} // namespace

std::string GetMember(IKVProjectData& project, std::string_view path)
{
    const Target target = Find(project, path);
    if (target.special) return target.special->Text(target.part ? &*target.part : nullptr, std::string(path));
    if (target.command || target.isOfProduction) {
        const auto text = target.command ? CommandMember(target) : ProductionMember(target);
        if (!text) throw Failure(std::string(path) + ": " + Describe(S_FALSE));
        return *text;
    }
    Variant value;
    const HRESULT result = ReadProperty(*target.object, target.Id(), value);
    if (result != S_OK) throw Failure(std::string(path) + ": " + Describe(result));
    const auto property = PropertyAt(target);
    const auto number = property ? property->EnumerationValue(value) : std::nullopt;
    return number ? property->enumeration->Text(*number) : ValueText(value);
}

std::vector<std::string> ValueNamesOf(IKVProjectData& project, std::string_view path)
{
    const Target target = Find(project, path);
    if (target.special) return target.special->Names(target.part ? &*target.part : nullptr);
    if (target.command) return CommandValueNames(target);
    const auto property = PropertyAt(target);
    if (property && property->name == "Font" && kv::Query<IKVMenuText>(target.object)) return InstalledFaces();
    std::vector<std::string> names;
    if (property && property->enumeration) {
        for (const auto& [name, value] : property->enumeration->enumerators)
            names.push_back(name);
    }
    Variant value;
    if (property && ReadProperty(*target.object, property->id, value) == S_OK && value.vt == VT_BOOL)
        names = {"true", "false"};
    return names;
}

void SetMember(IKVProjectData& project, std::string_view path, std::string_view value)
{
    const Target target = Find(project, path);
    const std::string what = std::string(path) + "=" + Shown(value);
    if (target.special) return target.special->Set(target.part ? &*target.part : nullptr, value, what);
    if (target.command) return SetCommandAt(project, target, value);
    const DISPID member = target.Id();
    const auto property = PropertyAt(target);
    RequireStorable(value, what);
    std::string text =
        property && property->enumeration ? EnumeratorFor(*property->enumeration, value, what) : std::string(value);
    if (NamesSource(target)) text = FullSource(text);
    if (IsFraction(text) && HoldsInteger(*target.object, member)) throw Failure(what + ": a whole number is wanted");
    Require(WriteProperty(*target.object, member, Variant(kv::ToUtf16(text))), what);
    if (kv::SameText(target.member, "DestPath")) TellDestination(text, std::string(path));
}

void JoinStepFor(IKVProjectData& project, std::string_view path)
{
    const Target target = Find(project, path);
    const auto title = kv::Query<IKVTitle>(target.object);
    if (title && !target.isOfProduction && kv::SameText(target.member, "AspectRatio")) JoinStep(project, *title);
}

ComPtr<IDispatch> FindObject(IKVProjectData& project, std::string_view path)
{
    ComPtr<IDispatch> object(&project);
    while (!path.empty())
        object = StepInto(*object, TakeSegment(path));
    return object;
}

Item ParseItem(std::string_view text)
{
    const std::size_t dot = text.rfind('.');
    const std::string_view owner = dot == text.npos ? std::string_view() : text.substr(0, dot);
    const Segment segment = ParseSegment(dot == text.npos ? text : text.substr(dot + 1));
    if (!segment.position) {
        throw Failure("'" + std::string(text) + "' is no object of a list, such as titles[1], dataFiles[1], menus[1] " +
                      "or menus[1].elements[1]");
    }
    return {std::string(owner), std::string(segment.name), *segment.position};
}

void RemoveItem(IKVProjectData& project, const Item& item)
{
    const auto owner = FindObject(project, item.owner);
    if (kv::SameText(item.list, "commands")) return RemoveCommand(owner.Get(), item.position);
    if (!item.owner.empty()) return RemoveFromMenu(*owner, item.list, item.position);
    if (kv::SameText(item.list, "dataFiles")) {
        return Require(project.RemoveDataFile(item.position, nullptr), "cannot remove the data file");
    }
    const auto object = StepInto(project, {item.list, item.position});
    LONG id = 0;
    if (const auto menu = kv::Query<IKVMenu>(object)) {
        Require(menu->get_ID(&id), "cannot remove the menu");
        return Require(project.RemoveMenu(id, nullptr), "cannot remove the menu");
    }
    Require(kv::Query<IKVTitle>(object)->get_ID(&id), "cannot remove the title");
    Require(project.RemoveTitle(id, nullptr), "cannot remove the title");
}

void MoveItem(IKVProjectData& project, const Item& item, LONG to)
{
    const auto owner = FindObject(project, item.owner);
    if (kv::SameText(item.list, "commands")) return MoveCommand(owner.Get(), item.position, to);
    if (!item.owner.empty()) return MoveInMenu(*owner, item.list, item.position, to);
    const bool isTitle = kv::SameText(item.list, "titles");
    const bool isMenu = kv::SameText(item.list, "menus");
    if (!isTitle && !isMenu) ItemGetter(item.list);
    const HRESULT result = isTitle  ? project.MoveTitle(item.position, to)
                           : isMenu ? project.MoveMenu(item.position, to)
                                    : project.MoveDataFile(item.position, to);
    Require(result, "cannot move it to position " + std::to_string(to));
}

void RequireFile(const std::string& file)
{
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) throw Failure(file + ": the file does not exist");
    if (std::filesystem::is_directory(status)) throw Failure(file + ": a folder, no file");
    if (access(file.c_str(), R_OK) != 0) throw Failure(file + ": the file may not be read");
}

void AddDataFile(IKVProjectData& project, const std::string& text, LONG position)
{
    const std::size_t equals = FindSourceEnd(text);
    const std::string name = HostPath(text.substr(0, equals));
    RequireFile(name);
    // The program may be started elsewhere than where the file of the project is.
    const std::string source = std::filesystem::absolute(name).string();
    const std::string destination =
        equals == text.npos ? std::filesystem::path(source).filename().string() : text.substr(equals + 1);
    RequireStorableName(source);
    RequireStorableName(destination);
    ComPtr<IKVDataFile> file;
    Require(project.AddDataFile(position, file.Put()), "cannot add a data file");
    Require(file->put_SourcePath(kv::Bstr(kv::ToUtf16(source)).Get()), source);
    Require(file->put_DestPath(kv::Bstr(kv::ToUtf16(destination)).Get()), destination);
    TellDestination(destination, name);
}

} // namespace kvproject
