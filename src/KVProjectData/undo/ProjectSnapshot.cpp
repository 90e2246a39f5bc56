#include "KVProjectData/undo/ProjectSnapshot.h"

#include "KVProjectData/Identities.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/tree/UndoContext.h"
#include "platform/com/Activation.h"

namespace kv {
namespace {

/// The message by which hosts learn that a snapshot was restored.
constexpr LONG kProjectReplaced = 2;

ComPtr<IKVProjectData> Interface(CProjectNode& project)
{
    return project.Type() == typeProject ? Query<IKVProjectData>(project.Identity()) : nullptr;
}

/// For as long as the project is cleared and loaded by a snapshot.
class Restoring {
public:
    Restoring() : m_before(std::exchange(SharedUndoContext().restoringSnapshot, true)) {}
    Restoring(const Restoring&) = delete;
    Restoring& operator=(const Restoring&) = delete;
    ~Restoring() { SharedUndoContext().restoringSnapshot = m_before; }

private:
    const bool m_before;
};

} // namespace

CKVProjectSnapshot::CKVProjectSnapshot(CProjectNode& project) : m_project(project)
{
    const auto data = Interface(project);
    if (!data) throw Error(KV_E_NO_PROJECT);
    ThrowIfFailed(CreateInstance(CLSID_KVFileService, m_files));
    m_document = Capture(*data);
}

ComPtr<IXMLDOMDocument> CKVProjectSnapshot::Capture(IKVProjectData& project)
{
    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMElement> root;
    ThrowIfFailed(CreateInstance(CLSID_DOMDocument, document));
    ThrowIfFailed(document->createElement(Bstr(u"Root").Get(), root.Put()));
    ThrowIfFailed(document->putref_documentElement(root.Get()));
    ThrowIfFailed(m_files->PersistToXML(root.Get(), &project));
    return document;
}

HRESULT CKVProjectSnapshot::Exchange()
{
    CProjectNode* node = m_project.Find();
    const auto project = node ? Interface(*node) : nullptr;
    if (!project) return S_FALSE;
    ComPtr<IXMLDOMDocument> current = Capture(*project);
    ComPtr<IXMLDOMElement> root;
    ThrowIfFailed(m_document->get_documentElement(root.Put()));
    {
        const Restoring restoring;
        const HRESULT restored = m_files->PersistFromXML(root.Get(), project.Get());
        if (FAILED(restored)) return restored;
    }
    m_document = std::move(current);
    project->BroadcastMessage(kProjectReplaced, 0, 0);
    return S_OK;
}

} // namespace kv
