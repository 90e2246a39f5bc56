#pragma once
// What the panels of a production show.
//
// Times are seconds. Strings handed out are the caller's to free. A null out-pointer is E_POINTER; an out-pointer is
// set to null or 0 even when the call fails.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"

/// A part of a source file, as a panel shows it.
struct ISourceFile : IUnknown {
    static constexpr GUID IID = "65cf5b5c-02cb-4719-b404-d0c8cebf27cf"_guid;
    using Base = IUnknown;

    virtual HRESULT get_FileName(BSTR* pbstrFileName) = 0;
    virtual HRESULT get_InPoint(double* pdSeconds) = 0;

    /// The end of the source when no out point was given; 0 when that is not known.
    virtual HRESULT get_OutPoint(double* pdSeconds) = 0;

    /// Seconds of the whole source; 0 for a still picture and for a source that cannot be read.
    virtual HRESULT get_Length(double* pdSeconds) = 0;
};
