#pragma once
// The sources of menu elements, as hosts and documents name them.

#include "platform/automation/Bstr.h"

namespace kv {

/// The picture of an overlay that has no other.
inline constexpr std::u16string_view kPlaceHolder = u"%CONTENT%\\DVD\\Mandatory\\PlaceHolder.jpg";

/// Whether a source is a reference that the engine follows, and no path: it begins with "moniker::", in any case.
bool IsMonikerSource(std::u16string_view source);

/// A path with the folders of the installation in the place of their macros.
std::u16string ExpandPath(std::u16string_view path);

/// A source as a document names it, and back. Empty is null.
Bstr SourceToDocument(const Bstr& source);
Bstr SourceFromDocument(const Bstr& text);

} // namespace kv
