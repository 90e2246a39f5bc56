#pragma once
// A file that the project carries to the disc besides its titles and menus.

#include "KVProjectData/IKVDataFile.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

#include <atomic>

namespace kv {

class CKVDataFile final : public CProjectNode, public Object<Dual<IKVDataFile>> {
public:
    CKVDataFile() : CProjectNode(typeFile) {}

    KV_GETTER(LONG, ID, ID())
    KV_GETTER(BSTR, SourcePath, m_sourcePath)
    HRESULT put_SourcePath(BSTR newVal) override;
    KV_PROPERTY(BSTR, DestPath, m_destPath, Undo, Fires(401))
    KV_PROPERTY(ULONG, Tag, m_tag, Undo, Fires(2))
    HRESULT IncrementUseCount() override;

    /// Paths compare exactly, with regard to case. Null and 0 match anything.
    bool Matches(BSTR sourcePath, BSTR destPath, ULONG tag);
    bool HasSource(BSTR sourcePath);

    /// Counts one user less, except for the last one; true when there is no other.
    bool DropUser();

    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive& archive) override;

protected:
    void FirePropertyChanged(DISPID propId) override;

private:
    Bstr m_sourcePath;
    Bstr m_destPath;
    ULONG m_tag = 0;
    std::atomic<ULONG> m_useCount{0};
};

} // namespace kv
