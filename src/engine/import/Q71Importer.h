#pragma once
// Projects of the versions 700 to 799.

#include "KVProjectData/IQ71ProjectImport.h"
#include "platform/com/Object.h"

namespace kv {

/// Their documents have today's form, with names that were given up since ("HDVideoFormat", "zoomToFill") and without
/// some attributes of today: the project reads them itself.
class CQ71Importer final : public Object<IQ71ProjectImport> {
public:
    explicit CQ71Importer(IUnknown* outer) : Object(outer) {}

    /// E_POINTER for anything but an element and a project; else what the project says.
    HRESULT ImportXML(IUnknown* pDocElement, IUnknown* pKVProject) override;
};

} // namespace kv
