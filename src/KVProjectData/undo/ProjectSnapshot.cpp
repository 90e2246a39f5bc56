#include "KVProjectData/undo/ProjectSnapshot.h"

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"

namespace kv {
namespace {

/// The message by which hosts learn that a snapshot was restored.
constexpr LONG kProjectReplaced = 2;

HRESULT RestoreFrom(NodeImage& image)
{
    return Guarded([&] {
        image.Restore();
        return S_OK;
    });
}

} // namespace

CKVProjectSnapshot::CKVProjectSnapshot(CProjectNode& project) : StateRecord(project), m_image(project)
{
    if (project.Type() != typeProject) throw Error(KV_E_NO_PROJECT);
}

HRESULT CKVProjectSnapshot::Exchange(CProjectNode& project, DrivingUndo&)
{
    m_restored = Guarded([&] { return Restore(project); });
    return m_restored;
}

HRESULT CKVProjectSnapshot::Restore(CProjectNode& project)
{
    const SectionLock lock(project.Section());
    const HRESULT locked = project.CheckLocked();
    if (FAILED(locked)) return locked;
    NodeImage current(project);
    current.KeepAbsent(m_image);
    NodeImage wanted = m_image.Copy();
    const HRESULT restored = RestoreFrom(wanted);
    if (FAILED(restored)) {
        RestoreFrom(current);
        return restored;
    }
    m_image = std::move(current);
    project.FireEvent(EVENT_MessageBroadcast, kProjectReplaced, 0, 0);
    return S_OK;
}

} // namespace kv
