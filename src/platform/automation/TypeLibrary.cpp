#include "platform/automation/TypeLibrary.h"

#include "platform/automation/Dispatch.h"
#include "platform/com/Activation.h"
#include "platform/com/Object.h"
#include "platform/system/Paths.h"
#include "platform/system/Registry.h"

#include <algorithm>
#include <dlfcn.h>
#include <memory>
#include <variant>
#include <vector>

namespace kv {
namespace {

/// A type that the library describes, or one of the two that it only refers to.
struct OutsideType {
    std::string_view name;
    const GUID* iid;
};

using TypeEntry = std::variant<const EnumDescription*, const RecordDescription*, const InterfaceDescription*,
                               const ClassDescription*, const OutsideType*>;

constexpr OutsideType kOutside[]{{"IUnknown", &IUnknown::IID}, {"IDispatch", &IDispatch::IID}};

std::vector<TypeEntry> TypesOf(const LibraryDescription& library)
{
    std::vector<TypeEntry> types;
    for (const auto* description : library.enums)
        types.emplace_back(description);
    for (const auto* description : library.records)
        types.emplace_back(description);
    for (const auto* description : library.interfaces)
        types.emplace_back(description);
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
    if (const auto* entry = std::get_if<const OutsideType*>(&type)) return *(*entry)->iid;
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

bool SameName(std::string_view left, std::u16string_view right)
{
    const auto fold = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; };
    return std::ranges::equal(
        left, right, {}, [&](char c) { return fold(static_cast<unsigned char>(c)); }, fold);
}

HRESULT HandName(std::string_view text, BSTR* out)
{
    if (out) *out = Bstr(ToUtf16(text)).Detach();
    return S_OK;
}

class TypeLibrary final : public Object<ITypeLib> {
public:
    explicit TypeLibrary(const LibraryDescription& description)
        : m_description(description), m_types(TypesOf(description))
    {
    }

    ULONG GetTypeInfoCount() override { return static_cast<ULONG>(m_types.size()); }
    HRESULT GetTypeInfo(ULONG index, ITypeInfo** info) override;
    HRESULT GetTypeInfoType(ULONG index, TYPEKIND* kind) override
    {
        if (!kind) return E_POINTER;
        if (index >= m_types.size()) return TYPE_E_ELEMENTNOTFOUND;
        *kind = KindOf(m_types[index]);
        return S_OK;
    }
    HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** info) override;
    HRESULT GetLibAttr(TLIBATTR** attributes) override
    {
        if (!attributes) return E_POINTER;
        *attributes = nullptr;
        return Guarded([&] {
            *attributes =
                new TLIBATTR{*m_description.libid, m_description.locale, m_description.major, m_description.minor};
            return S_OK;
        });
    }
    HRESULT GetDocumentation(LONG index, BSTR* name, BSTR* help) override
    {
        if (name) *name = nullptr;
        if (help) *help = nullptr;
        return Guarded([&] {
            if (index == -1) {
                HandName(m_description.help, help);
                return HandName(m_description.name, name);
            }
            if (index < 0 || static_cast<std::size_t>(index) >= m_types.size()) return TYPE_E_ELEMENTNOTFOUND;
            return HandName(NameOf(m_types[static_cast<std::size_t>(index)]), name);
        });
    }
    HRESULT IsName(const OLECHAR* name, BOOL* is) override
    {
        if (!name || !is) return E_POINTER;
        *is = std::ranges::any_of(m_types, [name](const TypeEntry& type) {
            const auto* interface = std::get_if<const InterfaceDescription*>(&type);
            const auto called = [name](const MemberDescription& member) { return SameName(member.name, name); };
            return SameName(NameOf(type), name) || (interface && std::ranges::any_of((*interface)->members, called));
        });
        return S_OK;
    }
    void ReleaseTLibAttr(TLIBATTR* attributes) override { delete attributes; }

    const LibraryDescription& Description() const { return m_description; }

    /// 1 and 2 are the outside types, the library's own follow; 0 is none.
    HREFTYPE Reference(std::string_view name) const
    {
        HREFTYPE reference = 0;
        for (const OutsideType& type : kOutside) {
            ++reference;
            if (type.name == name) return reference;
        }
        for (const TypeEntry& type : m_types) {
            ++reference;
            if (NameOf(type) == name) return reference;
        }
        return 0;
    }

    const TypeEntry* Find(HREFTYPE reference) const
    {
        static const TypeEntry kOutsideEntries[]{&kOutside[0], &kOutside[1]};
        if (reference == 0) return nullptr;
        if (reference <= std::size(kOutsideEntries)) return &kOutsideEntries[reference - 1];
        const std::size_t own = reference - std::size(kOutsideEntries) - 1;
        return own < m_types.size() ? &m_types[own] : nullptr;
    }

