#include "KVProjectData/titles/DataFile.h"

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/content/FilePlace.h"

namespace kv {

void CKVDataFile::Attributes(AttributeArchive& archive)
{
    archive.ID(*this);
    archive("destPath", m_destPath);
    PathAttribute(archive, "sourcePath", m_sourcePath);
    archive("tag", m_tag);
}

HRESULT CKVDataFile::put_SourcePath(BSTR newVal)
{
    return Edit([&](EditScope& edit) {
        if (!newVal || !LeadsAnywhere(*this, View(newVal))) return KV_E_NO_SOURCE_FILE;
        Bstr path = Bstr::CopyOf(newVal);
        edit.Record();
        m_sourcePath = std::move(path);
        edit.Changed(400);
        return S_OK;
    });
}

HRESULT CKVDataFile::IncrementUseCount()
{
    ++m_useCount;
    return S_OK;
}

bool CKVDataFile::Matches(BSTR sourcePath, BSTR destPath, ULONG tag)
{
    const SectionLock lock(Section());
    return (!sourcePath || m_sourcePath.View() == View(sourcePath)) &&
           (!destPath || m_destPath.View() == View(destPath)) && (tag == 0 || m_tag == tag);
}

bool CKVDataFile::HasSource(BSTR sourcePath)
{
    const SectionLock lock(Section());
    return m_sourcePath.View() == View(sourcePath);
}

bool CKVDataFile::DropUser()
{
    ULONG users = m_useCount;
    while (users > 1) {
        if (m_useCount.compare_exchange_weak(users, users - 1)) return false;
    }
    return true;
}

void CKVDataFile::FirePropertyChanged(DISPID propId)
{
    FireEvent(EVENT_DataFilePropChanged, ID(), propId, 0);
}

} // namespace kv
