#pragma once
// Undo of a text's parameter document.

#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// The document itself, which nobody changes once a text shows it.
class CKVTextEffectState final : public StateRecord<CKVTextEffectState, 108> {
public:
    CKVTextEffectState(CProjectNode& text, const XmlElement& document) : StateRecord(text), m_document(document) {}

protected:
    Bstr Description() const override { return NodeDescription(); }

private:
    /// S_FALSE when the storyboard, whose turn comes before, has brought the document back.
    HRESULT Exchange(CProjectNode& text, DrivingUndo& driving) override;

    XmlElement m_document;
};

} // namespace kv
