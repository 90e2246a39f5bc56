#include "KVProjectData/files/TestImporter.h"

#include "KVProjectData/Identities.h"
#include "platform/automation/Dispatch.h"

namespace kv {

HRESULT CKVTestImporter::IsLoadable(BSTR, LONG* pbIsLoadable)
{
    if (pbIsLoadable) *pbIsLoadable = 1;
    return S_OK;
}

HRESULT CKVTestImporter::Import(BSTR, IUnknown*, BSTR, BSTR)
{
    return S_OK;
}

HRESULT CKVTestImporter::GetClassInfo(ITypeInfo** info)
{
    if (!info) return E_POINTER;
    *info = nullptr;
    ComPtr<ITypeLib> library;
    const HRESULT made = MakeTypeLibrary(*ModuleTypeLibrary(), library.Put());
    return FAILED(made) ? made : library->GetTypeInfoOfGuid(CLSID_KVTestImporter, info);
}

} // namespace kv
