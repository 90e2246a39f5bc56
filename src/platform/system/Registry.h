#pragma once
// The registry: a tree of keys with typed values, in a file or in memory.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kv {

inline constexpr HRESULT REGISTRY_E_NOT_FOUND = MakeResult(0x80070002);
/// The registry file is not one; it is never overwritten.
inline constexpr HRESULT REGISTRY_E_CORRUPT = MakeResult(0x800703F1);
/// The environment says nothing of where the registry file is to be.
inline constexpr HRESULT REGISTRY_E_NO_HOME = MakeResult(0x800700CB);

enum class Hive {
    /// The classes of the current user over those of the machine; written to the machine's, or to the user's while
    /// per-user registration is in force.
    ClassesRoot,
    CurrentUser,
    LocalMachine,
    Users,
    CurrentConfig,
};

/// Text, a number, or bytes.
using RegistryValue = std::variant<std::u16string, ULONG, std::vector<std::byte>>;

/// Keys are named by paths with "\"; names compare without regard to the case of ASCII letters and keep the spelling
/// they were first written in. The default value of a key has the empty name. All operations may be called from any
/// thread. Writing to a file reads it anew under a lock, writes it whole and renames it, so that two processes lose
/// nothing of each other's.
namespace Registry {

/// Keeps everything in memory, starting empty.
KV_EXPORT void UseMemory();
/// Keeps everything in a file, which need not exist. At first, and for an empty path, that is the file that the
/// environment variable KV_REGISTRY names, else KVProjectData/registry.txt in XDG_CONFIG_HOME, else the same in .config
/// in HOME; an empty variable counts as none, and without any of them the result is REGISTRY_E_NO_HOME.
KV_EXPORT void UseFile(std::string path);

/// Classes are registered for the current user instead of the machine.
KV_EXPORT void SetPerUser(bool perUser);
KV_EXPORT bool PerUser();

/// REGISTRY_E_NOT_FOUND when the key or the value does not exist.
KV_EXPORT HRESULT Query(Hive hive, std::u16string_view key, std::u16string_view name, RegistryValue& value);
/// The text of a value; empty when it does not exist or is no text. Throws Error for lack of memory.
KV_EXPORT std::u16string QueryText(Hive hive, std::u16string_view key, std::u16string_view name);
KV_EXPORT bool KeyExists(Hive hive, std::u16string_view key);
/// Names in order.
KV_EXPORT HRESULT SubKeys(Hive hive, std::u16string_view key, std::vector<std::u16string>& names);
KV_EXPORT HRESULT Values(Hive hive, std::u16string_view key, std::vector<std::u16string>& names);

/// Creates a key with those above it.
KV_EXPORT HRESULT CreateKey(Hive hive, std::u16string_view key);
/// Creates the key where needed.
KV_EXPORT HRESULT Set(Hive hive, std::u16string_view key, std::u16string_view name, RegistryValue value);
/// Deletes a value, and of its key and those above it what then holds nothing; REGISTRY_E_NOT_FOUND when there is none.
KV_EXPORT HRESULT DeleteValue(Hive hive, std::u16string_view key, std::u16string_view name);
/// Deletes a key with everything below it; REGISTRY_E_NOT_FOUND when there is none.
KV_EXPORT HRESULT DeleteTree(Hive hive, std::u16string_view key);
/// The same, with S_OK for what is not there.
KV_EXPORT HRESULT DeleteTreeIfThere(Hive hive, std::u16string_view key);

/// Gathers the changes of this thread, so that they are written together when `Commit` is called, or not at all.
class KV_EXPORT Batch {
public:
    Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    ~Batch();

    /// The first failure of the batch, which then changed nothing; S_OK within an outer batch, which writes later.
    HRESULT Commit();

private:
    bool m_outer;
};

} // namespace Registry
} // namespace kv
