#pragma once
// The encoding parameters of a project, a title or a menu.

#include "KVProjectData/IKVEncodingParams.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "KVProjectData/tree/Properties.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

namespace kv {

/// The aspect ratio of an owner's production, which stands for the one of its encoding parameters.
class ProductionAspect {
public:
    /// AspectRatio_None without a production, or when its ratio cannot be read.
    virtual AspectRatio AspectFromProduction() = 0;
    /// S_FALSE without a production.
    virtual HRESULT AspectToProduction(AspectRatio aspect) = 0;

protected:
    ~ProductionAspect() = default;
};

class CKVEncodingParams final : public CProjectNode, public Object<Dual<IKVEncodingParams>> {
public:
    /// `production` is a title's; it outlives this object.
    explicit CKVEncodingParams(IUnknown* outer, ProductionAspect* production = nullptr)
        : CProjectNode(typeEncParams), Object(outer), m_production(production)
    {
    }

    KV_PROPERTY(VideoResolution, VideoResolution, &Values::videoResolution, Fires(100))
    HRESULT get_AspectRatio(AspectRatio* pVal) override;
    HRESULT put_AspectRatio(AspectRatio newVal) override;
    KV_GETTER(VideoFormat, VideoFormat, &Values::videoFormat)
    HRESULT put_VideoFormat(VideoFormat newVal) override;
    KV_PROPERTY(LONG, VideoBitrate, &Values::videoBitrate, Fires(102))
    KV_PROPERTY(AudioFormat, AudioFormat, &Values::audioFormat, Fires(103))
    KV_PROPERTY(LONG, AudioBitrate, &Values::audioBitrate, Fires(104))
    KV_PROPERTY(WideDisplayMode, WideDisplayMode, &Values::wideDisplayMode, Fires(105))
    KV_PROPERTY(VARIANT_BOOL, VBREncoding, &Values::vbr, Fires(107))
    KV_PROPERTY(VARIANT_BOOL, TwoPassEncoding, &Values::twoPass, Fires(108))
    KV_GETTER(VARIANT_BOOL, SyncToProject, m_syncToProject)
    HRESULT put_SyncToProject(VARIANT_BOOL newVal) override;
    KV_PROPERTY(SubpictureFormat, SubpictureFormat, &Values::subpictureFormat, Fires(110))
    KV_PROPERTY(LONG, AudioChannels, &Values::audioChannels, Fires(111))

    /// Back to the values of a new set, without undo record and event.
    void Reset();

    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive& archive) override;

protected:
    void FirePropertyChanged(DISPID propId) override;

private:
    /// What a set that follows the project takes from it. Bit rates in bits per second.
    struct Values {
        VideoResolution videoResolution = VideoResolution_Full_D1;
        VideoFormat videoFormat = VideoFormat_MPEG2;
        LONG videoBitrate = 8'000'000;
        AudioFormat audioFormat = AudioFormat_AC3;
        LONG audioBitrate = 224'000;
        WideDisplayMode wideDisplayMode = WideDisplayMode_Letterbox;
        SubpictureFormat subpictureFormat = SubpictureFormat_RLE;
        LONG audioChannels = 2;
        bool vbr = false;
        bool twoPass = false;
    };

    /// The set that the others follow; it follows none.
    bool IsProjectsOwn() const { return Parent() && Parent()->Type() == typeProject; }
    /// The project's own set above this one; empty when the owner stands in no project. A reference that may be the
    /// project's last: it is dropped outside of the section.
    ComPtr<CKVEncodingParams> ProjectSet() const;

    using CProjectNode::Get;
    /// The value in force: the project's while this set follows it.
    template <class Out, class T>
    HRESULT Get(Out* out, T Values::*field)
    {
        ComPtr<CKVEncodingParams> project;
        return Read([&] {
            if (m_syncToProject) project = ProjectSet();
            return project ? project->Get(out, project->m_own.*field) : Get(out, m_own.*field);
        });
    }
    /// KV_E_FOLLOWS_PROJECT while this set follows the project. A value that is in force already changes nothing.
    template <class T>
    HRESULT Put(T Values::*field, T value, Fires fires)
    {
        return Edit([&](EditScope& edit) {
            if (m_syncToProject) return KV_E_FOLLOWS_PROJECT;
            if (m_own.*field == value) return S_OK;
            edit.Record();
            m_own.*field = value;
            edit.Changed(fires.propId);
            return S_OK;
        });
    }
    HRESULT Put(bool Values::*field, VARIANT_BOOL value, Fires fires);

    Values m_own;
    AspectRatio m_aspectRatio = AspectRatio_4x3;
    bool m_syncToProject = false;
    ProductionAspect* const m_production;
};

} // namespace kv
