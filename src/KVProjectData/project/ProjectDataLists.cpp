#include "KVProjectData/project/ProjectData.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/titles/DataFile.h"
#include "KVProjectData/titles/Title.h"

namespace kv {

void CKVProjectData::DropLists()
{
    const SectionLock lock(Section());
    m_titles.DropAll();
    m_menus.DropAll();
    m_dataFiles.DropAll();
}

HRESULT CKVProjectData::get_TitleCount(LONG* pVal)
{
    return Read([&] { return m_titles.Count(pVal); });
}

HRESULT CKVProjectData::get_MenuCount(LONG* pVal)
{
    return Read([&] { return m_menus.Count(pVal); });
}

HRESULT CKVProjectData::get_DataFileCount(LONG* pVal)
{
    return Read([&] { return m_dataFiles.Count(pVal); });
}

HRESULT CKVProjectData::GetTitle(LONG index, IKVTitle** ppTitle)
{
    return Read([&] { return m_titles.GetItem<CKVTitle>(index, ppTitle); });
}

HRESULT CKVProjectData::AddTitle(LONG index, IKVTitle** ppTitle)
{
    if (ppTitle) *ppTitle = nullptr;
    return Edit([&](EditScope&) {
        return m_titles.AddItem<CKVTitle>(index, ppTitle, [this](CKVTitle& title) { return PrepareTitle(title); });
    });
}

HRESULT CKVProjectData::PrepareTitle(CKVTitle& title)
{
    AspectRatio aspect = AspectRatio_None;
    Part<CKVEncodingParams>().get_AspectRatio(&aspect);
    CKVEncodingParams& encoding = title.EncodingParams();
    HRESULT result = encoding.put_SyncToProject(VARIANT_TRUE);
    if (SUCCEEDED(result)) result = encoding.put_AspectRatio(aspect);
    title.SetStereoscopic(m_settings.discVideoType != Normal_2D);
    return result;
}

HRESULT CKVProjectData::RemoveTitle(LONG ID, IKVTitle** ppTitle)
{
    if (ppTitle) *ppTitle = nullptr;
    return Edit([&](EditScope&) {
        LONG index = -1;
        m_titles.FindChildByID(ID, &index);
        return m_titles.RemoveItem<CKVTitle>(index, KV_E_NO_SUCH_ID, ppTitle);
    });
}

HRESULT CKVProjectData::MoveTitle(LONG fromPos, LONG toPos)
{
    return Edit([&](EditScope&) { return m_titles.MoveItem(fromPos, toPos); });
}

HRESULT CKVProjectData::GetMenu(LONG, IKVMenu** ppMenu)
{
    return Read([&] {
        if (!ppMenu) return E_POINTER;
        *ppMenu = nullptr;
        return KV_E_BAD_POSITION;
    });
}

HRESULT CKVProjectData::AddMenu(LONG, IKVMenu** ppMenu)
{
    if (ppMenu) *ppMenu = nullptr;
    // There is no class of menus to create one from.
    return Edit([](EditScope&) { return CLASS_E_CLASSNOTAVAILABLE; });
}

HRESULT CKVProjectData::RemoveMenu(LONG, IKVMenu** ppMenu)
{
    if (ppMenu) *ppMenu = nullptr;
    return Edit([](EditScope&) { return KV_E_NO_SUCH_ID; });
}

HRESULT CKVProjectData::MoveMenu(LONG fromPos, LONG toPos)
{
    return Edit([&](EditScope&) { return m_menus.MoveItem(fromPos, toPos); });
}

HRESULT CKVProjectData::InsertMenuW(LONG, IKVMenu* pMenu)
{
    return Edit([&](EditScope&) { return pMenu ? E_INVALIDARG : E_POINTER; });
}

HRESULT CKVProjectData::GetDataFile(LONG index, IKVDataFile** ppDataFile)
{
    return Read([&] { return m_dataFiles.GetItem<CKVDataFile>(index, ppDataFile); });
}

HRESULT CKVProjectData::AddDataFile(LONG index, IKVDataFile** ppDataFile)
{
    if (ppDataFile) *ppDataFile = nullptr;
    return Edit([&](EditScope&) {
        return m_dataFiles.AddItem<CKVDataFile>(index, ppDataFile, [](CKVDataFile&) { return S_OK; });
    });
}

HRESULT CKVProjectData::RemoveDataFile(LONG index, IKVDataFile** ppDataFile)
{
    if (ppDataFile) *ppDataFile = nullptr;
    return Edit([&](EditScope&) {
        const LONG at = index < 1 ? -1 : index - 1;
        return m_dataFiles.RemoveItem<CKVDataFile>(at, KV_E_BAD_POSITION, ppDataFile);
    });
}

HRESULT CKVProjectData::RemoveDataFileBySource(BSTR bstrSrcPath, IKVDataFile** ppDataFile)
{
    if (ppDataFile) *ppDataFile = nullptr;
    return Edit([&](EditScope&) {
        for (LONG i = 0; i < m_dataFiles.ChildCount(); ++i) {
            auto* file = static_cast<CKVDataFile*>(m_dataFiles.GetChild(i));
            if (!file->HasSource(bstrSrcPath)) continue;
            if (!file->DropUser()) return S_FALSE;
            return m_dataFiles.RemoveItem<CKVDataFile>(i, KV_E_NO_SUCH_SOURCE, ppDataFile);
        }
        return KV_E_NO_SUCH_SOURCE;
    });
}

HRESULT CKVProjectData::MoveDataFile(LONG fromPos, LONG toPos)
{
    return Edit([&](EditScope&) { return m_dataFiles.MoveItem(fromPos, toPos); });
}

HRESULT CKVProjectData::FindDataFile(BSTR bstrSrcPath, BSTR bstrDestPath, ULONG dwTag, IKVDataFile** ppDataFile)
{
    return Read([&] {
        if (!ppDataFile) return E_POINTER;
        *ppDataFile = nullptr;
        for (LONG i = 0; i < m_dataFiles.ChildCount(); ++i) {
            auto* file = static_cast<CKVDataFile*>(m_dataFiles.GetChild(i));
            if (file->Matches(bstrSrcPath, bstrDestPath, dwTag)) return ComPtr<IKVDataFile>(file).CopyTo(ppDataFile);
        }
        return KV_E_DATA_FILE_NOT_FOUND;
    });
}

HRESULT CKVProjectData::FindByID(LONG ID, IUnknown** ppUnkObj)
{
    return Read([&] {
        if (!ppUnkObj) return E_POINTER;
        *ppUnkObj = nullptr;
        ComPtr<IUnknown> found = m_objects.Find(ID);
        if (!found) return KV_E_NO_SUCH_ID;
        *ppUnkObj = found.Detach();
        return S_OK;
    });
}

} // namespace kv
