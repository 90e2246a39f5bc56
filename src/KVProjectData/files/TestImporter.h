#pragma once
// The least importer: it takes every file and imports nothing.

#include "KVProjectData/IKVProjectImport.h"
#include "platform/automation/TypeInfo.h"
#include "platform/com/Object.h"

namespace kv {

class CKVTestImporter final : public Object<IKVProjectImport, IProvideClassInfo> {
public:
    explicit CKVTestImporter(IUnknown* outer) : Object(outer) {}

    HRESULT IsLoadable(BSTR bstrFileName, LONG* pbIsLoadable) override;
    HRESULT Import(BSTR bstrFileName, IUnknown* pUnkProjectData, BSTR bstrCatalogDir, BSTR bstrMovieDirectory) override;
    HRESULT GetClassInfo(ITypeInfo** info) override;
};

} // namespace kv
