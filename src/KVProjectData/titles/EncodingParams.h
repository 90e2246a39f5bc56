#pragma once
// The encoding parameters of a project, a title or a menu.

#include "KVProjectData/IKVEncodingParams.h"
#include "KVProjectData/persistence/AttributeArchive.h"
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

class CKVEncodingParams final : public ArchivedNode<CKVEncodingParams>, public Object<Dual<IKVEncodingParams>> {
public:
    /// `production` is a title's; it outlives this object.
    explicit CKVEncodingParams(IUnknown* outer, ProductionAspect* production = nullptr)
        : ArchivedNode(typeEncParams), Object(outer), m_production(production)
    {
    }

    HRESULT get_VideoResolution(VideoResolution* pVal) override;
    HRESULT put_VideoResolution(VideoResolution newVal) override;
    HRESULT get_AspectRatio(AspectRatio* pVal) override;
    HRESULT put_AspectRatio(AspectRatio newVal) override;
    HRESULT get_VideoFormat(VideoFormat* pVal) override;
    HRESULT put_VideoFormat(VideoFormat newVal) override;
    HRESULT get_VideoBitrate(LONG* pVal) override;
    HRESULT put_VideoBitrate(LONG newVal) override;
    HRESULT get_AudioFormat(AudioFormat* pVal) override;
    HRESULT put_AudioFormat(AudioFormat newVal) override;
    HRESULT get_AudioBitrate(LONG* pVal) override;
    HRESULT put_AudioBitrate(LONG newVal) override;
    HRESULT get_WideDisplayMode(WideDisplayMode* pVal) override;
    HRESULT put_WideDisplayMode(WideDisplayMode newVal) override;
    HRESULT get_VBREncoding(VARIANT_BOOL* pVal) override;
    HRESULT put_VBREncoding(VARIANT_BOOL newVal) override;
    HRESULT get_TwoPassEncoding(VARIANT_BOOL* pVal) override;
    HRESULT put_TwoPassEncoding(VARIANT_BOOL newVal) override;
    HRESULT get_SyncToProject(VARIANT_BOOL* pVal) override;
    HRESULT put_SyncToProject(VARIANT_BOOL newVal) override;
    HRESULT get_SubpictureFormat(SubpictureFormat* pVal) override;
    HRESULT put_SubpictureFormat(SubpictureFormat newVal) override;
    HRESULT get_AudioChannels(LONG* pVal) override;
    HRESULT put_AudioChannels(LONG newVal) override;

    /// Back to the values of a new set, without undo record and event.
    void Reset();

    IUnknown* Identity() override { return Controlling(); }

    template <class Archive>
    void Attributes(Archive& archive)
    {
        archive.OnlyRead("HDVideoFormat", Enumeration(m_own.videoFormat, kVideoFormatNames));
        archive("VBREncoding", OneOrZero{m_own.vbr});
        archive("aspectRatio", Enumeration(m_aspectRatio, kAspectRatioNames));
        archive("audioBitrate", m_own.audioBitrate);
        archive("audioChannels", m_own.audioChannels);
        archive("audioFormat", Enumeration(m_own.audioFormat, kAudioFormatNames));
        archive("subpictureFormat", Enumeration(m_own.subpictureFormat, kSubpictureFormatNames));
        archive.WriteRead("syncToProject", OneOrZero{m_syncToProject}, [this](const AttributeValue& value) {
            m_syncToProject = value.ToBool() && !IsProjectsOwn();
        });
        archive("twoPassEncoding", OneOrZero{m_own.twoPass});
        archive("videoBitrate", m_own.videoBitrate);
        archive("videoFormat", Enumeration(m_own.videoFormat, kVideoFormatNames));
        archive("videoResolution", Enumeration(m_own.videoResolution, kVideoResolutionNames));
        archive("wideDisplayMode", Enumeration(m_own.wideDisplayMode, kWideDisplayModeNames));
    }

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
    /// The project's own set above this one; null when the owner stands in no project.
    CKVEncodingParams* ProjectSet() const;

    template <class Out, class T>
    HRESULT GetEffective(Out* out, T Values::*field);
    template <class T>
    HRESULT PutOwn(T Values::*field, T value, DISPID propId);
    HRESULT PutOwnFlag(bool Values::*field, VARIANT_BOOL value, DISPID propId);

    Values m_own;
    AspectRatio m_aspectRatio = AspectRatio_4x3;
    bool m_syncToProject = false;
    ProductionAspect* const m_production;
};

} // namespace kv
