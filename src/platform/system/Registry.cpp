#include "platform/system/Registry.h"

#include "platform/automation/Bstr.h"
#include "platform/com/Error.h"
#include "platform/system/AtomicFile.h"
#include "platform/system/CriticalSection.h"
#include "platform/system/RegistryTree.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kv::Registry {
namespace {

constexpr std::u16string_view kMachineClasses = u"HKEY_LOCAL_MACHINE\\Software\\Classes";
constexpr std::u16string_view kUserClasses = u"HKEY_CURRENT_USER\\Software\\Classes";
constexpr off_t kMaxFileSize = 64 << 20; // bytes

using Change = std::function<HRESULT(RegistryKey& root)>;

/// An open file; closed with this object.
class OpenFile {
public:
    OpenFile() = default;
    explicit OpenFile(int file) : m_file(file) {}
    OpenFile(OpenFile&& other) noexcept : m_file(std::exchange(other.m_file, -1)) {}
    OpenFile& operator=(OpenFile other) noexcept
    {
        std::swap(m_file, other.m_file);
        return *this;
    }
    ~OpenFile()
    {
        if (m_file >= 0) close(m_file);
    }

    int Get() const { return m_file; }
    explicit operator bool() const { return m_file >= 0; }

private:
    int m_file = -1;
};

/// What the process knows of its registry.
struct State {
    CriticalSection section;
    RegistryKey root;
    bool inMemory = false;
    /// Empty until the default is taken.
    std::string path;
    /// The file that `root` was read from. While it is open no other file can have its number.
    OpenFile file;
    struct stat status {};
    bool perUser = false;
};

State& Shared()
{
    static State state;
    return state;
}

/// The changes that this thread gathers; null outside a batch.
thread_local std::vector<Change>* t_batch = nullptr;

/// What the environment says; null for an empty value, too.
const char* Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value ? value : nullptr;
}

std::filesystem::path ConfigurationFolder()
{
    if (const char* configuration = Environment("XDG_CONFIG_HOME")) return configuration;
    const char* home = Environment("HOME");
    if (!home) throw Error(REGISTRY_E_NO_HOME);
    return std::filesystem::path(home) / ".config";
}

std::string DefaultPath()
{
    if (const char* named = Environment("KV_REGISTRY")) return named;
    return (ConfigurationFolder() / "KVProjectData" / "registry.txt").string();
}

const std::string& PathOf(State& state)
{
    if (state.path.empty()) state.path = DefaultPath();
    return state.path;
}

