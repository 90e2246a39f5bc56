#pragma once
// The keys and values of a registry, and their text form. Private to the registry.

#include "platform/system/Registry.h"

#include <map>
#include <memory>

namespace kv {

/// Orders names without regard to the case of ASCII letters.
struct RegistryNameLess {
    using is_transparent = void;
    bool operator()(std::u16string_view left, std::u16string_view right) const;
};

struct RegistryKey {
    std::map<std::u16string, RegistryValue, RegistryNameLess> values;
    std::map<std::u16string, RegistryKey, RegistryNameLess> keys;

    const RegistryKey* Find(std::u16string_view path) const;
    RegistryKey* Find(std::u16string_view path);
    /// Throws Error(E_INVALIDARG) for a path that is too deep or a name that is too long.
    RegistryKey& Create(std::u16string_view path);
    /// False when there is no such key.
    bool Erase(std::u16string_view path);
};

/// The keys directly below `root` are the hives.
std::string WriteRegistryText(const RegistryKey& root);
/// Throws Error(REGISTRY_E_CORRUPT) for anything that WriteRegistryText does not write.
RegistryKey ParseRegistryText(std::string_view text);

} // namespace kv
