#pragma once
// What an interface, an enumeration or a record tells of itself, known while compiling.
//
// Late-bound calls, names and type libraries all read these descriptions; nobody else repeats them.

#include "platform/automation/IDispatch.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

namespace kv {

/// How a parameter passes; the values are the platform's PARAMFLAG bits.
inline constexpr WORD kParameterIn = 0x1;
inline constexpr WORD kParameterOut = 0x2;
inline constexpr WORD kParameterRetval = 0x8;
inline constexpr WORD kParameterOptional = 0x10;

/// The type of a parameter or of a field.
struct TypeDescription {
    /// VT_USERDEFINED for enumerations, records and interfaces other than IUnknown and IDispatch.
    VARTYPE vt = VT_EMPTY;
    /// Levels of indirection around `vt`.
    BYTE pointers = 0;
    /// The name of a user-defined type.
    std::string_view name;
    /// Gives the identity of a user-defined type, null when that is no interface. A function, since the type may not
    /// be defined yet where the description is made.
    const GUID* (*identity)() = nullptr;
};

struct ParameterDescription {
    static constexpr BYTE kNone = 0xff;

    std::string_view name;
    TypeDescription type;
    WORD flags = 0;
    /// How many records a pointer to records stands for, or the position of the parameter that tells.
    BYTE count = 1;
    BYTE counter = kNone;
};

inline constexpr std::size_t kMaxParameters = 8;

struct MemberDescription;

/// The arguments of a late-bound call, in the order of the parameters; null where one was left out.
struct ArgumentList {
    static constexpr BYTE kNone = 0xff;

    const MemberDescription& member;
    std::array<VARIANT*, kMaxParameters> values{};
    /// Set by the callee to the parameter that it could not take.
    BYTE bad = kNone;
};

/// Calls one member of the interface that `self` points at. Null for members that are only described.
using Thunk = HRESULT (*)(void* self, ArgumentList& arguments, VARIANT* result);

struct MemberDescription {
    std::string_view name;
    DISPID id = DISPID_UNKNOWN;
    /// DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT.
    WORD kind = DISPATCH_METHOD;
    BYTE parameterCount = 0;
    std::array<ParameterDescription, kMaxParameters> parameters{};
    Thunk thunk = nullptr;

