#include "KVProjectData/project/ProjectData.h"

#include "KVProjectData/Engine.h"
#include "KVProjectData/titles/Title.h"
#include "SbdUtils/EngineCalls.h"
#include "platform/com/Activation.h"

#include <cmath>

namespace kv {
namespace {

/// The property ID by which a change of the dirty flag is told.
constexpr DISPID kIsDirty = 11;

/// Titles of these types have a production that tells whether it was modified.
constexpr ULONG kTypesWithProduction = TitleType_Normal | TitleType_FirstPlay;

constexpr EngineCalls kEngine("KVProjectData");

} // namespace

HRESULT CKVProjectData::FireEvent(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c)
{
    const bool carriesText = event == EVENT_ProjectDirectoryChanged;
    return Post(event, a, b, carriesText ? 0 : c, carriesText ? reinterpret_cast<BSTR>(c) : nullptr);
}

void CKVProjectData::FirePropertyChanged(DISPID propId)
{
    FireEvent(EVENT_VolumePropChanged, propId, 0, 0);
}

void CKVProjectData::SetModified(bool)
{
    if (!m_dirty && !m_dirty.exchange(true)) FirePropertyChanged(kIsDirty);
}

HRESULT CKVProjectData::Dispatch(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c)
{
    if (event == kHeartbeat) {
        m_events.Tick();
        return S_OK;
    }
    const HRESULT result = m_events.Tell(event, a, b, c);
    if (event == EVENT_TitleAdded) MeasureFirstTitle();
    return result;
}

void CKVProjectData::MeasureFirstTitle()
{
    LONG count = 0;
    ComPtr<IKVTitle> title;
    Bstr source;
    get_TitleCount(&count);
    if (count != 1 || FAILED(GetTitle(1, title.Put())) || FAILED(title->get_Source(source.Put())) || source.Empty()) {
        return;
    }
    ComPtr<IZXMediaInformation> media;
    if (FAILED(CreateInstance(CLSID_ZXMediaInformation, media)) || FAILED(media->Open(source.Get()))) return;
    ULONG width = 0;
    ULONG height = 0;
    double frameRate = 0.0;
    if (FAILED(media->GetVideoProperties(1, 0, &width, &height, &frameRate)) &&
        FAILED(media->GetVideoProperties(0, 0, &width, &height, &frameRate))) {
        return;
    }

    constexpr double kTolerance = 0.222223;
    const bool palRate = std::abs(frameRate - 50.0) <= kTolerance || std::abs(frameRate - 25.0) <= kTolerance;
    const bool ntscSize = width == 720 && height == 480;
    const bool palSize = width == 720 && height == 576;
    put_TVStandard(palSize || (!ntscSize && palRate) ? PAL : NTSC);
    put_FrameRate(frameRate);
}

template <class Visit>
void CKVProjectData::ForEachProduction(Visit&& visit)
{
    for (LONG i = 0; i < m_titles.ChildCount(); ++i) {
        auto* title = static_cast<CKVTitle*>(m_titles.GetChild(i));
        if (!(title->Types() & kTypesWithProduction)) continue;
        if (const auto data = title->ProductionData()) visit(*data);
    }
}

HRESULT CKVProjectData::get_IsDirty(VARIANT_BOOL* pVal)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!pVal) return kEngine.NullArgument("pVal");
        ForEachProduction([this](IZXEProductionData& production) {
            ULONG flags = 0;
            const HRESULT asked = kEngine.Checked(production.get_Flags(&flags), "get_Flags()");
            if (SUCCEEDED(asked) && (flags & ZXE_PRODUCTION_MODIFIED)) m_dirty = true;
        });
        *pVal = m_dirty ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT CKVProjectData::ClearDirtyFlag()
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        ForEachProduction(
            [](IZXEProductionData& production) { kEngine.Checked(production.ClearModified(), "ClearModified()"); });
        if (m_dirty.exchange(false)) edit.Changed(kIsDirty);
        return S_OK;
    });
}

HRESULT CKVProjectData::BroadcastMessage(LONG code, LONG param1, LONG param2)
{
    constexpr LONG kMajorChange = 4;
    return Read([&] {
        if (code == kMajorChange) {
            FireEvent(EVENT_MajorProjectChange, 0, 0, 0);
        } else {
            FireEvent(EVENT_MessageBroadcast, code, param1, param2);
        }
        return S_OK;
    });
}

HRESULT CKVProjectData::EnableHeartBeatEvent(VARIANT_BOOL bEnable)
{
    m_events.EnableHeartbeat(bEnable != VARIANT_FALSE);
    return S_OK;
}

} // namespace kv
