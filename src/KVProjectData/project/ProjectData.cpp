#include "KVProjectData/project/ProjectData.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/effects/EffectState.h"

namespace kv {
namespace {

constexpr ULONG kHeartbeatMilliseconds = 3000;

HWND CreateEventWindow()
{
    static constexpr WindowClass kClass{u"KoKVProjectDataWndClass", CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS, IDC_ARROW,
                                        COLOR_WINDOW};
    return CreateHiddenWindow(kClass, u"KVProjectDataWnd", WS_DISABLED);
}

} // namespace

CKVProjectData::CKVProjectData(IUnknown* outer) : CProjectNode(typeProject), Aggregate(outer) {}

HRESULT CKVProjectData::Initialise()
{
    m_window = CreateEventWindow();
    if (!m_window) return KV_E_NO_EVENT_WINDOW;

    AddChild(&m_titles, true);
    AddChild(&m_menus, true);
    AddChild(&m_dataFiles, true);
    AddChild(&MakePart<CKVCommandList>(), true);
    AddChild(&MakePart<CKVEncodingParams>(), true);
    // A project can be worked with all the same when nothing of it can be undone.
    m_undo.Initialise();
    MakePart<CKVLocking>(this);
    return Start(kHeartbeatMilliseconds);
}

void CKVProjectData::FinalRelease()
{
    m_undo.Terminate();
    DropLists();
    ReleaseParts();
    Stop();
    if (m_window) DestroyWindow(m_window);
}

HRESULT CKVProjectData::put_TVStandard(TVStandard newVal)
{
    return Edit([&](EditScope& edit) {
        edit.Record();
        m_settings.tvStandard = newVal;
        FireEvent(EVENT_TVStandardChanged, newVal, 0, 0);
        return S_OK;
    });
}

HRESULT CKVProjectData::get_FrameRate(double* pVal)
{
    return Edit([&](EditScope&) {
        if (!pVal) return E_POINTER;
        constexpr double kNone = 0.1;
        const double ofStandard = m_settings.tvStandard == NTSC ? 29.97 : 25.0;
        *pVal = m_settings.frameRate < kNone ? ofStandard : m_settings.frameRate;
        return S_OK;
    });
}

HRESULT CKVProjectData::put_FrameRate(double newVal)
{
    return Put(m_settings.frameRate, newVal);
}

HRESULT CKVProjectData::put_ProjectDirectory(BSTR newVal)
{
    return Edit([&](EditScope& edit) {
        Bstr directory = Bstr::CopyOf(newVal);
        edit.Record();
        m_projectDirectory = std::move(directory);
        FireEvent(EVENT_ProjectDirectoryChanged, 0, 0, reinterpret_cast<LONGLONG>(m_projectDirectory.Get()));
        return S_OK;
    });
}

HRESULT CKVProjectData::put_IsOnDisc(VARIANT_BOOL newVal)
{
    return Put(m_settings.isOnDisc, newVal == VARIANT_TRUE, Fires(27));
}

HRESULT CKVProjectData::get_DoCompression(VARIANT_BOOL* pVal)
{
    return Read([&] {
        if (!pVal) return E_POINTER;
        return m_settings.fitToDisc ? Get(pVal, m_settings.doCompression) : S_FALSE;
    });
}

HRESULT CKVProjectData::put_DoCompression(VARIANT_BOOL newVal)
{
    return Put(m_settings.doCompression, newVal != VARIANT_FALSE, Undo, Fires(68));
}

HRESULT CKVProjectData::put_MenuLess(VARIANT_BOOL newVal)
{
    return Put(m_settings.menuLess, newVal == VARIANT_TRUE);
}

HRESULT CKVProjectData::SetSaveThemeMode(LONG mode)
{
    SharedEffectState().saveThemeMode = mode;
    return S_OK;
}

} // namespace kv
