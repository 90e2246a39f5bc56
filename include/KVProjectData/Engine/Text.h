#pragma once
// The text plug-in: lays out the rich text of a parameter document, measures and draws it.

#include "platform/automation/SafeArray.h"
#include "platform/com/Unknown.h"

#include <array>

inline constexpr CLSID CLSID_ZXTextPlugIn = "face348e-03d6-4f44-8ec6-065d64a91bfe"_guid;

/// The text plug-ins of older documents, whose texts the current one shows.
inline constexpr std::array<CLSID, 7> kLegacyTextPlugIns{
    "d120d162-5c93-4497-a9c2-352f2c9bbc92"_guid, "46550a37-e439-46f1-9427-2e24aa0ea2af"_guid,
    "21a1b882-20de-44ac-9cde-f9533e0eb7bd"_guid, "e64c4443-4ca0-4053-9e5a-82cf122aa869"_guid,
    "64f59584-341c-457a-8e7c-927c2b7a0215"_guid, "51c07427-2d00-4489-a4c1-7f637a050bfa"_guid,
    "0c3470e7-ed8c-4e0c-831b-abaa91f7fe2d"_guid,
};

/// The parameter document holds no text: no "plugin_data" with an "html" that has a "body".
inline constexpr HRESULT ZXE_E_NO_TEXT = MakeResult(0xC2000018);

/// A place in the frame, which runs from -1 to 1 on both axes, y upwards.
struct ZXTextPoint {
    double x;
    double y;
};

/// Text is made of the elements "p" (a paragraph; attribute "align": "left", "center", "right"; "justify" is as left,
/// since lines break at "br" and paragraphs alone), "br", "font", "b", "i" and "u"; of others the content counts. A
/// "font" tells "face", "fontHeight" and "color", and where glyphs have an edge or a shadow, "edgeColor", "edgeWidth",
/// "shadowColor" and "shadowOffset", to the right and below. Defaults are a white Arial of height 24 at the left, and
/// an edge of 2 and a shadow of 3 where it has a colour. Lengths count 480ths of the frame's height; heights go from 1
/// to 1,000, the others to 100. A face that is not installed is shown by DejaVu Sans. A colour is a name of HTML 4,
/// "#RRGGBBTT", or letters with two digits each, such as "RffG80T00"; T is transparency. A placeholder for
/// an empty text shows nothing. TextMarkup.h has both.
///
/// The text's box is as wide as its widest line and stands in the middle of the frame. Texts end after 100,000
/// characters and 10,000 pieces. Calls may come on any thread.
struct IZXTextPlugIn : IUnknown {
    static constexpr GUID IID = "ee0ebcd1-8d2f-4a27-bbf0-4af979e4e0f3"_guid;
    using Base = IUnknown;

    /// The frame in pixels, of 1 to 16,384 on a side, and two matrices of 16 numbers, row by row: a point of the frame,
    /// as the row (x, y, 0, 1), is multiplied by the first, then by the second. E_INVALIDARG for other sizes, and for
    /// numbers that are not finite.
    virtual HRESULT SetUp(ULONG ulWidth, ULONG ulHeight, const double* pdFirst, const double* pdSecond) = 0;

    /// Reads an element "plugin_data"; nothing of it is kept. ZXE_E_NO_TEXT leaves the text that was there.
    virtual HRESULT SetText(IUnknown* pPlugInData) = 0;

    /// The corners of the text's box after both matrices: top left, bottom left, bottom right, top right; four points.
    /// ZXE_E_NOT_OPEN before `SetUp`, ZXE_E_NO_TEXT before `SetText`, E_INVALIDARG when a matrix sends a corner to
    /// infinity.
    virtual HRESULT GetCorners(ZXTextPoint* pCorners) = 0;

    /// The frame with the text on transparent ground, as bytes: rows of `*pulStride` bytes, the top one first, and a
    /// pixel of blue, green, red and alpha, the colours multiplied by alpha. The matrices' perspective is left out.
    /// Results as those of `GetCorners`.
    virtual HRESULT Draw(ULONG* pulStride, SAFEARRAY** ppPixels) = 0;
};
