#pragma once
// The document that a project is saved as.

#include "platform/com/ComPtr.h"
#include "platform/xml/Dom.h"

namespace kv {

/// Makes a document with its xml instruction and an empty "Root" element. E_INVALIDARG for a null out-pointer.
HRESULT CreateProjectDocument(IXMLDOMDocument** document);

/// The version that a document names; 700 when its project names none, 0 when it has no project.
HRESULT ProjectVersion(IXMLDOMDocument* document, LONG& version);

} // namespace kv