bool IsSameContent(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

std::string ReadAll(const OpenFile& file, std::size_t size)
{
    std::string text(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = pread(file.Get(), text.data() + done, size - done, static_cast<off_t>(done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) throw Error(REGISTRY_E_CORRUPT);
        done += static_cast<std::size_t>(got);
    }
    return text;
}

/// Reads the file where it is another one than what is known. Throws Error.
void Refresh(State& state)
{
    if (state.inMemory) return;
    const std::string& path = PathOf(state);
    struct stat status {};
    if (state.file && stat(path.c_str(), &status) == 0 && IsSameContent(status, state.status)) return;
    state.root = {};
    state.file = {};
    OpenFile file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file && (errno == ENOENT || errno == ENOTDIR)) return;
    if (!file || fstat(file.Get(), &status) != 0) throw Error(ResultFromErrno(errno));
    if (!S_ISREG(status.st_mode) || status.st_size > kMaxFileSize) throw Error(REGISTRY_E_CORRUPT);
    state.root = ParseRegistryText(ReadAll(file, static_cast<std::size_t>(status.st_size)));
    state.file = std::move(file);
    state.status = status;
}

/// Keeps other processes from writing the same file.
class FileLock {
public:
    explicit FileLock(const std::string& path)
    {
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
        m_file = OpenFile(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
        if (!m_file || flock(m_file.Get(), LOCK_EX) != 0) throw Error(ResultFromErrno(errno));
    }

private:
    OpenFile m_file;
};

HRESULT ApplyAll(RegistryKey& root, const std::vector<Change>& changes)
{
    for (const Change& change : changes) {
        const HRESULT result = change(root);
        if (FAILED(result)) return result;
    }
    return S_OK;
}

/// Changes a copy and puts it in force when everything succeeded.
HRESULT Write(const std::vector<Change>& changes)
{
    return Guarded([&] {
        State& state = Shared();
        const SectionLock lock(state.section);
        if (state.inMemory) {
            RegistryKey changed = state.root;
            const HRESULT result = ApplyAll(changed, changes);
            if (SUCCEEDED(result)) state.root = std::move(changed);
            return result;
        }
        const FileLock fileLock(PathOf(state));
        Refresh(state);
        RegistryKey changed = state.root;
        HRESULT result = ApplyAll(changed, changes);
        if (FAILED(result)) return result;
        AtomicFile file;
        const std::string text = WriteRegistryText(changed);
        result = file.Create(state.path);
        if (SUCCEEDED(result)) result = file.Write(text.data(), text.size());
        if (SUCCEEDED(result)) result = file.Commit();
        // What was written is read again when it is asked for.
        state.file = {};
        return result;
    });
}

HRESULT Submit(Change change)
{
    return Guarded([&] {
        if (!t_batch) return Write({std::move(change)});
        t_batch->push_back(std::move(change));
        return S_OK;
    });
}

template <class Body>
HRESULT Read(Body&& body)
{
    return Guarded([&] {
        State& state = Shared();
        const SectionLock lock(state.section);
        Refresh(state);
        if (!t_batch || t_batch->empty()) return body(std::as_const(state.root));
        // A batch sees what it is about to write.
        RegistryKey changed = state.root;
        const HRESULT result = ApplyAll(changed, *t_batch);
        return FAILED(result) ? result : body(std::as_const(changed));
    });
}

std::u16string Join(std::u16string_view folder, std::u16string_view key)
{
    std::u16string path(folder);
    if (!key.empty()) path.append(1, u'\\').append(key);
    return path;
}

/// The full paths that a key is looked for under, the first one first.
std::vector<std::u16string> ReadPaths(Hive hive, std::u16string_view key)
{
    switch (hive) {
    case Hive::ClassesRoot:
        return {Join(kUserClasses, key), Join(kMachineClasses, key)};
    case Hive::CurrentUser:
        return {Join(u"HKEY_CURRENT_USER", key)};
    case Hive::LocalMachine:
        return {Join(u"HKEY_LOCAL_MACHINE", key)};
    case Hive::Users:
        return {Join(u"HKEY_USERS", key)};
    case Hive::CurrentConfig:
        return {Join(u"HKEY_CURRENT_CONFIG", key)};
    }
    throw Error(E_INVALIDARG);
}

std::u16string WritePath(Hive hive, std::u16string_view key)
{
    if (hive == Hive::ClassesRoot) return Join(PerUser() ? kUserClasses : kMachineClasses, key);
    return ReadPaths(hive, key).front();
}

Change TreeRemoval(Hive hive, std::u16string_view key)
{
    return [path = WritePath(hive, key)](RegistryKey& root) { return root.Erase(path) ? S_OK : REGISTRY_E_NOT_FOUND; };
}

/// Erases a key that is there if it holds nothing, then those above it likewise, but no hive.
void EraseEmpty(RegistryKey& root, std::u16string_view path)
{
    for (auto end = path.rfind(u'\\'); end != path.npos; end = path.rfind(u'\\')) {
        const RegistryKey* const key = root.Find(path);
        if (!key->values.empty() || !key->keys.empty()) return;
        root.Erase(path);
        path = path.substr(0, end);
    }
}

Change IfThere(Change removal)
{
    return [removal = std::move(removal)](RegistryKey& root) {
        const HRESULT removed = removal(root);
        return removed == REGISTRY_E_NOT_FOUND ? S_OK : removed;
    };
}

template <class Member>
HRESULT Names(Hive hive, std::u16string_view key, Member member, std::vector<std::u16string>& names)
{
    names.clear();
    return Read([&](const RegistryKey& root) {
        bool found = false;
        std::map<std::u16string, bool, RegistryNameLess> merged;
        for (const std::u16string& path : ReadPaths(hive, key)) {
            const RegistryKey* at = root.Find(path);
            found = found || at;
            if (!at) continue;
            for (const auto& entry : at->*member)
                merged.emplace(entry.first, true);
        }
        for (const auto& entry : merged)
            names.push_back(entry.first);
        return found ? S_OK : REGISTRY_E_NOT_FOUND;
    });
}

} // namespace

void UseMemory()
{
    State& state = Shared();
    const SectionLock lock(state.section);
    state.inMemory = true;
    state.root = {};
}

void UseFile(std::string path)
{
    State& state = Shared();
    const SectionLock lock(state.section);
    state.inMemory = false;
    state.path = std::move(path);
    state.root = {};
    state.file = {};
}

void SetPerUser(bool perUser)
{
    State& state = Shared();
    const SectionLock lock(state.section);
    state.perUser = perUser;
}

bool PerUser()
{
    State& state = Shared();
    const SectionLock lock(state.section);
    return state.perUser;
}

HRESULT Query(Hive hive, std::u16string_view key, std::u16string_view name, RegistryValue& value)
{
    return Read([&](const RegistryKey& root) {
        for (const std::u16string& path : ReadPaths(hive, key)) {
            const RegistryKey* at = root.Find(path);
            const auto found = at ? at->values.find(name) : decltype(at->values.end())();
            if (!at || found == at->values.end()) continue;
            value = found->second;
            return S_OK;
        }
        return REGISTRY_E_NOT_FOUND;
    });
}

std::u16string QueryText(Hive hive, std::u16string_view key, std::u16string_view name)
{
    RegistryValue value;
    const HRESULT result = Query(hive, key, name, value);
    if (result == E_OUTOFMEMORY) throw Error(result);
    const auto* text = std::get_if<std::u16string>(&value);
    return SUCCEEDED(result) && text ? *text : std::u16string();
}

bool KeyExists(Hive hive, std::u16string_view key)
{
    return SUCCEEDED(Read([&](const RegistryKey& root) {
        for (const std::u16string& path : ReadPaths(hive, key)) {
            if (root.Find(path)) return S_OK;
        }
        return REGISTRY_E_NOT_FOUND;
    }));
}

HRESULT SubKeys(Hive hive, std::u16string_view key, std::vector<std::u16string>& names)
{
    return Names(hive, key, &RegistryKey::keys, names);
}

HRESULT Values(Hive hive, std::u16string_view key, std::vector<std::u16string>& names)
{
    return Names(hive, key, &RegistryKey::values, names);
}

HRESULT CreateKey(Hive hive, std::u16string_view key)
{
    return Submit([path = WritePath(hive, key)](RegistryKey& root) {
        root.Create(path);
        return S_OK;
    });
}

HRESULT Set(Hive hive, std::u16string_view key, std::u16string_view name, RegistryValue value)
{
    return Submit(
        [path = WritePath(hive, key), name = std::u16string(name), value = std::move(value)](RegistryKey& root) {
            root.Create(path).values.insert_or_assign(name, value);
            return S_OK;
        });
}

HRESULT DeleteValue(Hive hive, std::u16string_view key, std::u16string_view name)
{
    return Submit([path = WritePath(hive, key), name = std::u16string(name)](RegistryKey& root) {
        RegistryKey* const owner = root.Find(path);
        if (!owner || owner->values.erase(name) == 0) return REGISTRY_E_NOT_FOUND;
        EraseEmpty(root, path);
        return S_OK;
    });
}

HRESULT DeleteTree(Hive hive, std::u16string_view key)
{
    return Submit(TreeRemoval(hive, key));
}

HRESULT DeleteTreeIfThere(Hive hive, std::u16string_view key)
{
    return Submit(IfThere(TreeRemoval(hive, key)));
}

Batch::Batch() : m_outer(t_batch == nullptr)
{
    if (m_outer) t_batch = new std::vector<Change>;
}

Batch::~Batch()
{
    if (m_outer) delete std::exchange(t_batch, nullptr);
}

HRESULT Batch::Commit()
{
    if (!m_outer || t_batch->empty()) return S_OK;
    return Write(std::exchange(*t_batch, {}));
}

} // namespace kv::Registry