    constexpr std::span<const ParameterDescription> Parameters() const { return {parameters.data(), parameterCount}; }
};

enum class InterfaceKind : BYTE {
    Custom,
    Dual,
    /// Late-bound calls only: an event interface.
    Dispatch,
};

struct InterfaceDescription {
    std::string_view name;
    std::string_view base;
    /// The description of `base`; null for IUnknown and IDispatch, which end every chain.
    const InterfaceDescription* inherited = nullptr;
    /// Makes a pointer to this interface one to `base`.
    void* (*toBase)(void* self) = nullptr;
    const GUID* iid = nullptr;
    InterfaceKind kind = InterfaceKind::Custom;
    /// The slot of the first member, behind those of the base.
    std::size_t firstSlot = 0;
    /// Those that the interface adds to its base, in slot order.
    std::span<const MemberDescription> members;
    /// Positions in `members`, ordered by DISPID.
    std::span<const std::uint16_t> byId;
};

struct EnumeratorDescription {
    std::string_view name;
    LONG value = 0;
};

struct EnumDescription {
    std::string_view name;
    std::span<const EnumeratorDescription> values;
};

struct FieldDescription {
    std::string_view name;
    TypeDescription type;
    void* (*place)(void* record) = nullptr;
};

struct RecordDescription {
    std::string_view name;
    /// In bytes.
    ULONG size = 0;
    std::span<const FieldDescription> fields;
};

struct ClassDescription {
    std::string_view name;
    const CLSID* clsid = nullptr;
    std::string_view defaultInterface;
    /// The event interface, empty where there is none.
    std::string_view sourceInterface;
};

/// Everything that one type library declares.
struct LibraryDescription {
    std::string_view name;
    std::string_view help;
    const GUID* libid = nullptr;
    WORD major = 1;
    WORD minor = 0;
    LCID locale = 1033;
    std::span<const EnumDescription* const> enums;
    std::span<const RecordDescription* const> records;
    std::span<const InterfaceDescription* const> interfaces;
    std::span<const ClassDescription> classes;
};

/// Specialised beside each interface: `static constexpr auto members = Members(…)`.
template <class Interface>
struct InterfaceTable;

/// Specialised beside each record: `static constexpr std::array fields{Field<&Record::member>("member"), …}`.
template <class Record>
struct RecordTable;

/// Specialised by KV_ENUM: `name` and `text`, the declaration as it was written.
template <class Enum>
struct EnumTable;

namespace detail {

/// The name of a type as the source writes it; works for types that are only declared, too.
template <class T>
consteval std::string_view TypeName()
{
    constexpr std::string_view self = __PRETTY_FUNCTION__;
    constexpr std::size_t start = self.find("T = ") + 4;
    constexpr std::size_t end = self.find_first_of(";]", start);
    return self.substr(start, end - start);
}

template <class T>
concept Record = requires
{
    RecordTable<std::remove_const_t<T>>::fields;
};

/// The automation type of a plain value, VT_EMPTY when `T` is none.
template <class T>
consteval VARTYPE ValueType()
{
    if (std::is_same_v<T, VARIANT_BOOL>) return VT_BOOL;
    if (std::is_same_v<T, USHORT>) return VT_UI2;
    if (std::is_same_v<T, BYTE>) return VT_UI1;
    if (std::is_same_v<T, LONG>) return VT_I4;
    if (std::is_same_v<T, ULONG>) return VT_UI4;
    if (std::is_same_v<T, LONGLONG>) return VT_I8;
    if (std::is_same_v<T, ULONGLONG>) return VT_UI8;
    if (std::is_same_v<T, float>) return VT_R4;
    if (std::is_same_v<T, double>) return VT_R8;
    if (std::is_same_v<T, BSTR>) return VT_BSTR;
    if (std::is_same_v<T, VARIANT>) return VT_VARIANT;
    if (std::is_same_v<T, IUnknown*>) return VT_UNKNOWN;
    if (std::is_same_v<T, IDispatch*>) return VT_DISPATCH;
    return VT_EMPTY;
}

template <class T>
const GUID* InterfaceIdentity()
{
    if constexpr (std::is_base_of_v<IUnknown, T>) {
        return &T::IID;
    } else {
        return nullptr;
    }
}

/// What travels in a VARIANT of its own. Interfaces may be declared only.
template <class T>
consteval bool IsFieldType()
{
    return ValueType<T>() != VT_EMPTY || std::is_enum_v<T> || std::is_class_v<std::remove_pointer_t<T>>;
}

template <class T>
consteval TypeDescription Describe()
{
    if constexpr (ValueType<T>() != VT_EMPTY) {
        return {ValueType<T>(), 0, {}};
    } else if constexpr (std::is_pointer_v<T>) {
        TypeDescription type = Describe<std::remove_const_t<std::remove_pointer_t<T>>>();
        ++type.pointers;
        return type;
    } else {
        return {VT_USERDEFINED, 0, TypeName<T>(), &InterfaceIdentity<T>};
    }
}

/// What a parameter type means to a caller.
template <class T>
struct ParameterTraits {
    static constexpr bool kOut = false;
    static constexpr bool kEither = false;
};

template <class T>
requires(std::is_pointer_v<T> && !std::is_same_v<T, BSTR> && !std::is_same_v<T, IUnknown*> &&
         !std::is_same_v<T, IDispatch*>) struct ParameterTraits<T> {
    using Target = std::remove_pointer_t<T>;
    /// A pointer to a value or to another pointer is written through; a pointer to an object is the object. One to
    /// something constant is a list that the callee reads.
    static constexpr bool kOut = !std::is_const_v<Target> && (ValueType<Target>() != VT_EMPTY ||
                                                              std::is_enum_v<Target> || std::is_pointer_v<Target>);
    /// Records are written by a getter, and where the row says so.
    static constexpr bool kEither = Record<Target> && !std::is_const_v<Target>;
};

} // namespace detail

/// The name of a parameter, with what its type cannot tell.
struct ParameterName {
    const char* name;
    WORD flags = 0;
    BYTE count = 1;
    BYTE counter = ParameterDescription::kNone;

