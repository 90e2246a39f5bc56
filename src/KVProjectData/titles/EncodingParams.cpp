#include "KVProjectData/titles/EncodingParams.h"

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"

namespace kv {

CKVEncodingParams* CKVEncodingParams::ProjectSet() const
{
    const CProjectNode* owner = Parent();
    const CProjectNode* list = owner ? owner->Parent() : nullptr;
    const CProjectNode* project = list ? list->Parent() : nullptr;
    if (!project || project->Type() != typeProject) return nullptr;
    return static_cast<CKVEncodingParams*>(project->FindChildByTypeAndName(typeEncParams, {}));
}

template <class Out, class T>
HRESULT CKVEncodingParams::GetEffective(Out* out, T Values::*field)
{
    return Read([&] {
        CKVEncodingParams* project = m_syncToProject ? ProjectSet() : nullptr;
        return project ? project->Get(out, project->m_own.*field) : Get(out, m_own.*field);
    });
}

template <class T>
HRESULT CKVEncodingParams::PutOwn(T Values::*field, T value, DISPID propId)
{
    return Edit([&](EditScope& edit) {
        if (m_syncToProject) return KV_E_FOLLOWS_PROJECT;
        if (m_own.*field == value) return S_OK;
        edit.Record();
        m_own.*field = value;
        edit.Changed(propId);
        return S_OK;
    });
}

HRESULT CKVEncodingParams::PutOwnFlag(bool Values::*field, VARIANT_BOOL value, DISPID propId)
{
    return Edit([&](EditScope& edit) {
        if (m_syncToProject) return KV_E_FOLLOWS_PROJECT;
        // Only -1 counts as true when a change is looked for; any value but 0 is stored as true.
        if ((value == VARIANT_TRUE) == m_own.*field) return S_OK;
        edit.Record();
        m_own.*field = value != VARIANT_FALSE;
        edit.Changed(propId);
        return S_OK;
    });
}

HRESULT CKVEncodingParams::get_VideoResolution(VideoResolution* pVal)
{
    return GetEffective(pVal, &Values::videoResolution);
}

HRESULT CKVEncodingParams::put_VideoResolution(VideoResolution newVal)
{
    return PutOwn(&Values::videoResolution, newVal, 100);
}

HRESULT CKVEncodingParams::get_AspectRatio(AspectRatio* pVal)
{
    return Read([&] {
        if (!pVal) return E_POINTER;
        const AspectRatio aspect = m_production ? m_production->AspectFromProduction() : AspectRatio_None;
        *pVal = aspect != AspectRatio_None ? aspect : m_aspectRatio;
        return S_OK;
    });
}

HRESULT CKVEncodingParams::put_AspectRatio(AspectRatio newVal)
{
    return Edit([&](EditScope& edit) {
        constexpr DISPID kPropId = 101;
        const AspectRatio aspect = m_production ? m_production->AspectFromProduction() : AspectRatio_None;
        if (newVal == (aspect != AspectRatio_None ? aspect : m_aspectRatio)) return S_OK;
        edit.Record();
        HRESULT result = S_OK;
        if (aspect != AspectRatio_None) {
            result = m_production->AspectToProduction(newVal);
        } else {
            m_aspectRatio = newVal;
        }
        edit.Changed(kPropId);
        return result;
    });
}

HRESULT CKVEncodingParams::get_VideoFormat(VideoFormat* pVal)
{
    return GetEffective(pVal, &Values::videoFormat);
}

HRESULT CKVEncodingParams::put_VideoFormat(VideoFormat newVal)
{
    return Edit([&](EditScope& edit) {
        if (m_syncToProject) return KV_E_FOLLOWS_PROJECT;
        // Told even when the value stays the same.
        edit.Record();
        m_own.videoFormat = newVal;
        edit.Changed(106);
        return S_OK;
    });
}

HRESULT CKVEncodingParams::get_VideoBitrate(LONG* pVal)
{
    return GetEffective(pVal, &Values::videoBitrate);
}

HRESULT CKVEncodingParams::put_VideoBitrate(LONG newVal)
{
    return PutOwn(&Values::videoBitrate, newVal, 102);
}

HRESULT CKVEncodingParams::get_AudioFormat(AudioFormat* pVal)
{
    return GetEffective(pVal, &Values::audioFormat);
}

HRESULT CKVEncodingParams::put_AudioFormat(AudioFormat newVal)
{
    return PutOwn(&Values::audioFormat, newVal, 103);
}

HRESULT CKVEncodingParams::get_AudioBitrate(LONG* pVal)
{
    return GetEffective(pVal, &Values::audioBitrate);
}

HRESULT CKVEncodingParams::put_AudioBitrate(LONG newVal)
{
    return PutOwn(&Values::audioBitrate, newVal, 104);
}

HRESULT CKVEncodingParams::get_WideDisplayMode(WideDisplayMode* pVal)
{
    return GetEffective(pVal, &Values::wideDisplayMode);
}

HRESULT CKVEncodingParams::put_WideDisplayMode(WideDisplayMode newVal)
{
    return PutOwn(&Values::wideDisplayMode, newVal, 105);
}

HRESULT CKVEncodingParams::get_VBREncoding(VARIANT_BOOL* pVal)
{
    return GetEffective(pVal, &Values::vbr);
}

HRESULT CKVEncodingParams::put_VBREncoding(VARIANT_BOOL newVal)
{
    return PutOwnFlag(&Values::vbr, newVal, 107);
}

HRESULT CKVEncodingParams::get_TwoPassEncoding(VARIANT_BOOL* pVal)
{
    return GetEffective(pVal, &Values::twoPass);
}

HRESULT CKVEncodingParams::put_TwoPassEncoding(VARIANT_BOOL newVal)
{
    return PutOwnFlag(&Values::twoPass, newVal, 108);
}

HRESULT CKVEncodingParams::get_SyncToProject(VARIANT_BOOL* pVal)
{
    return Get(pVal, m_syncToProject);
}

HRESULT CKVEncodingParams::put_SyncToProject(VARIANT_BOOL newVal)
{
    return Edit([&](EditScope& edit) {
        const CProjectNode* owner = Parent();
        if (!owner || IsProjectsOwn() || !owner->Parent()) return KV_E_CANNOT_FOLLOW_PROJECT;
        edit.Record();
        const bool follow = newVal != VARIANT_FALSE;
        if (m_syncToProject && !follow) {
            // Leaving the project's values changes none of those that are in force.
            if (CKVEncodingParams* project = ProjectSet()) {
                const SectionLock lock(project->Section());
                m_own = project->m_own;
            }
        }
        m_syncToProject = follow;
        edit.Changed(109);
        return S_OK;
    });
}

HRESULT CKVEncodingParams::get_SubpictureFormat(SubpictureFormat* pVal)
{
    return GetEffective(pVal, &Values::subpictureFormat);
}

HRESULT CKVEncodingParams::put_SubpictureFormat(SubpictureFormat newVal)
{
    return PutOwn(&Values::subpictureFormat, newVal, 110);
}

HRESULT CKVEncodingParams::get_AudioChannels(LONG* pVal)
{
    return GetEffective(pVal, &Values::audioChannels);
}

HRESULT CKVEncodingParams::put_AudioChannels(LONG newVal)
{
    return PutOwn(&Values::audioChannels, newVal, 111);
}

void CKVEncodingParams::Reset()
{
    const SectionLock lock(Section());
    m_own = Values{};
    m_aspectRatio = AspectRatio_4x3;
    m_syncToProject = false;
}

void CKVEncodingParams::FirePropertyChanged(DISPID propId)
{
    const CProjectNode* owner = Parent();
    if (!owner) return;
    const DISPID event = owner->Type() == typeTitle ? EVENT_TitleEncodingParamChanged : EVENT_MenuEncodingParamChanged;
    FireEvent(event, owner->ID(), propId, 0);
}

} // namespace kv
