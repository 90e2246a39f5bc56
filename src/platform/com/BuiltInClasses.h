#pragma once
// Classes that the platform itself creates, whatever the registry says.

#include "platform/com/Unknown.h"

namespace kv {

/// REGDB_E_CLASSNOTREG for any other class.
HRESULT GetBuiltInClassObject(REFCLSID clsid, REFIID iid, void** out);

} // namespace kv