    LONG IndexOf(const TypeEntry& type) const
    {
        const auto found = std::ranges::find(m_types, type);
        return found == m_types.end() ? -1 : static_cast<LONG>(found - m_types.begin());
    }

private:
    const LibraryDescription& m_description;
    std::vector<TypeEntry> m_types;
};

/// A record handed out, with what it points at.
struct FunctionRecord : FUNCDESC {
    std::vector<ELEMDESC> parameters;
    std::vector<std::unique_ptr<TYPEDESC>> types;
};

struct VariableRecord : VARDESC {
    VARIANT value;
    std::vector<std::unique_ptr<TYPEDESC>> types;
};

class TypeInfo final : public Object<ITypeInfo> {
public:
    TypeInfo(ComPtr<TypeLibrary> library, TypeEntry type) : m_library(std::move(library)), m_type(type) {}

    HRESULT GetTypeAttr(TYPEATTR** attributes) override;
    HRESULT GetFuncDesc(ULONG index, FUNCDESC** description) override;
    HRESULT GetVarDesc(ULONG index, VARDESC** description) override;
    HRESULT GetNames(DISPID member, BSTR* names, ULONG room, ULONG* count) override;
    HRESULT GetRefTypeOfImplType(ULONG index, HREFTYPE* type) override;
    HRESULT GetImplTypeFlags(ULONG index, LONG* flags) override;
    HRESULT GetIDsOfNames(OLECHAR** names, ULONG count, DISPID* ids) override;
    HRESULT Invoke(void* instance, DISPID member, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                   ULONG* badArgument) override;
    HRESULT GetDocumentation(DISPID member, BSTR* name, BSTR* help) override;
    HRESULT GetRefTypeInfo(HREFTYPE type, ITypeInfo** info) override;
    HRESULT GetContainingTypeLib(ITypeLib** library, ULONG* index) override;
    void ReleaseTypeAttr(TYPEATTR* attributes) override { delete attributes; }
    void ReleaseFuncDesc(FUNCDESC* description) override { delete static_cast<FunctionRecord*>(description); }
    void ReleaseVarDesc(VARDESC* description) override { delete static_cast<VariableRecord*>(description); }

private:
    const InterfaceDescription* Interface() const
    {
        const auto* entry = std::get_if<const InterfaceDescription*>(&m_type);
        return entry ? *entry : nullptr;
    }

    /// The names of what the type builds on, the default one first.
    std::vector<std::string_view> Implemented() const
    {
        if (const InterfaceDescription* interface = Interface()) return {interface->base};
        const auto* entry = std::get_if<const ClassDescription*>(&m_type);
        if (!entry) return {};
        if ((*entry)->sourceInterface.empty()) return {(*entry)->defaultInterface};
        return {(*entry)->defaultInterface, (*entry)->sourceInterface};
    }

    TYPEDESC Describe(const TypeDescription& type, std::vector<std::unique_ptr<TYPEDESC>>& storage) const
    {
        TYPEDESC description{{nullptr}, type.vt};
        if (type.vt == VT_USERDEFINED) description.hreftype = m_library->Reference(type.name);
        for (BYTE i = 0; i < type.pointers; ++i) {
            storage.push_back(std::make_unique<TYPEDESC>(description));
            description = {{storage.back().get()}, VT_PTR};
        }
        return description;
    }

    ComPtr<TypeLibrary> m_library;
    TypeEntry m_type;
};

HRESULT TypeLibrary::GetTypeInfo(ULONG index, ITypeInfo** info)
{
    return Guarded([&] {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index >= m_types.size()) return TYPE_E_ELEMENTNOTFOUND;
        return ComPtr<ITypeInfo>(Make<TypeInfo>(ComPtr<TypeLibrary>(this), m_types[index])).CopyTo(info);
    });
}

