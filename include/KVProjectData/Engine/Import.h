#pragma once
// The engine's importer of clips.

#include "KVProjectData/Identities.h"

/// Answers for IKVProjectImport, in the category CATID_KVProjectImport, with a point for IKVProjectImportEvents.
///
/// It takes a folder, whose clips become titles in the order of their names, and an M3U playlist, whose entries do in
/// their own order: each title has its clip as source and as the only panel of its production, and a label: what the
/// playlist calls it, or else the title that the file tells of itself, or else the name of the file. A folder is
/// loadable that holds a clip, and every playlist.
///
/// What is no clip, but for what is hidden in a folder, is left out and told by ReportError, with its name:
/// ZXE_E_NOT_MEDIA, ZXE_E_NO_STREAM for media without moving pictures, 0x80070002 for what does not exist. Import
/// returns S_FALSE when nothing was left to import, ZXE_E_NOT_MEDIA for what is neither a folder nor a playlist, and
/// the result of a callback that failed; S_FALSE cancels nothing. After a failure the titles that were added are gone.
/// The titles stand behind those that the project had. The two folders are not looked at.
inline constexpr CLSID CLSID_ZXClipImporter = "b5e0a7c3-2d49-4f18-8a6c-9d1e3b7f5024"_guid;
