#pragma once
// The interfaces of the object model itself.

#include "platform/com/BaseTypes.h"

/// Every interface names its identity as `IID` and the interface it extends as `Base`.
struct IUnknown {
    static constexpr GUID IID = "00000000-0000-0000-c000-000000000046"_guid;

    /// Gives a counted reference in `*out`, or sets it to null and returns E_NOINTERFACE.
    virtual HRESULT QueryInterface(REFIID iid, void** out) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;
};

struct IClassFactory : IUnknown {
    static constexpr GUID IID = "00000001-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    /// With `outer`, creates an inner object of an aggregate; `iid` must then be IUnknown's.
    virtual HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** out) = 0;

    /// Keeps the server library loaded while the lock count is above zero.
    virtual HRESULT LockServer(BOOL lock) = 0;
};

/// Leads to an object as long as it lives, and does not keep it alive.
struct IWeakReference : IUnknown {
    static constexpr GUID IID = "00000037-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    /// A counted reference to the object, from any thread; S_OK with null once its last reference is gone.
    virtual HRESULT Resolve(REFIID iid, void** object) = 0;
};

/// Every object answers for it.
struct IWeakReferenceSource : IUnknown {
    static constexpr GUID IID = "00000038-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    virtual HRESULT GetWeakReference(IWeakReference** reference) = 0;
};

struct IConnectionPointContainer;
struct IEnumConnections;
struct IEnumConnectionPoints;

struct IConnectionPoint : IUnknown {
    static constexpr GUID IID = "b196b286-bab4-101a-b69c-00aa00341d07"_guid;
    using Base = IUnknown;

    virtual HRESULT GetConnectionInterface(GUID* iid) = 0;
    virtual HRESULT GetConnectionPointContainer(IConnectionPointContainer** container) = 0;
    virtual HRESULT Advise(IUnknown* sink, DWORD* cookie) = 0;
    virtual HRESULT Unadvise(DWORD cookie) = 0;
    virtual HRESULT EnumConnections(IEnumConnections** connections) = 0;
};

struct IConnectionPointContainer : IUnknown {
    static constexpr GUID IID = "b196b284-bab4-101a-b69c-00aa00341d07"_guid;
    using Base = IUnknown;

    virtual HRESULT EnumConnectionPoints(IEnumConnectionPoints** points) = 0;
    virtual HRESULT FindConnectionPoint(REFIID iid, IConnectionPoint** point) = 0;
};

/// One connection; `pUnk` carries a reference that the receiver releases.
struct CONNECTDATA {
    IUnknown* pUnk;
    DWORD dwCookie;
};

struct IEnumConnections : IUnknown {
    static constexpr GUID IID = "b196b287-bab4-101a-b69c-00aa00341d07"_guid;
    using Base = IUnknown;

    virtual HRESULT Next(ULONG count, CONNECTDATA* items, ULONG* fetched) = 0;
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumConnections** copy) = 0;
};

struct IEnumConnectionPoints : IUnknown {
    static constexpr GUID IID = "b196b285-bab4-101a-b69c-00aa00341d07"_guid;
    using Base = IUnknown;

    virtual HRESULT Next(ULONG count, IConnectionPoint** items, ULONG* fetched) = 0;
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumConnectionPoints** copy) = 0;
};