HRESULT TypeLibrary::GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** info)
{
    if (!info) return E_POINTER;
    *info = nullptr;
    const auto found = std::ranges::find_if(
        m_types, [&](const TypeEntry& type) { return guid != GUID_NULL && IdentityOf(type) == guid; });
    return found == m_types.end() ? TYPE_E_ELEMENTNOTFOUND
                                  : GetTypeInfo(static_cast<ULONG>(found - m_types.begin()), info);
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
        const std::size_t inherited = interface->kind == InterfaceKind::Custom ? 3 : 7;
        auto record = std::make_unique<FunctionRecord>();
        record->memid = member.id;
        record->invkind = member.kind;
        record->oVft = interface->kind == InterfaceKind::Dispatch
                           ? SHORT{0}
                           : static_cast<SHORT>((inherited + index) * sizeof(void*));
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
        if (!names || !count) return E_POINTER;
        *count = 0;
        std::fill_n(names, room, nullptr);
        std::vector<std::string_view> found;
        if (const InterfaceDescription* interface = Interface()) {
            const auto row = std::ranges::find(interface->members, member, &MemberDescription::id);
            if (row == interface->members.end()) return TYPE_E_ELEMENTNOTFOUND;
            found.push_back(row->name);
            if (row->kind == DISPATCH_METHOD) {
                for (const ParameterDescription& parameter : row->Parameters())
                    found.push_back(parameter.name);
            }
        } else if (const auto* values = std::get_if<const EnumDescription*>(&m_type);
                   values && member >= 0 && static_cast<std::size_t>(member) < (*values)->values.size()) {
            found.push_back((*values)->values[static_cast<std::size_t>(member)].name);
        } else if (const auto* record = std::get_if<const RecordDescription*>(&m_type);
                   record && member >= 0 && static_cast<std::size_t>(member) < (*record)->fields.size()) {
            found.push_back((*record)->fields[static_cast<std::size_t>(member)].name);
        } else {
            return TYPE_E_ELEMENTNOTFOUND;
        }
        for (; *count < room && *count < found.size(); ++*count)
            HandName(found[*count], &names[*count]);
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
    return interface ? FindMemberNames(*interface, names, count, ids) : TYPE_E_ELEMENTNOTFOUND;
}

HRESULT TypeInfo::Invoke(void* instance, DISPID member, WORD flags, DISPPARAMS* params, VARIANT* result,
                         EXCEPINFO* exception, ULONG* badArgument)
{
    const InterfaceDescription* interface = Interface();
    if (!instance) return E_POINTER;
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
        if (member == DISPID_UNKNOWN) return HandName(NameOf(m_type), name);
        Bstr found;
        ULONG count = 0;
        const HRESULT result = GetNames(member, found.Put(), 1, &count);
        if (SUCCEEDED(result) && name) *name = found.Detach();
        return result;
    });
}

HRESULT TypeInfo::GetRefTypeInfo(HREFTYPE type, ITypeInfo** info)
{
    return Guarded([&] {
        if (!info) return E_POINTER;
        *info = nullptr;
        const TypeEntry* found = m_library->Find(type);
        return found ? ComPtr<ITypeInfo>(Make<TypeInfo>(m_library, *found)).CopyTo(info) : TYPE_E_ELEMENTNOTFOUND;
    });
}

HRESULT TypeInfo::GetContainingTypeLib(ITypeLib** library, ULONG* index)
{
    if (!library) return E_POINTER;
    *library = nullptr;
    const LONG at = m_library->IndexOf(m_type);
    if (at < 0) return TYPE_E_ELEMENTNOTFOUND;
    if (index) *index = static_cast<ULONG>(at);
    return ComPtr<ITypeLib>(m_library.Get()).CopyTo(library);
}

/// Calls `write` with the key of the library's version and that of its interfaces.
template <class Apply>
HRESULT ForLibrary(ITypeLib* library, Apply&& apply)
{
    return Guarded([&] {
        if (!library) return E_INVALIDARG;
        TLIBATTR* facts = nullptr;
        ThrowIfFailed(library->GetLibAttr(&facts));
        const TLIBATTR copy = *facts;
        library->ReleaseTLibAttr(facts);
        Registry::Batch batch;
        apply(u"TypeLib\\" + GuidText(copy.guid), copy);
        for (ULONG i = 0; i < library->GetTypeInfoCount(); ++i) {
            ComPtr<ITypeInfo> info;
            TYPEATTR* type = nullptr;
            Bstr name;
            ThrowIfFailed(library->GetTypeInfo(i, info.Put()));
            ThrowIfFailed(info->GetTypeAttr(&type));
            const bool interface = type->typekind == TKIND_INTERFACE || type->typekind == TKIND_DISPATCH;
            const std::u16string key = u"Interface\\" + GuidText(type->guid);
            info->ReleaseTypeAttr(type);
            info->GetDocumentation(DISPID_UNKNOWN, name.Put(), nullptr);
            if (interface) apply(key, name);
        }
        return batch.Commit();
    });
}

/// Writes one key after the other.
struct Registration {
    Hive hive;
    std::u16string root;
    std::u16string path;
    std::u16string help;
    std::u16string libid;

    void Set(const std::u16string& key, std::u16string_view name, std::u16string value) const
    {
        ThrowIfFailed(Registry::Set(hive, root + key, name, std::move(value)));
    }

