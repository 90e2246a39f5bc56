#pragma once
// The identities of the library and of the classes that a host can create.

#include "platform/com/BaseTypes.h"

/// The type library; also the application ID.
inline constexpr GUID LIBID_KVProjectData = "b459071a-fb8a-4f9e-bf72-c46dca8fbe35"_guid;

inline constexpr CLSID CLSID_KVProjectData = "5a3c1fbd-f9da-4bf3-a816-96a68afe2312"_guid;
inline constexpr CLSID CLSID_KVCommandList = "135d63cf-1293-424c-802a-2e8f96fc5ce8"_guid;
inline constexpr CLSID CLSID_KVEncodingParams = "a4ea3938-d429-4c52-8109-15b0875b0b21"_guid;
inline constexpr CLSID CLSID_KVFileService = "bdfaef42-8c7d-4431-b331-dab129ea3a7b"_guid;

/// The host's importer of project files of versions 700 to 799; not part of the library.
inline constexpr CLSID CLSID_Q71ProjectImport = "4260ce86-ca96-4d78-ba56-9ee452a5d423"_guid;

/// Names of the creatable classes that hold from version to version, for CLSIDFromProgID.
inline constexpr const OLECHAR* PROGID_KVProjectData = u"KVProjectData.KVProjectData13";
inline constexpr const OLECHAR* PROGID_KVCommandList = u"KVProjectData.CKVCommandList13";
inline constexpr const OLECHAR* PROGID_KVEncodingParams = u"KVProjectData.KVEncodingParams13";
inline constexpr const OLECHAR* PROGID_KVFileService = u"KVProjectData.KVFileService13";
