#include "KVProjectData/titles/EncodingParams.h"

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/tree/NodeReference.h"

namespace kv {

void CKVEncodingParams::Attributes(AttributeArchive& archive)
{
    archive.OnlyRead("HDVideoFormat", Enumeration(m_own.videoFormat, kVideoFormatNames));
    archive("VBREncoding", OneOrZero{m_own.vbr});
    archive("aspectRatio", Enumeration(m_aspectRatio, kAspectRatioNames));
    archive("audioBitrate", m_own.audioBitrate);
    archive("audioChannels", m_own.audioChannels);
    archive("audioFormat", Enumeration(m_own.audioFormat, kAudioFormatNames));
    archive("subpictureFormat", Enumeration(m_own.subpictureFormat, kSubpictureFormatNames));
    bool follows = m_syncToProject;
    if (archive("syncToProject", OneOrZero{follows})) m_syncToProject = follows && !IsProjectsOwn();
    archive("twoPassEncoding", OneOrZero{m_own.twoPass});
    archive("videoBitrate", m_own.videoBitrate);
    archive("videoFormat", Enumeration(m_own.videoFormat, kVideoFormatNames));
    archive("videoResolution", Enumeration(m_own.videoResolution, kVideoResolutionNames));
    archive("wideDisplayMode", Enumeration(m_own.wideDisplayMode, kWideDisplayModeNames));
}

ComPtr<CKVEncodingParams> CKVEncodingParams::ProjectSet() const
{
    const SectionLock links(ParentLinks());
    const CProjectNode* owner = Parent();
    const CProjectNode* list = owner ? owner->Parent() : nullptr;
    const CProjectNode* project = list ? list->Parent() : nullptr;
    if (!project || project->Type() != typeProject) return nullptr;
    auto* set = static_cast<CKVEncodingParams*>(project->FindChildByTypeAndName(typeEncParams, {}));
    return NodeReference(*set).Hold() ? ComPtr(set) : nullptr;
}

HRESULT CKVEncodingParams::Put(bool Values::*field, VARIANT_BOOL value, Fires fires)
{
    return Edit([&](EditScope& edit) {
        if (m_syncToProject) return KV_E_FOLLOWS_PROJECT;
        // Only -1 counts as true when a change is looked for; any value but 0 is stored as true.
        if ((value == VARIANT_TRUE) == m_own.*field) return S_OK;
        edit.Record();
        m_own.*field = value != VARIANT_FALSE;
        edit.Changed(fires.propId);
        return S_OK;
    });
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

HRESULT CKVEncodingParams::put_SyncToProject(VARIANT_BOOL newVal)
{
    ComPtr<CKVEncodingParams> project;
    return Edit([&](EditScope& edit) {
        const CProjectNode* owner = Parent();
        if (!owner || IsProjectsOwn() || !owner->Parent()) return KV_E_CANNOT_FOLLOW_PROJECT;
        edit.Record();
        const bool follow = newVal != VARIANT_FALSE;
        if (m_syncToProject && !follow) {
            // Leaving the project's values changes none of those that are in force.
            project = ProjectSet();
            if (project) {
                const SectionLock lock(project->Section());
                m_own = project->m_own;
            }
        }
        m_syncToProject = follow;
        edit.Changed(109);
        return S_OK;
    });
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
