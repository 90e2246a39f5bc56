#include "KVProjectData/project/ProjectData.h"

#include "KVProjectData/IKVMenu.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {
namespace {

constexpr EngineCalls kEngine("KVProjectData");

/// The one whose block is part of steps; null without one.
ComPtr<IUnknown> StoryboardOf(IKVMenu& menu)
{
    ComPtr<IUnknown> storyboard;
    VARIANT_BOOL native = VARIANT_FALSE;
    menu.GetProduction(storyboard.Put());
    if (!storyboard && SUCCEEDED(menu.get_IsNative(&native)) && native != VARIANT_FALSE)
        menu.GetBackgroundProduction(storyboard.Put());
    return storyboard;
}

} // namespace

HRESULT CKVProjectData::BeginUndo(BSTR bsDesc)
{
    return m_undo.Begin(bsDesc);
}

std::vector<ComPtr<IUnknown>> CKVProjectData::MenuStoryboards()
{
    std::vector<ComPtr<IUnknown>> storyboards;
    for (LONG i = 0; i < m_menus.ChildCount(); ++i) {
        const auto menu = Query<IKVMenu>(m_menus.GetChild(i)->Identity());
        if (auto storyboard = menu ? StoryboardOf(*menu.Get()) : nullptr) storyboards.push_back(std::move(storyboard));
    }
    return storyboards;
}

HRESULT CKVProjectData::JoinMenu(IKVMenu& menu)
{
    return Guarded([&] {
        const auto storyboard = StoryboardOf(menu);
        return storyboard ? kEngine.Checked(m_undo.JoinStoryboard(storyboard.Get()), "OpenUndoBlock()") : S_FALSE;
    });
}

HRESULT CKVProjectData::TakeUndoSnapshot(BSTR bsDesc)
{
    return m_undo.TakeSnapshot(bsDesc);
}

HRESULT CKVProjectData::EndUndo(VARIANT_BOOL bCommit)
{
    return m_undo.End(bCommit != VARIANT_FALSE);
}

HRESULT CKVProjectData::EndUndoEx(VARIANT_BOOL bCommit, VARIANT_BOOL bSbdHint)
{
    if (bSbdHint != VARIANT_FALSE) m_undo.MarkMajorChange();
    const HRESULT ended = EndUndo(bCommit);
    if (bCommit != VARIANT_FALSE) SetModified(false);
    return ended;
}

HRESULT CKVProjectData::UndoOperation()
{
    return m_undo.Undo();
}

HRESULT CKVProjectData::RedoOperation()
{
    return m_undo.Redo();
}

HRESULT CKVProjectData::GetUndoManager(IOleUndoManager** ppUndoMgr)
{
    return m_undo.GetManager(ppUndoMgr);
}

HRESULT CKVProjectData::BeginStoryboardUndo(IUnknown* pUnkSbd, ULONG)
{
    EngineCalls::Begin();
    return pUnkSbd ? kEngine.Checked(m_undo.BeginStoryboard(pUnkSbd), "OpenUndoBlock()")
                   : kEngine.NullArgument("pUnkSbd");
}

HRESULT CKVProjectData::get_UndoEnable(VARIANT_BOOL* pVal)
{
    return m_undo.CanUndo(pVal);
}

HRESULT CKVProjectData::get_RedoEnable(VARIANT_BOOL* pVal)
{
    return m_undo.CanRedo(pVal);
}

HRESULT CKVProjectData::ResetStaticData()
{
    const DrivingUndo driving;
    SharedUndoContext().manager.Reset();
    return S_OK;
}

} // namespace kv
