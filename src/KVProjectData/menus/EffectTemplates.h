#pragma once
// What the effects of new overlays and texts start from.

#include "platform/com/ComPtr.h"
#include "platform/xml/Dom.h"

namespace kv {

/// A copy of the template in the content folder, which is read once for the process. Where there is none yet, the least
/// that an effect needs, and S_FALSE.
HRESULT NewOverlayDocument(ComPtr<IXMLDOMNode>& document);
HRESULT NewTextDocument(ComPtr<IXMLDOMNode>& document);

} // namespace kv
