#pragma once
// The pictures of a production.

#include "platform/automation/SafeArray.h"
#include "platform/com/Unknown.h"

/// What a production shows, one frame at a time: its panels with crop and fit, then its effects from the lowest layer
/// to the highest. Calls may come on any thread, while others edit.
struct IZXEProductionFrames : IUnknown {
    static constexpr GUID IID = "7ae93170-5163-4b85-a085-b0199d3f16d9"_guid;
    using Base = IUnknown;

    /// The picture at a time; past the end of the production that of its end. Of a width and a height of which one is
    /// 0, that one follows from the production's aspect ratio. Panels stand on black; without panels the ground is
    /// transparent. A source that cannot be read shows nothing.
    ///
    /// The array holds bytes, lower bound 0, `*pulHeight` rows of `*pulStride` bytes, the top row first; a pixel is
    /// four of them: blue, green, red, alpha, the colours multiplied by alpha. The caller frees it.
    ///
    /// E_INVALIDARG for a time that is negative or not finite, for sizes above 16,384, and for 0 by 0.
    virtual HRESULT GetFrame(double dSeconds, ULONG ulWidth, ULONG ulHeight, ULONG* pulWidth, ULONG* pulHeight,
                             ULONG* pulStride, SAFEARRAY** ppPixels) = 0;
};
