#pragma once
// Project files on disk.
//
// E_POINTER for an object that is not a project. SaveProject and LoadProject drop a leading "file::" of a file name.
//
// A file in the archive folder beside a project file ("Trip_Files" beside "Trip.xml") is written there as a relative
// path ("Trip_Files\a.mpg"), and relative paths that are read are tried from the folder of the file: both can be moved
// together. In memory such a path is a full one after loading.

#include "platform/automation/Members.h"
#include "platform/xml/Dom.h"

struct IKVFileService : IDispatch {
    static constexpr GUID IID = "73f80e52-a369-48b5-a441-4c46f147ecf9"_guid;
    using Base = IDispatch;

    /// Writes the project file; on failure an older file stays as it was. Sets ProjectDirectory. E_INVALIDARG for
    /// an empty name. The productions of the titles stand in the file, too, with what was kept of the file that was
    /// loaded; one whose engine saves none (Engine/Persist.h) is left out.
    virtual HRESULT SaveProject(BSTR bstrFileName, IUnknown* pUnkProject) = 0;

    /// Copies the source files of a project into its archive folder, which becomes its ProjectDirectory, and writes the
    /// project file: those of titles, menus, data files and overlays, and all that productions show, each once. What
    /// names a copy, then names it by a relative path, but for what a production shows, where only the file does. A
    /// file that cannot be read, and one of a name that is taken in the folder, is not copied, and goes by the path
    /// that it had. A copy is whole or not there. E_INVALIDARG for an empty name, KV_E_NO_ARCHIVE_FOLDER; when a copy
    /// or the project file cannot be written, the project and its old file are as they were, and what was made of the
    /// archive is gone. Of a host's own IKVProjectData, behind which no project of the library stands, nothing is
    /// copied and only the project file is written. IKVProjectArchive reports each file.
    virtual HRESULT Archive(BSTR bstrFileName, IUnknown* pUnkProject) = 0;

    /// Replaces the project by a project file, sets ProjectDirectory, and names a project without Label or DisplayName
    /// after the file. KV_E_FILE_DOES_NOT_PARSE, also for one that cannot be read, KV_E_FILE_TOO_OLD (below 700),
    /// E_INVALIDARG (after a message box) for a file that does not exist, E_POINTER for a document without a root,
    /// DISP_E_TYPEMISMATCH for a version that is no number; for the versions 700 to 799 what their importer says, or
    /// REGDB_E_CLASSNOTREG without one. Titles get the productions that the file holds for them. One that cannot be
    /// loaded, for want of an engine or because the engine refuses it, is told to the error reporter, and is kept with
    /// the project until that is cleared.
    virtual HRESULT LoadProject(BSTR bstrFileName, IUnknown* pUnkProject) = 0;

    /// As IKVProjectData::SaveXML and loadXML: the project alone, without the productions of its titles.
    virtual HRESULT PersistToXML(IXMLDOMNode* pRoot, IUnknown* pUnkProject) = 0;
    virtual HRESULT PersistFromXML(IXMLDOMNode* pRoot, IUnknown* pUnkProject) = 0;

    /// Puts the folder in the place of a path variable at the start of the name: "%CONTENT%", "%SKINS%", "%PLUGINS%"
    /// and "%TEMP%", as the registry named them when the service was created. A variable without a folder stays.
    virtual HRESULT ResolveFilePath(BSTR* bstrFileName) = 0;

    /// Puts path variables in the place of their folders.
    virtual HRESULT UnresolveFilePath(BSTR* bstrFileName) = 0;
};

template <>
struct kv::InterfaceTable<IKVFileService> {
    static constexpr auto members =
        Members(Method<&IKVFileService::SaveProject>("SaveProject", 0x1, "bstrFileName", "pUnkProject"),
                Method<&IKVFileService::Archive>("Archive", 0x2, "bstrFileName", "pUnkProject"),
                Method<&IKVFileService::LoadProject>("LoadProject", 0x3, "bstrFileName", "pUnkProject"),
                Method<&IKVFileService::PersistToXML>("PersistToXML", 0x4, "pRoot", "pUnkProject"),
                Method<&IKVFileService::PersistFromXML>("PersistFromXML", 0x5, "pRoot", "pUnkProject"),
                Method<&IKVFileService::ResolveFilePath>("ResolveFilePath", 0x6, InOut("bstrFileName")),
                Method<&IKVFileService::UnresolveFilePath>("UnresolveFilePath", 0x7, InOut("bstrFileName")));
};
