#include "platform/automation/TypeEntry.h"

#include "platform/system/Case.h"

#include <algorithm>

namespace kv {
namespace {

/// The rows of an enumeration or a record, looked up by position.
template <class Row>
std::vector<std::string_view> RowNames(std::span<const Row> rows, DISPID position)
{
    if (position < 0 || static_cast<std::size_t>(position) >= rows.size()) return {};
    return {rows[static_cast<std::size_t>(position)].name};
}

template <class Row>
std::optional<DISPID> RowNamed(std::span<const Row> rows, std::u16string_view name)
{
    const auto found = std::ranges::find_if(rows, [name](const Row& row) { return SameText(row.name, name); });
    if (found == rows.end()) return std::nullopt;
    if constexpr (std::is_same_v<Row, MemberDescription>) {
        return found->id;
    } else {
        return static_cast<DISPID>(found - rows.begin());
    }
}

/// An interface, behind the one that it extends if the library has that, too.
void AddInterface(std::vector<TypeEntry>& types, const LibraryDescription& library,
                  const InterfaceDescription* interface)
{
    if (std::ranges::find(types, TypeEntry(interface)) != types.end()) return;
    const auto base = std::ranges::find(library.interfaces, interface->inherited);
    if (base != library.interfaces.end()) AddInterface(types, library, *base);
    types.emplace_back(interface);
}

} // namespace

std::vector<TypeEntry> TypesOf(const LibraryDescription& library)
{
    std::vector<TypeEntry> types;
    for (const auto* description : library.enums)
        types.emplace_back(description);
    for (const auto* description : library.records)
        types.emplace_back(description);
    for (const auto* description : library.interfaces)
        AddInterface(types, library, description);
    for (const auto& description : library.classes)
        types.emplace_back(&description);
    return types;
}

std::string_view NameOf(const TypeEntry& type)
{
    return std::visit([](const auto* description) { return description->name; }, type);
}

const GUID& IdentityOf(const TypeEntry& type)
{
    if (const auto* entry = std::get_if<const InterfaceDescription*>(&type)) return *(*entry)->iid;
    if (const auto* entry = std::get_if<const ClassDescription*>(&type)) return *(*entry)->clsid;
    if (const auto* entry = std::get_if<const TypeDescription*>(&type)) return *(*entry)->identity();
    return GUID_NULL;
}

TYPEKIND KindOf(const TypeEntry& type)
{
    if (std::holds_alternative<const EnumDescription*>(type)) return TKIND_ENUM;
    if (std::holds_alternative<const RecordDescription*>(type)) return TKIND_RECORD;
    if (std::holds_alternative<const ClassDescription*>(type)) return TKIND_COCLASS;
    const auto* entry = std::get_if<const InterfaceDescription*>(&type);
    return entry && (*entry)->kind != InterfaceKind::Custom ? TKIND_DISPATCH : TKIND_INTERFACE;
}

std::vector<std::string_view> MemberNames(const TypeEntry& type, DISPID member)
{
    if (const auto* values = std::get_if<const EnumDescription*>(&type)) return RowNames((*values)->values, member);
    if (const auto* record = std::get_if<const RecordDescription*>(&type)) return RowNames((*record)->fields, member);
    const auto* entry = std::get_if<const InterfaceDescription*>(&type);
    if (!entry) return {};
    const auto& members = (*entry)->members;
    const auto row = std::ranges::find(members, member, &MemberDescription::id);
    if (row == members.end()) {
        const InterfaceDescription* base = (*entry)->inherited;
        return base ? MemberNames(TypeEntry(base), member) : std::vector<std::string_view>();
    }
    std::vector<std::string_view> names{row->name};
    // The value of a property has no name of its own.
    const std::size_t unnamed = row->kind == DISPATCH_METHOD ? 0 : 1;
    for (const ParameterDescription& parameter : row->Parameters().first(row->parameterCount - unnamed))
        names.push_back(parameter.name);
    return names;
}

std::vector<const TypeDescription*> MentionedTypes(const TypeEntry& type)
{
    std::vector<const TypeDescription*> types;
    if (const auto* record = std::get_if<const RecordDescription*>(&type)) {
        for (const FieldDescription& field : (*record)->fields)
            types.push_back(&field.type);
    }
    if (const auto* entry = std::get_if<const InterfaceDescription*>(&type)) {
        for (const MemberDescription& member : (*entry)->members) {
            for (const ParameterDescription& parameter : member.Parameters())
                types.push_back(&parameter.type);
        }
    }
    return types;
}

std::optional<DISPID> MemberNamed(const TypeEntry& type, std::u16string_view name)
{
    if (const auto* values = std::get_if<const EnumDescription*>(&type)) return RowNamed((*values)->values, name);
    if (const auto* record = std::get_if<const RecordDescription*>(&type)) return RowNamed((*record)->fields, name);
    const auto* entry = std::get_if<const InterfaceDescription*>(&type);
    return entry ? RowNamed((*entry)->members, name) : std::nullopt;
}

} // namespace kv
