#pragma once
// Objects that know the class they are stored under.

#include "platform/com/Unknown.h"

struct IStream;

struct IPersist : IUnknown {
    static constexpr GUID IID = "0000010c-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    virtual HRESULT GetClassID(CLSID* clsid) = 0;
};

struct IPersistStream : IPersist {
    static constexpr GUID IID = "00000109-0000-0000-c000-000000000046"_guid;
    using Base = IPersist;

    virtual HRESULT IsDirty() = 0;
    virtual HRESULT Load(IStream* stream) = 0;
    virtual HRESULT Save(IStream* stream, BOOL clearDirty) = 0;
    virtual HRESULT GetSizeMax(ULONGLONG* size) = 0;
};
