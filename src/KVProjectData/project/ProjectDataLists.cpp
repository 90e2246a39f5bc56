#include "KVProjectData/project/ProjectData.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/Menu.h"
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
        return m_titles.AddItem<CKVTitle>(index, ppTitle, [this](CKVTitle& title) {
            title.SetStereoscopic(m_settings.discVideoType != Normal_2D);
            return FollowProject(title.EncodingParams());
        });
    });
}

HRESULT CKVProjectData::FollowProject(CKVEncodingParams& encoding)
{
    AspectRatio aspect = AspectRatio_None;
    Part<CKVEncodingParams>().get_AspectRatio(&aspect);
    const HRESULT result = encoding.put_SyncToProject(VARIANT_TRUE);
    return FAILED(result) ? result : encoding.put_AspectRatio(aspect);
}

HRESULT CKVProjectData::RemoveTitle(LONG ID, IKVTitle** ppTitle)
{
    if (ppTitle) *ppTitle = nullptr;
    return Edit([&](EditScope&) { return m_titles.RemoveByID<CKVTitle>(ID, ppTitle); });
}

HRESULT CKVProjectData::MoveTitle(LONG fromPos, LONG toPos)
{
    return Edit([&](EditScope&) { return m_titles.MoveItem(fromPos, toPos); });
}

HRESULT CKVProjectData::GetMenu(LONG index, IKVMenu** ppMenu)
{
    return Read([&] { return m_menus.GetItem<CKVMenu>(index, ppMenu); });
}

HRESULT CKVProjectData::AddMenu(LONG index, IKVMenu** ppMenu)
{
    if (ppMenu) *ppMenu = nullptr;
    return Edit([&](EditScope&) {
        return m_menus.AddItem<CKVMenu>(index, ppMenu, [this](CKVMenu& menu) {
            const HRESULT result = FollowProject(menu.EncodingParams());
            return FAILED(result) ? result : menu.Initialise();
        });
    });
}

HRESULT CKVProjectData::RemoveMenu(LONG ID, IKVMenu** ppMenu)
{
    if (ppMenu) *ppMenu = nullptr;
    return Edit([&](EditScope&) { return m_menus.RemoveByID<CKVMenu>(ID, ppMenu); });
}

HRESULT CKVProjectData::MoveMenu(LONG fromPos, LONG toPos)
{
    return Edit([&](EditScope&) { return m_menus.MoveItem(fromPos, toPos); });
}

HRESULT CKVProjectData::InsertMenuW(LONG index, IKVMenu* pMenu)
{
    const HRESULT inserted = Edit([&](EditScope&) {
        if (!pMenu) return E_POINTER;
        auto* menu = dynamic_cast<CKVMenu*>(pMenu);
        return menu ? m_menus.InsertItem(index, *menu, EVENT_MenuInserted) : E_INVALIDARG;
    });
    // An engine that opens no block for it leaves what follows in it unrecorded; the menu is in.
    if (SUCCEEDED(inserted)) JoinMenu(*pMenu);
    return inserted;
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
