#pragma once
// Archives with a report, for a host that shows progress: every file service answers for IKVProjectArchive, too.

#include "platform/automation/Members.h"

/// What became of a file that a project names.
KV_ENUM(ArchivedFile, ArchivedFile_Copied = 0, ArchivedFile_InPlace = 1, ArchivedFile_Missing = 2,
        ArchivedFile_NoFile = 3, ArchivedFile_NameTaken = 4, ArchivedFile_NotRead = 5);

/// Implemented by the host. Calls arrive one after the other, on the thread that archives and outside of all sections.
/// A callback that fails cancels the archive, which then returns that result.
struct IKVArchiveEvents : IUnknown {
    static constexpr GUID IID = "0d5a1e0f-8a1c-4a0f-9d7e-53f1b5f0c6a4"_guid;
    using Base = IUnknown;

    /// Before the first file: how many files the project names, each once, and how many bytes are to be copied.
    virtual HRESULT OnStart(LONG lFiles, LONGLONG llBytes) = 0;

    /// While a file is copied, and while the disk writes it: how many bytes of all have been copied.
    virtual HRESULT OnProgress(BSTR bstrSource, LONGLONG llBytes) = 0;

    /// Once for each file, in the order in which they are copied; of files that are synced together, when all of them
    /// are whole. The source is a full path where the file exists; the
    /// copy is where it stands or would have stood, and the bytes are its size. Copied, or InPlace where the project
    /// names a file of the archive folder already: the project names the copy. Else it names what it did: nothing
    /// exists by that name (Missing), what exists is no regular file (NoFile), another file of that name stands in the
    /// archive folder (NameTaken), or the file could not be read, for the reason of `hResult` (NotRead).
    virtual HRESULT OnFile(BSTR bstrSource, BSTR bstrCopy, ArchivedFile outcome, HRESULT hResult, LONGLONG llBytes) = 0;
};

struct IKVProjectArchive : IUnknown {
    static constexpr GUID IID = "6b1f1f0a-3c52-4c1e-8d0b-2b7c0f5e9a13"_guid;
    using Base = IUnknown;

    /// As IKVFileService::Archive. `pEvents` may be null.
    virtual HRESULT ArchiveProject(BSTR bstrFileName, IUnknown* pUnkProject, IKVArchiveEvents* pEvents) = 0;

    /// Tells the events what ArchiveProject would do now, without OnProgress, and changes nothing.
    virtual HRESULT PlanArchive(BSTR bstrFileName, IUnknown* pUnkProject, IKVArchiveEvents* pEvents) = 0;
};

template <>
struct kv::InterfaceTable<IKVArchiveEvents> {
    static constexpr auto members = Members(
        Method<&IKVArchiveEvents::OnStart>("OnStart", 0x1, "lFiles", "llBytes"),
        Method<&IKVArchiveEvents::OnProgress>("OnProgress", 0x2, "bstrSource", "llBytes"),
        Method<&IKVArchiveEvents::OnFile>("OnFile", 0x3, "bstrSource", "bstrCopy", "outcome", "hResult", "llBytes"));
};

template <>
struct kv::InterfaceTable<IKVProjectArchive> {
    static constexpr auto members = Members(
        Method<&IKVProjectArchive::ArchiveProject>("ArchiveProject", 0x1, "bstrFileName", "pUnkProject", "pEvents"),
        Method<&IKVProjectArchive::PlanArchive>("PlanArchive", 0x2, "bstrFileName", "pUnkProject", "pEvents"));
};