    constexpr ParameterName(const char* text, WORD more = 0) : name(text), flags(more) {}
};

/// A parameter that the callee reads and writes.
constexpr ParameterName InOut(const char* name)
{
    return {name, kParameterIn};
}

/// A parameter that a late-bound caller may leave out: its zero value is passed.
constexpr ParameterName Optional(const char* name)
{
    return {name, kParameterOptional};
}

/// Records that a method writes.
constexpr ParameterName Out(ParameterName parameter)
{
    parameter.flags |= kParameterOut;
    return parameter;
}

/// A pointer to that many records.
constexpr ParameterName Several(const char* name, BYTE count)
{
    ParameterName parameter(name);
    parameter.count = count;
    return parameter;
}

/// A pointer to records, or the place of one, of which there are as many as the parameter at that position says.
constexpr ParameterName Counted(const char* name, BYTE position)
{
    ParameterName parameter(name);
    parameter.counter = position;
    return parameter;
}

namespace detail {

template <class... Arguments, std::size_t Count>
consteval void FillParameters(MemberDescription& member, const std::array<ParameterName, Count>& names)
{
    static_assert(sizeof...(Arguments) == Count, "every parameter has a name");
    static_assert(Count <= kMaxParameters);
    constexpr std::array<bool, Count> out{ParameterTraits<Arguments>::kOut...};
    constexpr std::array<bool, Count> either{ParameterTraits<Arguments>::kEither...};
    const std::array<TypeDescription, Count> types{Describe<Arguments>()...};
    std::size_t outs = 0;
    for (std::size_t i = 0; i < Count; ++i) {
        const ParameterName& row = names[i];
        const bool marked = row.flags & kParameterOut;
        if (marked && !either[i]) throw "only a pointer to records is told by its row which way it passes";
        const bool writes = out[i] || marked || (either[i] && member.kind == DISPATCH_PROPERTYGET);
        const WORD direction = writes ? kParameterOut : kParameterIn;
        member.parameters[i] = {row.name, types[i], static_cast<WORD>(direction | row.flags), row.count, row.counter};
        outs += writes;
    }
    member.parameterCount = Count;
    // The only out parameter, standing last, is what a late-bound call results in.
    if constexpr (Count > 0) {
        if (outs == 1 && member.parameters[Count - 1].flags == kParameterOut) {
            member.parameters[Count - 1].flags |= kParameterRetval;
        }
    }
}

} // namespace detail

/// Joins the rows of a member table, each one an array of one or two members.
template <std::size_t... Counts>
consteval auto Members(const std::array<MemberDescription, Counts>&... rows)
{
    std::array<MemberDescription, (Counts + ... + 0)> all{};
    std::size_t next = 0;
    auto append = [&](const auto& row) {
        for (const MemberDescription& member : row)
            all[next++] = member;
    };
    (append(rows), ...);
    return all;
}

namespace detail {

template <std::size_t Count>
consteval std::array<std::uint16_t, Count> OrderById(const std::array<MemberDescription, Count>& members)
{
    std::array<std::uint16_t, Count> order{};
    for (std::size_t i = 0; i < Count; ++i) {
        std::size_t at = i;
        for (; at > 0 && members[order[at - 1]].id > members[i].id; --at)
            order[at] = order[at - 1];
        order[at] = static_cast<std::uint16_t>(i);
    }
    return order;
}

template <class Interface>
inline constexpr auto kOrderById = OrderById(InterfaceTable<Interface>::members);

template <class Interface>
consteval InterfaceKind KindOf()
{
    if constexpr (requires { InterfaceTable<Interface>::kind; }) {
        return InterfaceTable<Interface>::kind;
    } else if constexpr (std::is_base_of_v<IDispatch, Interface>) {
        return InterfaceKind::Dual;
    } else {
        return InterfaceKind::Custom;
    }
}

template <class Interface>
consteval InterfaceDescription DescribeInterface();

} // namespace detail

/// The description of an interface that has a member table. Its base has one, too, unless that is IUnknown or
/// IDispatch.
template <class Interface>
inline constexpr InterfaceDescription kInterfaceDescription = detail::DescribeInterface<Interface>();

namespace detail {

template <class Interface>
consteval InterfaceDescription DescribeInterface()
{
    using Base = typename Interface::Base;
    InterfaceDescription description;
    description.name = TypeName<Interface>();
    description.base = TypeName<Base>();
    if constexpr (std::is_same_v<Base, IUnknown>) {
        description.firstSlot = 3;
    } else if constexpr (std::is_same_v<Base, IDispatch>) {
        description.firstSlot = 7;
    } else {
        const InterfaceDescription& base = kInterfaceDescription<Base>;
        description.inherited = &base;
        description.toBase = [](void* self) -> void* { return static_cast<Base*>(static_cast<Interface*>(self)); };
        description.firstSlot = base.firstSlot + base.members.size();
    }
    description.iid = &Interface::IID;
    description.kind = KindOf<Interface>();
    description.members = InterfaceTable<Interface>::members;
    description.byId = kOrderById<Interface>;
    return description;
}

} // namespace detail

/// One field of a record table.
template <auto Member>
struct FieldOf;

template <class Owner, class Type, Type Owner::*Member>
struct FieldOf<Member> {
    static_assert(detail::IsFieldType<Type>(), "a field is a plain value, an enumeration or an object");

