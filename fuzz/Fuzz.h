#pragma once
// What the fuzz targets share: a host with its server libraries, and conditions that end the run.

#include "KVProjectData/KVProjectData.h"
#include "platform/com/Activation.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Registry.h"

#include <cstdio>
#include <cstdlib>

namespace kv::fuzz {

inline void Require(bool condition, const char* what)
{
    if (condition) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

/// Registers the server libraries in memory and keeps messages to itself.
inline void PrepareHost()
{
    static const bool prepared = [] {
        Registry::UseMemory();
        SetMessageBoxHook([](std::u16string_view, std::u16string_view) {});
        return SUCCEEDED(RegisterServer(KV_FUZZ_LIBRARY)) && SUCCEEDED(RegisterServer(KV_FUZZ_ENGINE));
    }();
    Require(prepared, "the server libraries are registered");
}

template <class T>
ComPtr<T> Create(REFCLSID clsid)
{
    PrepareHost();
    ComPtr<T> object;
    Require(SUCCEEDED(CreateInstance(clsid, object)), "a class of the library is there");
    return object;
}

} // namespace kv::fuzz
