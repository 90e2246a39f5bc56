#pragma once
// Media files: what they hold, and their pictures.
//
// Times are seconds. Strings and arrays handed out are the caller's to free. A null out-pointer is E_POINTER; the
// other out-pointers of the call are set to null or 0 even when it fails.

#include "platform/automation/SafeArray.h"
#include "platform/com/Unknown.h"

inline constexpr CLSID CLSID_ZXMediaInformation = "3fbb89ae-c1df-41ea-bf22-aadfe3615121"_guid;

/// Nothing is open: a production that is not initialised or is closed, media information without a source.
inline constexpr HRESULT ZXE_E_NOT_OPEN = MakeResult(0xC2000010);
/// The source cannot be opened, or holds no media that can be read.
inline constexpr HRESULT ZXE_E_NOT_MEDIA = MakeResult(0xC2000014);
/// The media has no stream of that kind and index.
inline constexpr HRESULT ZXE_E_NO_STREAM = MakeResult(0xC2000015);
/// The media has a picture stream, but no picture can be read from it in reasonable time.
inline constexpr HRESULT ZXE_E_NO_FRAME = MakeResult(0xC2000016);

/// The kinds of streams that IZXMediaInformation tells apart.
inline constexpr LONG ZXM_STREAM_PICTURE = 0;
inline constexpr LONG ZXM_STREAM_VIDEO = 1;

/// Looks into a media file.
struct IZXMediaInformation : IUnknown {
    static constexpr GUID IID = "3a47b852-5195-4fd5-b833-9b2989c1f167"_guid;
    using Base = IUnknown;

    /// Reads what kind of media a local file is; either separator is understood. What was opened before is
    /// forgotten, also on failure. E_INVALIDARG for an empty name, ZXE_E_NOT_MEDIA for anything that is not
    /// a readable media file.
    virtual HRESULT Open(BSTR bstrSource) = 0;

    /// Kind ZXM_STREAM_VIDEO counts the streams of moving pictures from 0, ZXM_STREAM_PICTURE still pictures,
    /// too. Pixels as stored, of a video that is shown turned by a
    /// quarter as shown; and frames per second: 0 for a still picture. ZXE_E_NOT_OPEN before a successful `Open`,
    /// ZXE_E_NO_STREAM when there is no such stream.
    virtual HRESULT GetVideoProperties(LONG lKind, LONG lIndex, ULONG* pulWidth, ULONG* pulHeight,
                                       double* pdFrameRate) = 0;

    /// Seconds; 0 for a still picture and where it is not known. ZXE_E_NOT_OPEN before a successful `Open`.
    virtual HRESULT get_Duration(double* pdSeconds) = 0;
};

/// The pictures of the source that IZXMediaInformation has open: every media information object offers it. The file
/// stays open, so that its pictures can be read even when its name is gone.
struct IZXMediaFrames : IUnknown {
    static constexpr GUID IID = "858d47ea-2812-4c5c-9758-d95f04993ce8"_guid;
    using Base = IUnknown;

    /// Width to height of the picture as it is shown: pixels that are not square and turned videos are considered.
    /// ZXE_E_NOT_OPEN before a successful `Open`, ZXE_E_NO_STREAM for media without pictures.
    virtual HRESULT get_AspectRatio(double* pdAspectRatio) = 0;

    /// The picture that is shown at a time: of a video the last one past its end, the first one before its start; a
    /// still picture shows at all times. It is scaled to the size asked for, without bars and without regard to its
    /// aspect ratio; of a width and a height of which one is 0, that one follows from the aspect ratio, and where both
    /// are 0 the stored pixels stand as they are.
    ///
    /// The array holds bytes, lower bound 0, `*pulHeight` rows of `*pulStride` bytes, the top row first; a pixel is
    /// four of them: blue, green, red, alpha, the colours multiplied by alpha.
    ///
    /// E_INVALIDARG for a time that is negative or not finite, and for sizes above 16,384; ZXE_E_NOT_OPEN,
    /// ZXE_E_NO_STREAM as above, ZXE_E_NO_FRAME when none can be read.
    virtual HRESULT GetFrame(double dSeconds, ULONG ulWidth, ULONG ulHeight, ULONG* pulWidth, ULONG* pulHeight,
                             ULONG* pulStride, SAFEARRAY** ppPixels) = 0;
};
