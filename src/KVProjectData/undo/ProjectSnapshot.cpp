#include "KVProjectData/undo/ProjectSnapshot.h"

#include "KVProjectData/Identities.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/persistence/ElementTable.h"
#include "platform/com/Activation.h"

namespace kv {
namespace {

/// The message by which hosts learn that a snapshot was restored.
constexpr LONG kProjectReplaced = 2;

/// For as long as the project is cleared and loaded by a snapshot.
class Restoring {
public:
    Restoring(const CProjectNode& project, KeptObjects& kept) { Set(&project, &kept); }
    Restoring(const Restoring&) = delete;
    Restoring& operator=(const Restoring&) = delete;
    ~Restoring() { Set(nullptr, nullptr); }

private:
    static void Set(const CProjectNode* project, KeptObjects* kept)
    {
        UndoContext& context = SharedUndoContext();
        const SectionLock lock(context.recording);
        context.restored = project;
        context.kept = kept;
    }
};

} // namespace

ProjectImage::ProjectImage(CProjectNode& project, IKVFileService& files)
{
    ComPtr<IXMLDOMElement> root;
    ThrowIfFailed(CreateInstance(CLSID_DOMDocument, m_document));
    ThrowIfFailed(m_document->createElement(Bstr(u"Root").Get(), root.Put()));
    ThrowIfFailed(m_document->putref_documentElement(root.Get()));
    const SectionLock lock(project.Section());
    ThrowIfFailed(files.PersistToXML(root.Get(), project.Identity()));
    m_settings = project.GetRecord();
    Visit(project, 0);
}

HRESULT ProjectImage::VisitNode(CProjectNode& node, ULONG)
{
    const ElementRow* row = FindElement(node.Type());
    // Commands are no objects that a host could know.
    if (row && row->Item() && node.Type() != typeCommand) m_items.push_back({node.Identity(), &node});
    return S_OK;
}

CProjectNode* ProjectImage::TakeNext(NodeType type)
{
    if (m_next == m_items.size()) return nullptr;
    CProjectNode* node = m_items[m_next++].node;
    return node->Type() == type && !node->Parent() ? node : nullptr;
}

HRESULT ProjectImage::Restore(CProjectNode& project, IKVFileService& files)
{
    ComPtr<IXMLDOMElement> root;
    const HRESULT found = m_document->get_documentElement(root.Put());
    if (FAILED(found)) return found;
    m_next = 0;
    const SectionLock lock(project.Section());
    const Restoring restoring(project, *this);
    const HRESULT loaded = files.PersistFromXML(root.Get(), project.Identity());
    if (SUCCEEDED(loaded)) project.ExchangeRecord(m_settings);
    return loaded;
}

CKVProjectSnapshot::CKVProjectSnapshot(CProjectNode& project) : StateRecord(project)
{
    if (project.Type() != typeProject) throw Error(KV_E_NO_PROJECT);
    ThrowIfFailed(CreateInstance(CLSID_KVFileService, m_files));
    m_image = std::make_unique<ProjectImage>(project, *m_files);
}

HRESULT CKVProjectSnapshot::Exchange(CProjectNode& project, DrivingUndo&)
{
    if (!m_image) return S_FALSE;
    m_restored = Guarded([&] { return Restore(project); });
    return m_restored;
}

HRESULT CKVProjectSnapshot::Restore(CProjectNode& project)
{
    std::unique_ptr<ProjectImage> current;
    // What can be saved no more must not stand in the way of what could be.
    const HRESULT kept = Guarded([&] {
        current = std::make_unique<ProjectImage>(project, *m_files);
        return S_OK;
    });
    if (kept == E_OUTOFMEMORY) return kept;
    const HRESULT restored = m_image->Restore(project, *m_files);
    if (FAILED(restored)) {
        if (current) current->Restore(project, *m_files);
        return restored;
    }
    m_image = std::move(current);
    const auto data = Query<IKVProjectData>(project.Identity());
    return data->BroadcastMessage(kProjectReplaced, 0, 0);
}

} // namespace kv
