#include "KVProjectData/undo/TextEffectState.h"

#include "KVProjectData/menus/MenuTextImpl.h"
#include "KVProjectData/tree/LineageLock.h"

namespace kv {
namespace {

bool HasEffect(CProjectNode& text)
{
    auto* const element = dynamic_cast<CMenuTextImpl*>(&text);
    return element && element->HasEffect();
}

} // namespace

CKVTextEffectState::CKVTextEffectState(CProjectNode& text, const XmlElement& document)
    : StateRecord(text), m_ofEffect(HasEffect(text)), m_document(document)
{
}

HRESULT CKVTextEffectState::Exchange(CProjectNode& text, DrivingUndo&)
{
    auto* const element = dynamic_cast<CMenuTextImpl*>(&text);
    if (!element) return S_FALSE;
    const LineageLock lock(text);
    if (element->HasEffect() && (m_ofEffect || !m_document)) return S_FALSE;
    const XmlElement current = element->Document();
    if (current == m_document) return S_FALSE;
    const HRESULT result = element->ReplaceDocument(m_document);
    if (SUCCEEDED(result)) m_document = current;
    return FAILED(result) ? result : S_OK;
}

} // namespace kv
