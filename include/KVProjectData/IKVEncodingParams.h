#pragma once
// How a project's, a title's or a menu's video, audio and subpictures are to be encoded.
//
// While a set follows the project, its getters read the project's values and its setters return
// KV_E_FOLLOWS_PROJECT. Any 32-bit value is stored. Getters return E_POINTER for a null out-pointer, setters
// KV_E_LOCKED for a locked object.

#include "KVProjectData/Enumerations.h"
#include "platform/automation/Members.h"

struct IKVEncodingParams : IDispatch {
    static constexpr GUID IID = "3f0c9931-918c-40bf-9670-c342c6cce996"_guid;
    using Base = IDispatch;
    virtual HRESULT get_VideoResolution(VideoResolution* pVal) = 0;
    virtual HRESULT put_VideoResolution(VideoResolution newVal) = 0;

    /// A title's set reads and writes the ratio of the title's production, where there is one: a change is then the
    /// production's, and undone with its undo block (IKVProjectData::BeginStoryboardUndo). Neither blocked nor followed
    /// by SyncToProject.
    virtual HRESULT get_AspectRatio(AspectRatio* pVal) = 0;
    virtual HRESULT put_AspectRatio(AspectRatio newVal) = 0;
    virtual HRESULT get_VideoFormat(VideoFormat* pVal) = 0;
    virtual HRESULT put_VideoFormat(VideoFormat newVal) = 0;

    /// Bits per second.
    virtual HRESULT get_VideoBitrate(LONG* pVal) = 0;
    virtual HRESULT put_VideoBitrate(LONG newVal) = 0;
    virtual HRESULT get_AudioFormat(AudioFormat* pVal) = 0;
    virtual HRESULT put_AudioFormat(AudioFormat newVal) = 0;

    /// Bits per second.
    virtual HRESULT get_AudioBitrate(LONG* pVal) = 0;
    virtual HRESULT put_AudioBitrate(LONG newVal) = 0;
    virtual HRESULT get_WideDisplayMode(WideDisplayMode* pVal) = 0;
    virtual HRESULT put_WideDisplayMode(WideDisplayMode newVal) = 0;

    /// While it is false, only VARIANT_TRUE changes it: any other value, 1 included, changes nothing and returns S_OK.
    virtual HRESULT get_VBREncoding(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_VBREncoding(VARIANT_BOOL newVal) = 0;

    /// Changes as VBREncoding does.
    virtual HRESULT get_TwoPassEncoding(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_TwoPassEncoding(VARIANT_BOOL newVal) = 0;

    /// Follow the project's set. KV_E_CANNOT_FOLLOW_PROJECT for the project's own set and for one that is
    /// not in a project.
    virtual HRESULT get_SyncToProject(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_SyncToProject(VARIANT_BOOL newVal) = 0;
    virtual HRESULT get_SubpictureFormat(SubpictureFormat* pVal) = 0;
    virtual HRESULT put_SubpictureFormat(SubpictureFormat newVal) = 0;
    virtual HRESULT get_AudioChannels(LONG* pVal) = 0;
    virtual HRESULT put_AudioChannels(LONG newVal) = 0;
};

template <>
struct kv::InterfaceTable<IKVEncodingParams> {
    static constexpr auto members = Members(
        GetPut<&IKVEncodingParams::get_VideoResolution, &IKVEncodingParams::put_VideoResolution>("VideoResolution",
                                                                                                 0x64),
        GetPut<&IKVEncodingParams::get_AspectRatio, &IKVEncodingParams::put_AspectRatio>("AspectRatio", 0x65),
        GetPut<&IKVEncodingParams::get_VideoFormat, &IKVEncodingParams::put_VideoFormat>("VideoFormat", 0x6a),
        GetPut<&IKVEncodingParams::get_VideoBitrate, &IKVEncodingParams::put_VideoBitrate>("VideoBitrate", 0x66),
        GetPut<&IKVEncodingParams::get_AudioFormat, &IKVEncodingParams::put_AudioFormat>("AudioFormat", 0x67),
        GetPut<&IKVEncodingParams::get_AudioBitrate, &IKVEncodingParams::put_AudioBitrate>("AudioBitrate", 0x68),
        GetPut<&IKVEncodingParams::get_WideDisplayMode, &IKVEncodingParams::put_WideDisplayMode>("WideDisplayMode",
                                                                                                 0x69),
        GetPut<&IKVEncodingParams::get_VBREncoding, &IKVEncodingParams::put_VBREncoding>("VBREncoding", 0x6b),
        GetPut<&IKVEncodingParams::get_TwoPassEncoding, &IKVEncodingParams::put_TwoPassEncoding>("TwoPassEncoding",
                                                                                                 0x6c),
        GetPut<&IKVEncodingParams::get_SyncToProject, &IKVEncodingParams::put_SyncToProject>("SyncToProject", 0x6d),
        GetPut<&IKVEncodingParams::get_SubpictureFormat, &IKVEncodingParams::put_SubpictureFormat>("SubpictureFormat",
                                                                                                   0x6e),
        GetPut<&IKVEncodingParams::get_AudioChannels, &IKVEncodingParams::put_AudioChannels>("AudioChannels", 0x6f));
};
