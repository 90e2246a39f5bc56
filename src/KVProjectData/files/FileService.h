#pragma once
// Project files on disk.

#include "KVProjectData/IKVFileService.h"
#include "KVProjectData/IKVProjectArchive.h"
#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/content/ContentPaths.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

namespace kv {

class CKVFileService final : public Object<Dual<IKVFileService>, IKVProjectArchive> {
public:
    explicit CKVFileService(IUnknown* outer) : Object(outer) {}

    HRESULT SaveProject(BSTR bstrFileName, IUnknown* pUnkProject) override;
    HRESULT Archive(BSTR bstrFileName, IUnknown* pUnkProject) override;
    HRESULT LoadProject(BSTR bstrFileName, IUnknown* pUnkProject) override;
    HRESULT PersistToXML(IXMLDOMNode* pRoot, IUnknown* pUnkProject) override;
    HRESULT PersistFromXML(IXMLDOMNode* pRoot, IUnknown* pUnkProject) override;
    HRESULT ResolveFilePath(BSTR* bstrFileName) override;
    HRESULT UnresolveFilePath(BSTR* bstrFileName) override;

    HRESULT ArchiveProject(BSTR bstrFileName, IUnknown* pUnkProject, IKVArchiveEvents* pEvents) override;
    HRESULT PlanArchive(BSTR bstrFileName, IUnknown* pUnkProject, IKVArchiveEvents* pEvents) override;

private:
    /// As they were when the service was made.
    const std::shared_ptr<const ContentPaths> m_paths = RenewContentPaths();
};

} // namespace kv
