#pragma once
// Undo of everything at once.

#include "KVProjectData/IKVFileService.h"
#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/tree/UndoContext.h"
#include "KVProjectData/tree/Visitor.h"
#include "KVProjectData/undo/StateRecord.h"

#include <memory>
#include <vector>

namespace kv {

/// A project as it was at one time: its document, what is recorded of it beside, and the objects in its lists, so that
/// those that come back are the ones that hosts know, with all that no document holds.
class ProjectImage final : public KeptObjects, private CVisitor {
public:
    /// Throws Error when the project cannot be saved.
    ProjectImage(CProjectNode& project, IKVFileService& files);

    /// Makes the project what it was. On failure it may be anything between.
    HRESULT Restore(CProjectNode& project, IKVFileService& files);

    CProjectNode* TakeNext(NodeType type) override;

private:
    HRESULT VisitNode(CProjectNode& node, ULONG flags) override;

    struct Item {
        ComPtr<IUnknown> reference;
        CProjectNode* node;
    };

    ComPtr<IXMLDOMDocument> m_document;
    RecordedValues m_settings;
    /// In the order of the document.
    std::vector<Item> m_items;
    std::size_t m_next = 0;
};

/// When it is restored, message 2 tells hosts to read everything anew.
class CKVProjectSnapshot final : public StateRecord<CKVProjectSnapshot, 101> {
public:
    /// Throws Error: KV_E_NO_PROJECT for a node that is none, or why the project cannot be saved.
    explicit CKVProjectSnapshot(CProjectNode& project);

    /// What restoring gave the last time.
    HRESULT Restored() const { return m_restored; }

protected:
    Bstr Description() const override { return Bstr(u"Project Snapshot"); }

private:
    HRESULT Exchange(CProjectNode& project, DrivingUndo& driving) override;
    HRESULT Restore(CProjectNode& project);

    ComPtr<IKVFileService> m_files;
    /// Empty where the project could not be saved when it was restored: there is no way back then.
    std::unique_ptr<ProjectImage> m_image;
    HRESULT m_restored = S_OK;
};

} // namespace kv
