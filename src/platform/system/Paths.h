#pragma once
// Shell path functions. Paths are understood with either separator.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <string>
#include <string_view>

namespace kv {

/// A path for the system's own calls, of what exists and of what is to be made: the longest part of it that exists by
/// the name as it stands, and the rest with "\" read as "/".
KV_EXPORT std::string ToHostPath(std::u16string_view path);

KV_EXPORT bool PathFileExists(std::u16string_view path);
KV_EXPORT bool PathIsDirectory(std::u16string_view path);

/// Joins with one separator: "/" where the path already uses it, else "\".
KV_EXPORT std::u16string PathAppend(std::u16string_view path, std::u16string_view more);
/// The path without its last component and the separator before it; empty when there is only one component.
KV_EXPORT std::u16string PathRemoveFileSpec(std::u16string_view path);
/// The path without the last "." of its last component and what follows.
KV_EXPORT std::u16string PathRemoveExtension(std::u16string_view path);
/// The last component.
KV_EXPORT std::u16string PathFindFileName(std::u16string_view path);

/// Creates a folder with those above it. 0x800700B7 when it exists already.
KV_EXPORT HRESULT CreateDirectoryTree(std::u16string_view path);

/// Follows a link to the file behind it, which need not exist: the one that a save replaces.
KV_EXPORT std::string BehindLinks(const std::string& target);

/// The system's folder for temporary files, with its closing separator.
KV_EXPORT std::u16string TemporaryFolder();
/// The folder of the program that runs.
KV_EXPORT std::u16string HostFolder();

} // namespace kv
