#pragma once
// A file that the project carries to the disc besides its titles and menus.

#include "KVProjectData/IKVDataFile.h"
#include "KVProjectData/persistence/AttributeArchive.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

#include <atomic>

namespace kv {

class CKVDataFile final : public ArchivedNode<CKVDataFile>, public Object<Dual<IKVDataFile>> {
public:
    CKVDataFile() : ArchivedNode(typeFile) {}

    HRESULT get_ID(LONG* pVal) override;
    HRESULT get_SourcePath(BSTR* pVal) override;
    HRESULT put_SourcePath(BSTR newVal) override;
    HRESULT get_DestPath(BSTR* pVal) override;
    HRESULT put_DestPath(BSTR newVal) override;
    HRESULT get_Tag(ULONG* pVal) override;
    HRESULT put_Tag(ULONG newVal) override;
    HRESULT IncrementUseCount() override;

    /// Paths compare exactly, with regard to case. Null and 0 match anything.
    bool Matches(BSTR sourcePath, BSTR destPath, ULONG tag);
    bool HasSource(BSTR sourcePath);

    /// Counts one user less; true when none is left.
    bool DropUser();

    IUnknown* Identity() override { return Controlling(); }

    template <class Archive>
    void Attributes(Archive& archive)
    {
        archive.ID(*this);
        archive("destPath", m_destPath);
        archive("sourcePath", m_sourcePath);
        archive("tag", m_tag);
    }

protected:
    void FirePropertyChanged(DISPID propId) override;

private:
    Bstr m_sourcePath;
    Bstr m_destPath;
    ULONG m_tag = 0;
    std::atomic<ULONG> m_useCount{0};
};

} // namespace kv