    void operator()(const std::u16string& key, const TLIBATTR& facts)
    {
        libid = GuidText(facts.guid);
        const std::u16string version = key + u"\\" + Version(facts);
        Set(version, {}, help);
        Set(version + u"\\FLAGS", {}, u"0");
        Set(version + u"\\0\\linux64", {}, path);
        Set(version + u"\\HELPDIR", {}, PathRemoveFileSpec(path));
    }

    void operator()(const std::u16string& key, const Bstr& name) const
    {
        Set(key, {}, std::u16string(name.View()));
        Set(key + u"\\TypeLib", {}, libid);
    }

    static std::u16string Version(const TLIBATTR& facts)
    {
        return ToUtf16(std::to_string(facts.wMajorVerNum) + '.' + std::to_string(facts.wMinorVerNum));
    }
};

struct Removal {
    Hive hive;
    std::u16string root;

    template <class Facts>
    void operator()(const std::u16string& key, const Facts&) const
    {
        const HRESULT result = Registry::KeyExists(hive, root + key) ? Registry::DeleteTree(hive, root + key) : S_OK;
        if (result != REGISTRY_E_NOT_FOUND) ThrowIfFailed(result);
    }
};

constexpr std::u16string_view kMachineClasses = u"Software\\Classes\\";

HRESULT RegisterFor(Hive hive, ITypeLib* library, const OLECHAR* path)
{
    if (!library || !path) return E_INVALIDARG;
    Bstr help;
    const HRESULT documented = library->GetDocumentation(-1, nullptr, help.Put());
    if (FAILED(documented)) return documented;
    return ForLibrary(library,
                      Registration{hive, std::u16string(kMachineClasses), path, std::u16string(help.View()), {}});
}

} // namespace

HRESULT MakeTypeLibrary(const LibraryDescription& description, ITypeLib** library)
{
    return Guarded([&] {
        if (!library) return E_POINTER;
        *library = nullptr;
        return ComPtr<ITypeLib>(Make<TypeLibrary>(description)).CopyTo(library);
    });
}

HRESULT MakeTypeInfo(const LibraryDescription* library, const InterfaceDescription& description, ITypeInfo** info)
{
    static constexpr LibraryDescription kNone{{}, {}, &GUID_NULL, 0, 0, 0, {}, {}, {}, {}};
    return Guarded([&] {
        if (!info) return E_POINTER;
        *info = nullptr;
        const auto owner = Make<TypeLibrary>(library ? *library : kNone);
        return ComPtr<ITypeInfo>(Make<TypeInfo>(owner, TypeEntry(&description))).CopyTo(info);
    });
}

} // namespace kv

HRESULT LoadTypeLib(const OLECHAR* path, ITypeLib** library)
{
    if (!library) return E_POINTER;
    *library = nullptr;
    if (!path) return E_INVALIDARG;
    return kv::Guarded([&] {
        using Entry = const kv::LibraryDescription* (*)();
        // Never closed: the descriptions live in the library.
        void* handle = dlopen(kv::ToHostPath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
        void* entry = handle ? dlsym(handle, "DllTypeLibrary") : nullptr;
        if (!entry) {
            if (handle) dlclose(handle);
            return TYPE_E_CANTLOADLIBRARY;
        }
        return kv::MakeTypeLibrary(*reinterpret_cast<Entry>(entry)(), library);
    });
}

HRESULT LoadRegTypeLib(REFGUID libid, WORD major, WORD minor, LCID, ITypeLib** library)
{
    if (!library) return E_POINTER;
    *library = nullptr;
    return kv::Guarded([&] {
        const std::u16string key = u"TypeLib\\" + kv::GuidText(libid) + u"\\" +
                                   kv::ToUtf16(std::to_string(major) + '.' + std::to_string(minor)) + u"\\0\\linux64";
        const std::u16string path = kv::Registry::QueryText(kv::Hive::ClassesRoot, key, {});
        return path.empty() ? TYPE_E_LIBNOTREGISTERED : LoadTypeLib(path.c_str(), library);
    });
}

HRESULT RegisterTypeLib(ITypeLib* library, const OLECHAR* path)
{
    return kv::RegisterFor(kv::Hive::LocalMachine, library, path);
}

HRESULT RegisterTypeLibForUser(ITypeLib* library, const OLECHAR* path)
{
    return kv::RegisterFor(kv::Hive::CurrentUser, library, path);
}

HRESULT UnRegisterTypeLib(ITypeLib* library)
{
    return kv::ForLibrary(library, kv::Removal{kv::Hive::LocalMachine, std::u16string(kv::kMachineClasses)});
}

HRESULT UnRegisterTypeLibForUser(ITypeLib* library)
{
    return kv::ForLibrary(library, kv::Removal{kv::Hive::CurrentUser, std::u16string(kv::kMachineClasses)});
}
