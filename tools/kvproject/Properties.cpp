#include "Properties.h"

#include "Failure.h"
#include "TypeRecords.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <set>

namespace kvproject {
namespace {

using kv::ComPtr;

/// Properties that are plain numbers in the type library, and the enumeration of the flags that they hold.
struct FlagProperty {
    std::string_view interface;
    std::string_view property;
    std::string_view enumeration;
};
constexpr std::array kFlagProperties = std::to_array<FlagProperty>({
    {"IKVProjectData", "TargetType", "TargetType"},
    {"IKVProjectData", "Options", "ProjectOptions"},
    {"IKVTitle", "Tag", "TitleTypes"},
    {"IKVTitle", "Flags", "TitleFlags"},
    {"IKVMenu", "Tag", "MenuTypes"},
    {"IKVMenu", "Flags", "MenuFlags"},
    {"IKVMenuButton", "Tag", "ButtonTypes"},
    {"IKVMenuButton", "Flags", "MenuElementFlags"},
    {"IKVMenuOverlay", "Tag", "OverlayTypes"},
    {"IKVMenuOverlay", "Flags", "MenuElementFlags"},
    {"IKVMenuText", "Tag", "TextTypes"},
    {"IKVMenuText", "Flags", "MenuElementFlags"},
    {"IKVMenuText", "Justify", "TextJustifyFlags"},
    {"IKVMenuText", "Style", "TextStyles"},
});

Enumeration ReadEnumeration(ITypeInfo& info, bool flags)
{
    Enumeration enumeration{{}, flags};
    const WORD count = AttributesOf(info)->cVars;
    for (WORD i = 0; i < count; ++i) {
        const auto enumerator = VariableOf(info, i);
        enumeration.enumerators.emplace_back(MemberNames(info, enumerator->memid).at(0), enumerator->lpvarValue->lVal);
    }
    return enumeration;
}

/// The enumeration of that name in the library that `user` is part of.
ComPtr<ITypeInfo> FindEnumeration(ITypeInfo& user, std::string_view name)
{
    ComPtr<ITypeLib> library;
    Require(user.GetContainingTypeLib(library.Put(), nullptr), "cannot read the type library");
    for (ULONG i = 0; i < library->GetTypeInfoCount(); ++i) {
        TYPEKIND kind{};
        ComPtr<ITypeInfo> info;
        if (FAILED(library->GetTypeInfoType(i, &kind)) || kind != TKIND_ENUM) continue;
        if (SUCCEEDED(library->GetTypeInfo(i, info.Put())) && NameOf(*info) == name) return info;
    }
    throw Failure("the type library lacks " + std::string(name));
}

/// By the type that the property's getter writes through its pointer. `object` is the object's own interface, `info`
/// the one that describes the property.
std::optional<Enumeration> EnumerationOf(ITypeInfo& info, const std::string& object, const std::string& property,
                                         const FUNCDESC& getter)
{
    const auto isFlags = [&](const FlagProperty& row) { return row.interface == object && row.property == property; };
    const auto flags = std::ranges::find_if(kFlagProperties, isFlags);
    if (flags != kFlagProperties.end()) return ReadEnumeration(*FindEnumeration(info, flags->enumeration), true);

    if (getter.cParams != 1) return std::nullopt;
    const TYPEDESC& pointer = getter.lprgelemdescParam[0].tdesc;
    if (pointer.vt != VT_PTR || pointer.lptdesc->vt != VT_USERDEFINED) return std::nullopt;
    ComPtr<ITypeInfo> type;
    if (FAILED(info.GetRefTypeInfo(pointer.lptdesc->hreftype, type.Put()))) return std::nullopt;
    if (AttributesOf(*type)->typekind != TKIND_ENUM) return std::nullopt;
    return ReadEnumeration(*type, false);
}

/// Those of the interface that it extends come first.
void AddProperties(ITypeInfo& info, const std::string& object, std::vector<Property>& properties)
{
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> base;
    if (SUCCEEDED(info.GetRefTypeOfImplType(0, &reference)) && SUCCEEDED(info.GetRefTypeInfo(reference, base.Put())))
        AddProperties(*base, object, properties);
    std::set<DISPID> settable;
    const WORD count = AttributesOf(info)->cFuncs;
    for (WORD i = 0; i < count; ++i) {
        const auto function = FunctionOf(info, i);
        if (function->invkind == INVOKE_PROPERTYPUT) settable.insert(function->memid);
        if (function->invkind != INVOKE_PROPERTYGET) continue;
        std::string name = MemberNames(info, function->memid).at(0);
        auto enumeration = EnumerationOf(info, object, name, *function);
        properties.push_back({std::move(name), function->memid, false, std::move(enumeration)});
    }
    for (Property& property : properties)
        property.settable = property.settable || settable.contains(property.id);
}

} // namespace

std::optional<LONG> Enumeration::Single(std::string_view text) const
{
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    const auto means = [&](const auto& row) { return isNumber ? row.second == number : kv::SameText(row.first, text); };
    const auto found = std::ranges::find_if(enumerators, means);
    if (found != enumerators.end()) return found->second;
    const bool isFlags = flags && isNumber && number >= 0 && number <= std::numeric_limits<ULONG>::max();
    return isFlags ? std::optional(static_cast<LONG>(number)) : std::nullopt;
}

std::optional<LONG> Enumeration::Value(std::string_view text) const
{
    LONG value = 0;
    while (true) {
        const std::size_t bar = flags ? text.find('|') : text.npos;
        const auto single = Single(text.substr(0, bar));
        if (!single) return std::nullopt;
        value |= *single;
        if (bar == text.npos) return value;
        text.remove_prefix(bar + 1);
    }
}

std::pair<std::vector<std::string>, ULONG> Enumeration::Split(LONG value) const
{
    std::vector<std::string> names;
    LONG rest = value;
    for (const auto& [name, number] : enumerators) {
        if (number == 0 || (number & value) != number) continue;
        names.push_back(name);
        rest &= ~number;
    }
    return {std::move(names), static_cast<ULONG>(rest)};
}

std::string Enumeration::Text(LONG value) const
{
    if (!flags) {
        const auto found = std::ranges::find(enumerators, value, [](const auto& row) { return row.second; });
        return found == enumerators.end() ? std::to_string(value) : found->first;
    }
    auto [names, rest] = Split(value);
    if (rest != 0 || names.empty()) names.push_back(std::to_string(rest));
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : "|") + name;
    return text;
}

std::string Enumeration::List() const
{
    std::string list;
    for (const auto& [name, number] : enumerators)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

std::optional<LONG> Property::EnumerationValue(const VARIANT& value) const
{
    // Flags are unsigned, and of the same size.
    const bool isNumber = value.vt == VT_I4 || value.vt == VT_UI4;
    return enumeration && isNumber ? std::optional(value.lVal) : std::nullopt;
}

std::vector<Property> PropertiesOf(IDispatch& object)
{
    ComPtr<ITypeInfo> info;
    Require(object.GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()), "the object does not tell its members");
    std::vector<Property> properties;
    AddProperties(*info, NameOf(*info), properties);
    return properties;
}

HRESULT ReadProperty(IDispatch& object, DISPID property, kv::Variant& value)
{
    DISPPARAMS none{};
    return object.Invoke(property, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value.Put(), nullptr,
                         nullptr);
}

} // namespace kvproject
