#pragma once
// Importers, which make projects of files of other formats.
//
// Their classes stand in the category CATID_KVProjectImport (Identities.h), by which a host finds them. One that tells
// of its progress and its errors is a connection point container with a point for IKVProjectImportEvents.

#include "platform/automation/Members.h"
#include "platform/automation/Variant.h"

struct IKVProjectImport : IUnknown {
    static constexpr GUID IID = "3e5d2b8c-6a0e-4b43-9f57-1c8e7f0d4a92"_guid;
    using Base = IUnknown;

    /// Sets 1 where the importer can read the file, or the folder, of that name, else 0.
    virtual HRESULT IsLoadable(BSTR bstrFileName, LONG* pbIsLoadable) = 0;

    /// Brings the file into a project. The folders say where catalogue data and movies are found or put; both may be
    /// null.
    virtual HRESULT Import(BSTR bstrFileName, IUnknown* pUnkProjectData, BSTR bstrCatalogDir,
                           BSTR bstrMovieDirectory) = 0;
};

/// Implemented by the caller of an importer. A callback that fails cancels the import, which then returns that result.
struct IKVProjectImportEvents : IUnknown {
    static constexpr GUID IID = "8c0a7d46-2f1b-4f6a-a3d5-0e9b6c4f7d21"_guid;
    using Base = IUnknown;

    /// Steps count from 1; percent of the current step and of the whole import.
    virtual HRESULT ReportProgress(LONG lCurrentStep, LONG lTotalSteps, LONG lCurrPct, LONG lTotalPct) = 0;

    /// An error that leaves out a part of the import, with a text for a person or with a value: the name of the file
    /// that is left out.
    virtual HRESULT ReportErrorMsg(HRESULT hError, BSTR bstrMsg) = 0;
    virtual HRESULT ReportError(HRESULT hError, VARIANT varContext) = 0;
};

template <>
struct kv::InterfaceTable<IKVProjectImport> {
    static constexpr auto members =
        Members(Method<&IKVProjectImport::IsLoadable>("IsLoadable", 0x1, "bstrFileName", "pbIsLoadable"),
                Method<&IKVProjectImport::Import>("Import", 0x2, "bstrFileName", "pUnkProjectData", "bstrCatalogDir",
                                                  "bstrMovieDirectory"));
};

template <>
struct kv::InterfaceTable<IKVProjectImportEvents> {
    static constexpr auto members =
        Members(Method<&IKVProjectImportEvents::ReportProgress>("ReportProgress", 0x1, "lCurrentStep", "lTotalSteps",
                                                                "lCurrPct", "lTotalPct"),
                Method<&IKVProjectImportEvents::ReportErrorMsg>("ReportErrorMsg", 0x2, "hError", "bstrMsg"),
                Method<&IKVProjectImportEvents::ReportError>("ReportError", 0x3, "hError", "varContext"));
};
