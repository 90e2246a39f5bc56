#include "platform/automation/TypeInfoObject.h"

#include "platform/automation/Dispatch.h"

#include <algorithm>

namespace kv {
namespace {

/// Marks a reference that is a position among the types that the type mentions.
constexpr HREFTYPE kMentioned = 0x80000000;

} // namespace

struct TypeInfo::FunctionRecord : FUNCDESC {
    std::vector<ELEMDESC> parameters;
    TypeStorage types;
};

struct TypeInfo::VariableRecord : VARDESC {
    VARIANT value;
    TypeStorage types;
};

const InterfaceDescription* TypeInfo::Interface() const
{
    const auto* entry = std::get_if<const InterfaceDescription*>(&m_type);
    return entry ? *entry : nullptr;
}

const RecordDescription* TypeInfo::Record() const
{
    const auto* entry = std::get_if<const RecordDescription*>(&m_type);
    return entry ? *entry : nullptr;
}

std::vector<std::string_view> TypeInfo::Implemented() const
{
    if (const InterfaceDescription* interface = Interface()) return {interface->base};
    const auto* entry = std::get_if<const ClassDescription*>(&m_type);
    if (!entry) return {};
    if ((*entry)->sourceInterface.empty()) return {(*entry)->defaultInterface};
    return {(*entry)->defaultInterface, (*entry)->sourceInterface};
}

TYPEDESC TypeInfo::Describe(const TypeDescription& type, TypeStorage& storage) const
{
    TYPEDESC description{{nullptr}, type.vt};
    if (type.vt == VT_USERDEFINED) description.hreftype = Reference(type);
    for (BYTE i = 0; i < type.pointers; ++i) {
        storage.push_back(std::make_unique<TYPEDESC>(description));
        description = {{storage.back().get()}, VT_PTR};
    }
    return description;
}

HREFTYPE TypeInfo::Reference(const TypeDescription& type) const
{
    const HREFTYPE known = m_library->Reference(type.name);
    if (known || !type.identity || !type.identity()) return known;
    const auto mentioned = MentionedTypes(m_type);
    const auto first = std::ranges::find(mentioned, type.name, &TypeDescription::name);
    return kMentioned | static_cast<HREFTYPE>(first - mentioned.begin());
}

std::optional<TypeEntry> TypeInfo::Find(HREFTYPE reference) const
{
    if (const TypeEntry* known = m_library->Find(reference)) return *known;
    if (!(reference & kMentioned)) return std::nullopt;
    const auto mentioned = MentionedTypes(m_type);
    const std::size_t position = reference & ~kMentioned;
    if (position >= mentioned.size() || Reference(*mentioned[position]) != reference) return std::nullopt;
    return mentioned[position];
}

HRESULT TypeInfo::GetTypeAttr(TYPEATTR** attributes)
{
    return Guarded([&] {
        if (!attributes) return E_POINTER;
        *attributes = nullptr;
        TYPEATTR facts{};
        facts.guid = IdentityOf(m_type);
        facts.lcid = m_library->Description().locale;
        facts.typekind = KindOf(m_type);
        facts.wMajorVerNum = m_library->Description().major;
        facts.wMinorVerNum = m_library->Description().minor;
        facts.cImplTypes = static_cast<WORD>(Implemented().size());
        if (const InterfaceDescription* interface = Interface()) {
            facts.cFuncs = static_cast<WORD>(interface->members.size());
            if (interface->kind == InterfaceKind::Dual) facts.wTypeFlags = TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE;
            if (interface->kind == InterfaceKind::Dispatch) facts.wTypeFlags = TYPEFLAG_FDISPATCHABLE;
        } else if (const auto* values = std::get_if<const EnumDescription*>(&m_type)) {
            facts.cVars = static_cast<WORD>((*values)->values.size());
        } else if (const auto* record = std::get_if<const RecordDescription*>(&m_type)) {
            facts.cVars = static_cast<WORD>((*record)->fields.size());
        } else if (std::holds_alternative<const ClassDescription*>(m_type)) {
            facts.wTypeFlags = TYPEFLAG_FCANCREATE;
        }
        *attributes = new TYPEATTR(facts);
        return S_OK;
    });
}

HRESULT TypeInfo::GetFuncDesc(ULONG index, FUNCDESC** description)
{
    return Guarded([&] {
        if (!description) return E_POINTER;
        *description = nullptr;
        const InterfaceDescription* interface = Interface();
        if (!interface || index >= interface->members.size()) return TYPE_E_ELEMENTNOTFOUND;
        const MemberDescription& member = interface->members[index];
        auto record = std::make_unique<FunctionRecord>();
        record->memid = member.id;
        record->invkind = static_cast<INVOKEKIND>(member.kind);
        record->oVft = interface->kind == InterfaceKind::Dispatch
                           ? SHORT{0}
                           : static_cast<SHORT>((interface->firstSlot + index) * sizeof(void*));
        for (const ParameterDescription& parameter : member.Parameters()) {
            record->parameters.push_back({Describe(parameter.type, record->types), parameter.flags});
            if (parameter.flags & kParameterOptional) ++record->cParamsOpt;
        }
        record->cParams = static_cast<SHORT>(record->parameters.size());
        record->lprgelemdescParam = record->parameters.data();
        record->elemdescFunc.tdesc.vt = interface->kind == InterfaceKind::Dispatch ? VT_VOID : VT_HRESULT;
        *description = record.release();
        return S_OK;
    });
}

HRESULT TypeInfo::GetVarDesc(ULONG index, VARDESC** description)
{
    return Guarded([&] {
        if (!description) return E_POINTER;
        *description = nullptr;
        auto record = std::make_unique<VariableRecord>();
        record->memid = static_cast<DISPID>(index);
        const auto* values = std::get_if<const EnumDescription*>(&m_type);
        const auto* fields = std::get_if<const RecordDescription*>(&m_type);
        if (values && index < (*values)->values.size()) {
            VariantInit(&record->value);
            record->value.vt = VT_I4;
            record->value.lVal = (*values)->values[index].value;
            record->lpvarValue = &record->value;
            record->elemdescVar.tdesc.vt = VT_I4;
        } else if (fields && index < (*fields)->fields.size()) {
            record->elemdescVar.tdesc = Describe((*fields)->fields[index].type, record->types);
        } else {
            return TYPE_E_ELEMENTNOTFOUND;
        }
        *description = record.release();
        return S_OK;
    });
}

HRESULT TypeInfo::GetNames(DISPID member, BSTR* names, ULONG room, ULONG* count)
{
    return Guarded([&] {
        if (!count) return E_POINTER;
        *count = 0;
        if (!names) return E_POINTER;
        std::fill_n(names, room, nullptr);
        std::vector<Bstr> found;
        for (std::string_view name : MemberNames(m_type, member))
            found.emplace_back(ToUtf16(name));
        if (found.empty()) return TYPE_E_ELEMENTNOTFOUND;
        for (; *count < room && *count < found.size(); ++*count)
            names[*count] = found[*count].Detach();
        return S_OK;
    });
}

HRESULT TypeInfo::GetRefTypeOfImplType(ULONG index, HREFTYPE* type)
{
    return Guarded([&] {
        if (!type) return E_POINTER;
        *type = 0;
        const auto implemented = Implemented();
        if (index >= implemented.size()) return TYPE_E_ELEMENTNOTFOUND;
        *type = m_library->Reference(implemented[index]);
        return *type ? S_OK : TYPE_E_ELEMENTNOTFOUND;
    });
}

HRESULT TypeInfo::GetImplTypeFlags(ULONG index, LONG* flags)
{
    return Guarded([&] {
        if (!flags) return E_POINTER;
        *flags = 0;
        if (index >= Implemented().size()) return TYPE_E_ELEMENTNOTFOUND;
        if (KindOf(m_type) == TKIND_COCLASS) *flags = IMPLTYPEFLAG_FDEFAULT | (index == 1 ? IMPLTYPEFLAG_FSOURCE : 0);
        return S_OK;
    });
}

HRESULT TypeInfo::GetIDsOfNames(OLECHAR** names, ULONG count, DISPID* ids)
{
    const InterfaceDescription* interface = Interface();
    if (interface) return FindMemberNames(*interface, names, count, ids);
    if (!ids) return E_POINTER;
    std::fill_n(ids, count, DISPID_UNKNOWN);
    return TYPE_E_ELEMENTNOTFOUND;
}

HRESULT TypeInfo::Invoke(void* instance, DISPID member, WORD flags, DISPPARAMS* params, VARIANT* result,
                         EXCEPINFO* exception, ULONG* badArgument)
{
    if (result) VariantInit(result);
    if (exception) *exception = {};
    if (!instance) return E_POINTER;
    const InterfaceDescription* interface = Interface();
    if (!interface || interface->kind == InterfaceKind::Dispatch) return DISP_E_MEMBERNOTFOUND;
    void* self = nullptr;
    const HRESULT found = static_cast<IUnknown*>(instance)->QueryInterface(*interface->iid, &self);
    if (FAILED(found)) return found;
    const auto held = ComPtr<IUnknown>::Attach(static_cast<IUnknown*>(self));
    return InvokeMember(*interface, self, member, IID_NULL, flags, params, result, exception, badArgument);
}

HRESULT TypeInfo::GetDocumentation(DISPID member, BSTR* name, BSTR* help)
{
    if (name) *name = nullptr;
    if (help) *help = nullptr;
    return Guarded([&] {
        std::string_view text = NameOf(m_type);
        if (member != DISPID_UNKNOWN) {
            const auto names = MemberNames(m_type, member);
            if (names.empty()) return TYPE_E_ELEMENTNOTFOUND;
            text = names.front();
        }
        if (name) *name = Bstr(ToUtf16(text)).Detach();
        return S_OK;
    });
}

HRESULT TypeInfo::GetRefTypeInfo(HREFTYPE type, ITypeInfo** info)
{
    return Guarded([&] {
        if (!info) return E_POINTER;
        *info = nullptr;
        const auto found = Find(type);
        return found ? ComPtr<ITypeInfo>(Make<TypeInfo>(m_library, *found)).CopyTo(info) : TYPE_E_ELEMENTNOTFOUND;
    });
}

HRESULT TypeInfo::GetContainingTypeLib(ITypeLib** library, ULONG* index)
{
    if (index) *index = 0;
    if (!library) return E_POINTER;
    *library = nullptr;
    const LONG at = m_library->IndexOf(m_type);
    if (at < 0) return TYPE_E_ELEMENTNOTFOUND;
    if (index) *index = static_cast<ULONG>(at);
    return ComPtr<ITypeLib>(m_library.Get()).CopyTo(library);
}

void TypeInfo::ReleaseFuncDesc(FUNCDESC* description)
{
    delete static_cast<FunctionRecord*>(description);
}

void TypeInfo::ReleaseVarDesc(VARDESC* description)
{
    delete static_cast<VariableRecord*>(description);
}

} // namespace kv
