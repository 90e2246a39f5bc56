#include "Properties.h"

#include "Failure.h"
#include "TypeRecords.h"

#include <algorithm>
#include <array>

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

/// By the type that the property's getter writes through its pointer.
std::optional<Enumeration> EnumerationOf(ITypeInfo& info, const std::string& property, const FUNCDESC& getter)
{
    const auto isFlags = [owner = NameOf(info), &property](const FlagProperty& row) {
        return row.interface == owner && row.property == property;
    };
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

} // namespace

bool SameName(std::string_view left, std::string_view right)
{
    const auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::ranges::equal(left, right, {}, fold, fold);
}

std::optional<LONG> Enumeration::Value(std::string_view text) const
{
    LONG value = 0;
    while (true) {
        const std::size_t bar = flags ? text.find('|') : text.npos;
        const auto isNamed = [name = text.substr(0, bar)](const auto& row) { return SameName(row.first, name); };
        const auto found = std::ranges::find_if(enumerators, isNamed);
        if (found == enumerators.end()) return std::nullopt;
        value |= found->second;
        if (bar == text.npos) return value;
        text.remove_prefix(bar + 1);
    }
}

std::optional<std::string> Enumeration::Text(LONG value) const
{
    std::string text;
    LONG untold = value;
    for (const auto& [name, number] : enumerators) {
        if (number == value) return name;
        if (!flags || !(number & value)) continue;
        text += (text.empty() ? "" : "|") + name;
        untold &= ~number;
    }
    return text.empty() || untold != 0 ? std::nullopt : std::optional(std::move(text));
}

std::string Enumeration::List() const
{
    std::string list;
    for (const auto& [name, number] : enumerators)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

std::optional<std::string> Property::ValueName(const VARIANT& value) const
{
    // Flags are unsigned, and of the same size.
    const bool isNumber = value.vt == VT_I4 || value.vt == VT_UI4;
    return enumeration && isNumber ? enumeration->Text(value.lVal) : std::nullopt;
}

std::vector<Property> PropertiesOf(IDispatch& object)
{
    ComPtr<ITypeInfo> info;
    Require(object.GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()), "the object does not tell its members");
    std::vector<Property> properties;
    const WORD count = AttributesOf(*info)->cFuncs;
    for (WORD i = 0; i < count; ++i) {
        const auto function = FunctionOf(*info, i);
        if (function->invkind != INVOKE_PROPERTYGET) continue;
        std::string name = MemberNames(*info, function->memid).at(0);
        auto enumeration = EnumerationOf(*info, name, *function);
        properties.push_back({std::move(name), function->memid, std::move(enumeration)});
    }
    return properties;
}

HRESULT ReadProperty(IDispatch& object, DISPID property, kv::Variant& value)
{
    DISPPARAMS none{};
    return object.Invoke(property, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value.Put(), nullptr,
                         nullptr);
}

} // namespace kvproject
