#pragma once
// What a storyboard shows and plays as a whole: its length, its background video, its background audio, and the sound
// of both.
//
// A storyboard is an object that answers for IZXEProductionData and IEditData. Times are seconds. Failures are reported
// to the host with the name of what is null or the text of the call that failed. E_POINTER for a null storyboard or
// out-pointer, and for an object of the engine without an interface that is needed; results of the engine pass through.
// An out-value is set to nothing (0, null, false) when the call fails. Calls that find nothing to change give S_FALSE.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"

namespace kv::sbd {

/// 0 while the production cannot tell.
HRESULT GetDuration(IUnknown* pUnkSbd, double* pdDuration);

/// Of the first panel: how long a still picture is shown, or up to where a clip plays, to the middle of its last frame
/// at most. A storyboard without panels lasts that long. The background audio follows.
HRESULT SetDuration(IUnknown* pUnkSbd, double dDuration);

/// The source of the first panel; an empty string when there is none. The caller frees it.
HRESULT GetVideoSource(IUnknown* pUnkSbd, BSTR* pbstrVideoSource);

/// Puts one panel in the place of all that are there. An out point of 0 is the end of the source. Whether the panel's
/// own sound is played is said only where there is background audio, which then follows the new duration. An empty
/// source changes nothing.
HRESULT SetVideoSource(IUnknown* pUnkSbd, BSTR bstrSource, bool bUseSourceAspectRatio, double dinPoint,
                       double dOoutPoint, bool bUseNativeAudio);

/// The file or the moniker; an empty string when there is none. The caller frees it.
HRESULT GetBackgroundAudio(IUnknown* pUnkSbd, BSTR* pbstrAudioSource);

/// Puts one background audio, which lasts as long as the production, in the place of any that is there; an empty source
/// leaves none. Unless told to keep it, the first panel's own sound is then played only where there is no other.
HRESULT SetBackgroundAudio(IUnknown* pUnkSbd, BSTR bstrSource, bool bKeepPanelAudio);

/// Whose sound: reading asks the first panel, writing reaches every panel. E_INVALIDARG for any other.
enum class SoundOf { Panels = 0, BackgroundAudio = 1 };

/// False, 0 and false where there is no such sound.
HRESULT GetMute(IUnknown* pUnkSbd, SoundOf kind, VARIANT_BOOL* pbMute);
HRESULT GetLevel(IUnknown* pUnkSbd, SoundOf kind, double* pdLevel);
/// Whether the sound fades in for longer than it takes to keep it from clicking.
HRESULT GetFadeEnable(IUnknown* pUnkSbd, SoundOf kind, VARIANT_BOOL* pbEnable);

HRESULT PutMute(IUnknown* pUnkSbd, SoundOf kind, VARIANT_BOOL bMute);
HRESULT PutLevel(IUnknown* pUnkSbd, SoundOf kind, double dLevel);
/// Fades over half the sound up to 6 seconds, over 3 seconds of a longer one.
HRESULT PutFadeEnable(IUnknown* pUnkSbd, SoundOf kind, bool bEnable);

} // namespace kv::sbd
