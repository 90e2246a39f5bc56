#include "platform/automation/TypeLibraryObject.h"

#include "platform/automation/TypeInfoObject.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <dlfcn.h>

namespace kv {
namespace {

constexpr TypeDescription kPlatformTypes[]{detail::Describe<IUnknown>(), detail::Describe<IDispatch>()};
constexpr TypeEntry kPlatformEntries[]{&kPlatformTypes[0], &kPlatformTypes[1]};

/// What a name stands for within a type: the type itself (DISPID_UNKNOWN) or one of its members.
std::optional<DISPID> NamedWithin(const TypeEntry& type, std::u16string_view name)
{
    return SameText(NameOf(type), name) ? DISPID_UNKNOWN : MemberNamed(type, name);
}

} // namespace

ModulePin::ModulePin(const void* address)
{
    Dl_info module{};
    if (dladdr(address, &module)) m_handle = dlopen(module.dli_fname, RTLD_NOW | RTLD_NOLOAD);
}

ModulePin::~ModulePin()
{
    if (m_handle) dlclose(m_handle);
}

TypeLibrary::TypeLibrary(const LibraryDescription& description, const void* anchor)
    : m_module(anchor), m_description(description), m_types(TypesOf(description))
{
}

HRESULT TypeLibrary::GetTypeInfo(ULONG index, ITypeInfo** info)
{
    return Guarded([&] {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index >= m_types.size()) return TYPE_E_ELEMENTNOTFOUND;
        return ComPtr<ITypeInfo>(Make<TypeInfo>(ComPtr<TypeLibrary>(this), m_types[index])).CopyTo(info);
    });
}

HRESULT TypeLibrary::GetTypeInfoType(ULONG index, TYPEKIND* kind)
{
    if (!kind) return E_POINTER;
    *kind = TKIND_ENUM;
    if (index >= m_types.size()) return TYPE_E_ELEMENTNOTFOUND;
    *kind = KindOf(m_types[index]);
    return S_OK;
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

HRESULT TypeLibrary::GetLibAttr(TLIBATTR** attributes)
{
    return Guarded([&] {
        if (!attributes) return E_POINTER;
        *attributes = nullptr;
        *attributes =
            new TLIBATTR{*m_description.libid, m_description.locale, m_description.major, m_description.minor};
        return S_OK;
    });
}

HRESULT TypeLibrary::GetDocumentation(LONG index, BSTR* name, BSTR* help)
{
    if (name) *name = nullptr;
    if (help) *help = nullptr;
    return Guarded([&] {
        const bool ofLibrary = index == -1;
        if (!ofLibrary && (index < 0 || static_cast<std::size_t>(index) >= m_types.size())) {
            return TYPE_E_ELEMENTNOTFOUND;
        }
        Bstr nameText(ToUtf16(ofLibrary ? m_description.name : NameOf(m_types[static_cast<std::size_t>(index)])));
        Bstr helpText(ofLibrary ? Bstr(ToUtf16(m_description.help)) : Bstr());
        if (name) *name = nameText.Detach();
        if (help) *help = helpText.Detach();
        return S_OK;
    });
}

HRESULT TypeLibrary::IsName(const OLECHAR* name, BOOL* is)
{
    if (!is) return E_POINTER;
    *is = false;
    if (!name) return E_POINTER;
    *is = std::ranges::any_of(m_types, [name](const TypeEntry& type) { return NamedWithin(type, name).has_value(); });
    return S_OK;
}

HRESULT TypeLibrary::FindName(const OLECHAR* name, ULONG, ITypeInfo** infos, DISPID* members, USHORT* count)
{
    return Guarded([&] {
        if (!count) return E_POINTER;
        const USHORT room = std::exchange(*count, USHORT{0});
        if (!name || !infos || !members) return E_POINTER;
        std::fill_n(infos, room, nullptr);
        std::fill_n(members, room, DISPID_UNKNOWN);
        for (ULONG i = 0; i < m_types.size() && *count < room; ++i) {
            const auto member = NamedWithin(m_types[i], name);
            if (!member) continue;
            const HRESULT result = GetTypeInfo(i, &infos[*count]);
            if (FAILED(result)) return result;
            members[(*count)++] = *member;
        }
        return S_OK;
    });
}

HREFTYPE TypeLibrary::Reference(std::string_view name) const
{
    HREFTYPE reference = 0;
    for (const TypeDescription& type : kPlatformTypes) {
        ++reference;
        if (type.name == name) return reference;
    }
    for (const TypeEntry& type : m_types) {
        ++reference;
        if (NameOf(type) == name) return reference;
    }
    return 0;
}

const TypeEntry* TypeLibrary::Find(HREFTYPE reference) const
{
    if (reference == 0) return nullptr;
    if (reference <= std::size(kPlatformEntries)) return &kPlatformEntries[reference - 1];
    const std::size_t own = reference - std::size(kPlatformEntries) - 1;
    return own < m_types.size() ? &m_types[own] : nullptr;
}

LONG TypeLibrary::IndexOf(const TypeEntry& type) const
{
    const auto found = std::ranges::find(m_types, type);
    return found == m_types.end() ? -1 : static_cast<LONG>(found - m_types.begin());
}

} // namespace kv
