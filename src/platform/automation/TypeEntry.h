#pragma once
// The types of a type library, whatever describes them.

#include "platform/automation/TypeDescription.h"
#include "platform/automation/TypeInfo.h"

#include <optional>
#include <variant>
#include <vector>

namespace kv {

/// The last one stands for an interface that a library refers to without describing it.
using TypeEntry = std::variant<const EnumDescription*, const RecordDescription*, const InterfaceDescription*,
                               const ClassDescription*, const TypeDescription*>;

/// Enumerations, records, interfaces, classes: the order of a type library's indices.
std::vector<TypeEntry> TypesOf(const LibraryDescription& library);

std::string_view NameOf(const TypeEntry& type);
/// GUID_NULL for enumerations and records.
const GUID& IdentityOf(const TypeEntry& type);
TYPEKIND KindOf(const TypeEntry& type);

/// The name of a member, an enumerator or a field, then those of a method's parameters. Enumerators and fields are
/// known by their positions. Empty when there is no such member.
std::vector<std::string_view> MemberNames(const TypeEntry& type, DISPID member);
/// The types of an interface's parameters or of a record's fields, in their order.
std::vector<const TypeDescription*> MentionedTypes(const TypeEntry& type);
/// The member, enumerator or field of that name, without regard to case.
std::optional<DISPID> MemberNamed(const TypeEntry& type, std::u16string_view name);

} // namespace kv
