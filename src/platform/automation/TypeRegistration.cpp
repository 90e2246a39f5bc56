// Where type libraries stand in the registry.

#include "platform/automation/TypeInfo.h"
#include "platform/com/Activation.h"
#include "platform/system/Paths.h"
#include "platform/system/Registry.h"

#include <string>

namespace kv {
namespace {

std::u16string VersionText(WORD major, WORD minor)
{
    return ToUtf16(std::to_string(major) + '.' + std::to_string(minor));
}

/// Applies a change to the key of the library and to those of its interfaces, all together or not at all.
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
    std::u16string version;

    void Set(const std::u16string& key, std::u16string_view name, std::u16string value) const
    {
        ThrowIfFailed(Registry::Set(hive, root + key, name, std::move(value)));
    }

    void operator()(const std::u16string& key, const TLIBATTR& facts)
    {
        libid = GuidText(facts.guid);
        version = VersionText(facts.wMajorVerNum, facts.wMinorVerNum);
        const std::u16string versionKey = key + u"\\" + version;
        Set(versionKey, {}, help);
        Set(versionKey + u"\\FLAGS", {}, u"0");
        Set(versionKey + u"\\0\\linux64", {}, path);
        Set(versionKey + u"\\HELPDIR", {}, PathRemoveFileSpec(path));
    }

    void operator()(const std::u16string& key, const Bstr& name) const
    {
        Set(key, {}, std::u16string(name.View()));
        Set(key + u"\\TypeLib", {}, libid);
        Set(key + u"\\TypeLib", u"Version", version);
    }
};

struct Removal {
    Hive hive;
    std::u16string root;

    template <class Facts>
    void operator()(const std::u16string& key, const Facts&) const
    {
        ThrowIfFailed(Registry::DeleteTreeIfThere(hive, root + key));
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
                      Registration{hive, std::u16string(kMachineClasses), path, std::u16string(help.View()), {}, {}});
}

} // namespace
} // namespace kv

HRESULT LoadRegTypeLib(REFGUID libid, WORD major, WORD minor, LCID, ITypeLib** library)
{
    if (!library) return E_POINTER;
    *library = nullptr;
    return kv::Guarded([&] {
        const std::u16string key =
            u"TypeLib\\" + kv::GuidText(libid) + u"\\" + kv::VersionText(major, minor) + u"\\0\\linux64";
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
