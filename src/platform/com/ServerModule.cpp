#include "platform/com/ServerModule.h"

#include "platform/com/Activation.h"
#include "platform/system/Locale.h"
#include "platform/system/Registry.h"

#include <dlfcn.h>
#include <filesystem>

namespace kv {

namespace {

void Write(const std::u16string& key, std::u16string_view name, std::u16string value)
{
    ThrowIfFailed(Registry::Set(Hive::ClassesRoot, key, name, std::move(value)));
}

void Remove(const std::u16string& key)
{
    ThrowIfFailed(Registry::DeleteTreeIfThere(Hive::ClassesRoot, key));
}

std::u16string ClassKey(const ServerClass& served)
{
    return u"CLSID\\" + GuidText(*served.clsid);
}

/// The keys of the application stand in one that belongs to every application, and stays.
std::u16string ApplicationKey(const std::u16string& name)
{
    return u"AppID\\" + name;
}

void WriteApplication(const ServerDescription& server)
{
    const std::u16string id = GuidText(*server.appId);
    Write(ApplicationKey(id), u"", server.applicationName);
    Write(ApplicationKey(server.fileName), u"AppID", id);
}

void RemoveApplication(const ServerDescription& server)
{
    Remove(ApplicationKey(GuidText(*server.appId)));
    Remove(ApplicationKey(server.fileName));
}

void WriteProgIds(const ServerClass& served)
{
    const std::u16string progId = served.progId;
    const std::u16string versionIndependent = served.versionIndependentProgId;
    const std::u16string clsid = GuidText(*served.clsid);
    Write(progId, u"", served.friendlyName);
    Write(progId + u"\\CLSID", u"", clsid);
    Write(versionIndependent, u"", served.friendlyName);
    Write(versionIndependent + u"\\CLSID", u"", clsid);
    Write(versionIndependent + u"\\CurVer", u"", progId);
    Write(ClassKey(served) + u"\\ProgID", u"", progId);
    Write(ClassKey(served) + u"\\VersionIndependentProgID", u"", versionIndependent);
}

std::u16string CategoryKey(const ServerClass& served)
{
    return ClassKey(served) + u"\\Implemented Categories\\" + GuidText(*served.category);
}

void WriteClass(const ServerClass& served, const ServerDescription& server, const std::u16string& modulePath)
{
    const std::u16string key = ClassKey(served);
    Write(key, u"", served.friendlyName);
    if (served.progId) WriteProgIds(served);
    ThrowIfFailed(Registry::CreateKey(Hive::ClassesRoot, key + u"\\Programmable"));
    Write(key + u"\\InprocServer32", u"", modulePath);
    Write(key + u"\\InprocServer32", u"ThreadingModel", u"both");
    if (served.category) ThrowIfFailed(Registry::CreateKey(Hive::ClassesRoot, CategoryKey(served)));
    if (server.appId) Write(key, u"AppID", GuidText(*server.appId));
    if (server.libId) Write(key + u"\\TypeLib", u"", GuidText(*server.libId));
}

} // namespace

/// The class factory of one class. Only its own references keep it; it does not keep the library loaded, so
/// it is cut off when the library goes.
class ClassObject final : public IClassFactory {
public:
    ClassObject(const ServerClass& served, std::atomic<LONG>& locks) : m_served(&served), m_locks(locks) {}

    HRESULT QueryInterface(REFIID iid, void** out) override
    {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (iid != IUnknown::IID && iid != IClassFactory::IID) return E_NOINTERFACE;
        *out = ComPtr<IClassFactory>(this).Detach();
        return S_OK;
    }

    ULONG AddRef() override { return ++m_count; }

    ULONG Release() override
    {
        const ULONG left = --m_count;
        if (left == 0) delete this;
        return left;
    }

    HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** out) override
    {
        if (!out) return E_POINTER;
        *out = nullptr;
        const ServerClass* served = m_served;
        return served ? served->create(outer, iid, out) : E_UNEXPECTED;
    }

    HRESULT LockServer(BOOL lock) override
    {
        if (!m_served) return E_UNEXPECTED;
        m_locks += lock ? 1 : -1;
        return S_OK;
    }

    void CutOff() { m_served = nullptr; }

private:
    ~ClassObject() = default;

    std::atomic<ULONG> m_count{1};
    std::atomic<const ServerClass*> m_served;
    std::atomic<LONG>& m_locks;
};

ServerModule::ServerModule(const ServerDescription& description, std::atomic<LONG>& locks)
    : m_description(description), m_locks(locks), m_classObjects(description.classes.size())
{
}

ServerModule::~ServerModule()
{
    Terminate();
}

void ServerModule::Initialise()
{
    const SectionLock lock(m_section);
    m_initialised = true;
}

void ServerModule::Terminate()
{
    const SectionLock lock(m_section);
    m_initialised = false;
    for (ComPtr<ClassObject>& classObject : m_classObjects) {
        if (classObject) classObject->CutOff();
        classObject.Reset();
    }
}

HRESULT ServerModule::GetClassObject(REFCLSID clsid, REFIID iid, void** out)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    return Guarded([&]() -> HRESULT {
        const SectionLock lock(m_section);
        if (!m_initialised) return E_UNEXPECTED;
        for (std::size_t i = 0; i < m_classObjects.size(); ++i) {
            const ServerClass& served = m_description.classes[i];
            if (*served.clsid != clsid) continue;
            if (!m_classObjects[i]) m_classObjects[i] = ComPtr<ClassObject>::Attach(new ClassObject(served, m_locks));
            return m_classObjects[i]->QueryInterface(iid, out);
        }
        return CLASS_E_CLASSNOTAVAILABLE;
    });
}

HRESULT ServerModule::CanUnloadNow() const
{
    return m_locks == 0 ? S_OK : S_FALSE;
}

HRESULT ServerModule::RegisterServer() const
{
    return Guarded([&] {
        const ThreadLocaleScope locale(LOCALE_SYSTEM_DEFAULT);
        const std::u16string path = Path();
        Registry::Batch batch;
        if (m_description.appId) WriteApplication(m_description);
        for (const ServerClass& served : m_description.classes)
            WriteClass(served, m_description, path);
        if (m_description.registerTypeLibrary) ThrowIfFailed(m_description.registerTypeLibrary(path));
        if (m_description.registerContent) ThrowIfFailed(m_description.registerContent(path));
        return batch.Commit();
    });
}

HRESULT ServerModule::UnregisterServer() const
{
    return Guarded([&] {
        const ThreadLocaleScope locale(LOCALE_SYSTEM_DEFAULT);
        Registry::Batch batch;
        for (const ServerClass& served : m_description.classes) {
            if (served.progId) {
                Remove(served.progId);
                Remove(served.versionIndependentProgId);
            }
            Remove(ClassKey(served));
        }
        if (m_description.unregisterTypeLibrary) ThrowIfFailed(m_description.unregisterTypeLibrary());
        if (m_description.unregisterContent) ThrowIfFailed(m_description.unregisterContent(Path()));
        if (m_description.appId) RemoveApplication(m_description);
        return batch.Commit();
    });
}

std::u16string ServerModule::Path() const
{
    // The counter lies in the library's own data.
    Dl_info info{};
    if (dladdr(&m_locks, &info) == 0 || !info.dli_fname) throw Error(E_UNEXPECTED);
    return ToUtf16(std::filesystem::absolute(info.dli_fname).string());
}

} // namespace kv
