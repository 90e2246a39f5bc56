#pragma once
// The host's importer of project files of an older format.

#include "platform/automation/Members.h"

struct IQ71ProjectImport : IUnknown {
    static constexpr GUID IID = "c1af4465-06f1-42fc-a101-0f154a9f2968"_guid;
    using Base = IUnknown;

    /// Fills the project from the document element of a project file of versions 700 to 799.
    virtual HRESULT ImportXML(IUnknown* pDocElement, IUnknown* pKVProject) = 0;
};

template <>
struct kv::InterfaceTable<IQ71ProjectImport> {
    static constexpr auto members =
        Members(Method<&IQ71ProjectImport::ImportXML>("ImportXML", 0x1, "pDocElement", "pKVProject"));
};
