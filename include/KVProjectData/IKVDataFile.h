#pragma once
// A file that the project carries to the disc besides its titles and menus.
//
// Getters return E_POINTER for a null out-pointer; strings handed out are the caller's to free. Setters
// return KV_E_LOCKED for a locked data file.

#include "platform/automation/Members.h"

struct IKVDataFile : IDispatch {
    static constexpr GUID IID = "6caf76a5-7035-48ae-8280-ad3729a6f2e7"_guid;
    using Base = IDispatch;
    virtual HRESULT get_ID(LONG* pVal) = 0;

    /// A path on this machine; KV_E_NO_SOURCE_FILE unless a file or folder exists there.
    virtual HRESULT get_SourcePath(BSTR* pVal) = 0;
    virtual HRESULT put_SourcePath(BSTR newVal) = 0;

    /// Any path, or null.
    virtual HRESULT get_DestPath(BSTR* pVal) = 0;
    virtual HRESULT put_DestPath(BSTR newVal) = 0;

    /// A value of the host's choosing.
    virtual HRESULT get_Tag(ULONG* pVal) = 0;
    virtual HRESULT put_Tag(ULONG newVal) = 0;

    /// Counts one more user; IKVProjectData::RemoveDataFileBySource counts one less.
    virtual HRESULT IncrementUseCount() = 0;
};

template <>
struct kv::InterfaceTable<IKVDataFile> {
    static constexpr auto members =
        Members(Get<&IKVDataFile::get_ID>("ID", 0x1),
                GetPut<&IKVDataFile::get_SourcePath, &IKVDataFile::put_SourcePath>("SourcePath", 0x190),
                GetPut<&IKVDataFile::get_DestPath, &IKVDataFile::put_DestPath>("DestPath", 0x191),
                GetPut<&IKVDataFile::get_Tag, &IKVDataFile::put_Tag>("Tag", 0x2),
                Method<&IKVDataFile::IncrementUseCount>("IncrementUseCount", 0x192));
};
