#pragma once
// A title: one video programme of the disc.
//
// Getters return E_POINTER for a null out-pointer; strings handed out are the caller's to free. Setters
// return KV_E_LOCKED for a locked title. A title also answers for IKVEncodingParams, IKVCommandList and
// IKVLocking.

#include "KVProjectData/Enumerations.h"
#include "platform/automation/Members.h"

struct IKVProjectData;

struct IKVTitle : IDispatch {
    static constexpr GUID IID = "f1260ebc-7d56-4b56-b714-dc919b27dbdf"_guid;
    using Base = IDispatch;

    /// Unique in the process; kept in the document.
    virtual HRESULT get_ID(LONG* pVal) = 0;

    /// The title's type: TitleTypes.
    virtual HRESULT get_Tag(ULONG* pVal) = 0;
    virtual HRESULT put_Tag(ULONG newVal) = 0;

    /// The source moniker. Not an undoable change, and no event.
    virtual HRESULT get_Source(BSTR* pVal) = 0;
    virtual HRESULT put_Source(BSTR newVal) = 0;

    /// Seconds that each picture of a slideshow title stands; E_INVALIDARG below 0.
    virtual HRESULT get_StillWaitTime(LONG* pVal) = 0;
    virtual HRESULT put_StillWaitTime(LONG newVal) = 0;

    /// TitleFlags.
    virtual HRESULT get_Flags(ULONG* pVal) = 0;
    virtual HRESULT put_Flags(ULONG newVal) = 0;

    /// The title's own dirty flag; setting it makes the project dirty, too.
    virtual HRESULT get_IsDirty(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsDirty(VARIANT_BOOL newVal) = 0;

    /// One-based index on the disc, 0 when not assigned; E_INVALIDARG below 0.
    virtual HRESULT get_DiscIndex(LONG* pVal) = 0;
    virtual HRESULT put_DiscIndex(LONG newVal) = 0;

    /// Null allowed. No event.
    virtual HRESULT get_Label(BSTR* pVal) = 0;
    virtual HRESULT put_Label(BSTR newVal) = 0;

    /// Seconds.
    virtual HRESULT get_VOBDuration(ULONG* pVal) = 0;
    virtual HRESULT put_VOBDuration(ULONG newVal) = 0;

    /// The size of a VOB title. E_INVALIDARG unless finite.
    virtual HRESULT get_VOBSize(double* pVal) = 0;
    virtual HRESULT put_VOBSize(double newVal) = 0;

    /// The production of the storyboard engine, created on first use. A failure to create, initialise or connect it is
    /// returned; one that could not be connected stays with the title all the same, and the next call hands it out. A
    /// refused setting is only reported.
    virtual HRESULT GetProduction(IUnknown** ppProduction) = 0;

    /// Replaces the production; the old one is closed. E_POINTER for null, E_INVALIDARG for a title or a project. When
    /// the old one cannot be left, its failure is returned and it stays. When the new one cannot be connected, that
    /// failure is returned and the new one stays, without its events.
    virtual HRESULT SetProduction(IUnknown* pProduction) = 0;

    /// Null and S_FALSE for a title that is in no project.
    virtual HRESULT GetProject(IKVProjectData** ppProject) = 0;
    virtual HRESULT get_IsResolved(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsResolved(VARIANT_BOOL newVal) = 0;

    /// The first source file of the production, which is created on first use. Left untouched when there is none, and
    /// when the production's sources are no strings. Failures of the engine are returned.
    virtual HRESULT GetSourceFromProd(BSTR* pbstrSource) = 0;
};

template <>
struct kv::InterfaceTable<IKVTitle> {
    static constexpr auto members =
        Members(Get<&IKVTitle::get_ID>("ID", 0x1), GetPut<&IKVTitle::get_Tag, &IKVTitle::put_Tag>("Tag", 0x2),
                GetPut<&IKVTitle::get_Source, &IKVTitle::put_Source>("Source", 0xc8),
                GetPut<&IKVTitle::get_StillWaitTime, &IKVTitle::put_StillWaitTime>("StillWaitTime", 0xca),
                GetPut<&IKVTitle::get_Flags, &IKVTitle::put_Flags>("Flags", 0x3),
                GetPut<&IKVTitle::get_IsDirty, &IKVTitle::put_IsDirty>("IsDirty", 0xb),
                GetPut<&IKVTitle::get_DiscIndex, &IKVTitle::put_DiscIndex>("DiscIndex", 0xc9),
                GetPut<&IKVTitle::get_Label, &IKVTitle::put_Label>("Label", 0x4),
                GetPut<&IKVTitle::get_VOBDuration, &IKVTitle::put_VOBDuration>("VOBDuration", 0xcc),
                GetPut<&IKVTitle::get_VOBSize, &IKVTitle::put_VOBSize>("VOBSize", 0xcd),
                Method<&IKVTitle::GetProduction>("GetProduction", 0x7, "ppProduction"),
                Method<&IKVTitle::SetProduction>("SetProduction", 0xcb, "pProduction"),
                Method<&IKVTitle::GetProject>("GetProject", 0x8, "ppProject"),
                GetPut<&IKVTitle::get_IsResolved, &IKVTitle::put_IsResolved>("IsResolved", 0xce),
                Method<&IKVTitle::GetSourceFromProd>("GetSourceFromProd", 0xcf, "pbstrSource"));
};

// The member table hands out projects, so their interface must be known, too.
#include "KVProjectData/IKVProjectData.h"
