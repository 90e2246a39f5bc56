#include "KVProjectData/undo/TextEffectState.h"

#include "KVProjectData/menus/MenuTextImpl.h"
#include "KVProjectData/tree/LineageLock.h"

namespace kv {

HRESULT CKVTextEffectState::Exchange(CProjectNode& text, DrivingUndo&)
{
    auto* const element = dynamic_cast<CMenuTextImpl*>(&text);
    if (!element) return S_FALSE;
    const LineageLock lock(text);
    const XmlElement current = element->Document();
    if (current == m_document || (!m_document && element->HasEffect())) return S_FALSE;
    const HRESULT result = element->ReplaceDocument(m_document);
    if (SUCCEEDED(result)) m_document = current;
    return FAILED(result) ? result : S_OK;
}

} // namespace kv
