#pragma once
// Making type libraries of descriptions.

#include "platform/automation/TypeDescription.h"
#include "platform/automation/TypeInfo.h"

namespace kv {

/// `description` outlives the library.
KV_EXPORT HRESULT MakeTypeLibrary(const LibraryDescription& description, ITypeLib** library);

/// A type info of an interface, within a library when there is one.
KV_EXPORT HRESULT MakeTypeInfo(const LibraryDescription* library, const InterfaceDescription& description,
                               ITypeInfo** info);

} // namespace kv
