#pragma once
// Undo of everything at once.

#include "KVProjectData/IKVFileService.h"
#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/undo/NodeAddress.h"
#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// The whole project as a document. When it is restored, message 2 tells hosts to read everything anew.
class CKVProjectSnapshot final : public StateRecord<CKVProjectSnapshot, 101> {
public:
    /// Throws Error: KV_E_NO_PROJECT for a node that is none, or why the project cannot be saved.
    explicit CKVProjectSnapshot(CProjectNode& project);

protected:
    Bstr Description() const override { return Bstr(u"Project Snapshot"); }

private:
    HRESULT Exchange() override;

    /// A new document with the project as it is below its root element.
    ComPtr<IXMLDOMDocument> Capture(IKVProjectData& project);

    const NodeAddress m_project;
    ComPtr<IKVFileService> m_files;
    ComPtr<IXMLDOMDocument> m_document;
};

} // namespace kv