    static consteval FieldDescription Named(std::string_view name)
    {
        return {name, detail::Describe<Type>(),
                [](void* record) -> void* { return &(static_cast<Owner*>(record)->*Member); }};
    }
};

template <auto Member>
consteval FieldDescription Field(std::string_view name)
{
    return FieldOf<Member>::Named(name);
}

template <class Record>
inline constexpr RecordDescription kRecordDescription{detail::TypeName<Record>(), sizeof(Record),
                                                      RecordTable<Record>::fields};

namespace detail {

constexpr bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

constexpr std::string_view Trim(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

constexpr LONG EnumeratorValue(std::string_view text)
{
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x");
    LONG value = 0;
    for (char c : hexadecimal ? text.substr(2) : text) {
        if (c >= '0' && c <= '9') {
            value = value * (hexadecimal ? 16 : 10) + (c - '0');
        } else if (hexadecimal && c >= 'a' && c <= 'f') {
            value = value * 16 + (c - 'a' + 10);
        } else {
            throw "an enumerator's value reads as a decimal or a lower-case hexadecimal number";
        }
    }
    return negative ? -value : value;
}

constexpr std::size_t EnumeratorCount(std::string_view text)
{
    std::size_t count = Trim(text).empty() ? 0 : 1;
    for (char c : text)
        count += c == ',';
    return count;
}

/// Takes "A = 1, B = 2" apart.
template <class Enum>
consteval auto ParseEnumerators()
{
    std::array<EnumeratorDescription, EnumeratorCount(EnumTable<Enum>::text)> values{};
    std::string_view rest = EnumTable<Enum>::text;
    for (EnumeratorDescription& enumerator : values) {
        const std::string_view item = rest.substr(0, rest.find(','));
        const std::size_t equals = item.find('=');
        enumerator.name = Trim(item.substr(0, equals));
        enumerator.value = EnumeratorValue(Trim(item.substr(equals + 1)));
        rest.remove_prefix(item.size() == rest.size() ? item.size() : item.size() + 1);
    }
    return values;
}

template <class Enum>
inline constexpr auto kEnumerators = ParseEnumerators<Enum>();

} // namespace detail

template <class Enum>
inline constexpr EnumDescription kEnumDescription{EnumTable<Enum>::name, detail::kEnumerators<Enum>};

} // namespace kv

/// Declares an enumeration of a type library, values written out: KV_ENUM(Colour, Red = 1, Green = 2).
/// Stands in the global namespace. The declaration is the only place that names the enumerators.
#define KV_ENUM(Name, ...)                                                                                             \
    enum Name : LONG { __VA_ARGS__ };                                                                                  \
    template <>                                                                                                        \
    struct kv::EnumTable<Name> {                                                                                       \
        static constexpr std::string_view name = #Name;                                                                \
        static constexpr std::string_view text = #__VA_ARGS__;                                                         \
    }
