#pragma once
// The identities of the library and of the classes that a host can create.

#include "platform/com/BaseTypes.h"

/// The type library; also the application ID.
inline constexpr GUID LIBID_KVProjectData = "b459071a-fb8a-4f9e-bf72-c46dca8fbe35"_guid;

inline constexpr CLSID CLSID_KVProjectData = "5a3c1fbd-f9da-4bf3-a816-96a68afe2312"_guid;
inline constexpr CLSID CLSID_KVCommandList = "135d63cf-1293-424c-802a-2e8f96fc5ce8"_guid;
inline constexpr CLSID CLSID_KVEncodingParams = "a4ea3938-d429-4c52-8109-15b0875b0b21"_guid;
inline constexpr CLSID CLSID_KVFileService = "bdfaef42-8c7d-4431-b331-dab129ea3a7b"_guid;
inline constexpr CLSID CLSID_KVTestImporter = "d1b7c2e4-5f3a-4c86-9e07-7a4d2c9b8f15"_guid;

inline constexpr CLSID CLSID_KVMenu = "af13cfbc-af09-4af4-85ab-0fe7e56bc847"_guid;
inline constexpr CLSID CLSID_KVMenuButton = "c7225058-7ff0-4bbb-acd2-5f91f8f4afa5"_guid;
inline constexpr CLSID CLSID_GroupInfoNode = "249fb5b7-2c5f-4d1e-89cd-f32eb7f085a8"_guid;

/// The host's importer of project files of versions 700 to 799; not part of the library, but of its engine.
inline constexpr CLSID CLSID_Q71ProjectImport = "4260ce86-ca96-4d78-ba56-9ee452a5d423"_guid;

/// The category of the classes that answer for IKVProjectImport; kv::ClassesOfCategory lists them. The importer of the
/// library, which takes every file and imports nothing, is not among them.
inline constexpr GUID CATID_KVProjectImport = "a7e3f0d2-94c1-4d7b-8b5e-3f6c1a2d9e08"_guid;

/// Names of the creatable classes that hold from version to version, for CLSIDFromProgID.
inline constexpr const OLECHAR* PROGID_KVProjectData = u"KVProjectData.KVProjectData13";
inline constexpr const OLECHAR* PROGID_KVCommandList = u"KVProjectData.CKVCommandList13";
inline constexpr const OLECHAR* PROGID_KVEncodingParams = u"KVProjectData.KVEncodingParams13";
inline constexpr const OLECHAR* PROGID_KVFileService = u"KVProjectData.KVFileService13";
inline constexpr const OLECHAR* PROGID_KVTestImporter = u"KVProjectData.KVTestImporter13";
inline constexpr const OLECHAR* PROGID_KVMenu = u"KVProjectData.KVMenu13";
inline constexpr const OLECHAR* PROGID_KVMenuButton = u"KVProjectData.KVMenuButton13";
inline constexpr const OLECHAR* PROGID_GroupInfoNode = u"KVProjectData.CGroupInfoNode";
