#pragma once
// The sound of a production: background audio, and the sound of its panels and effects.
//
// A background audio answers for ISubObject and IAudioProps, and for ISourceFile when it is a file, for ISmartAudio
// when it is a moniker. The sound of a panel or an effect, which INativeInfo hands out, answers for ISubObject and
// IAudioProps.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"

/// Kind of IEditData::AddProductionAudio and IProductionObjects::GetObject.
inline constexpr LONG ZXE_KIND_BACKGROUND_AUDIO = 1;

/// A background audio without a file. A moniker begins with a scheme: two or more letters, digits, "+", "-" or ".", the
/// first of them a letter, and a colon; such as "title:3". What the host plays for it is the host's matter.
struct ISmartAudio : IUnknown {
    static constexpr GUID IID = "843c1183-d66c-4d9f-a7e0-5e9bb971d6c2"_guid;
    using Base = IUnknown;

    /// The caller frees the string.
    virtual HRESULT get_Moniker(BSTR* pbstrMoniker) = 0;
};

/// How a sound is played. Values are finite and not negative, else E_INVALIDARG. Setting is ZXE_E_NOT_OPEN while the
/// production is not in use. A null out-pointer is E_POINTER.
struct IAudioProps : IUnknown {
    static constexpr GUID IID = "8cb254dd-1119-4cfb-8330-0daf40e1b474"_guid;
    using Base = IUnknown;

    /// A factor; 1 at first.
    virtual HRESULT get_Level(double* pdLevel) = 0;
    virtual HRESULT put_Level(double dLevel) = 0;

    /// Seconds; 0.1 at first, which only keeps the sound from clicking.
    virtual HRESULT get_FadeIn(double* pdSeconds) = 0;
    virtual HRESULT put_FadeIn(double dSeconds) = 0;
    virtual HRESULT get_FadeOut(double* pdSeconds) = 0;
    virtual HRESULT put_FadeOut(double dSeconds) = 0;

    /// Factors of the level between the fades, at their inner ends; 1 at first.
    virtual HRESULT get_FadeInGain(double* pdGain) = 0;
    virtual HRESULT put_FadeInGain(double dGain) = 0;
    virtual HRESULT get_FadeOutGain(double* pdGain) = 0;
    virtual HRESULT put_FadeOutGain(double dGain) = 0;
};
