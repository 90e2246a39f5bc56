#pragma once
// Undo of a text's parameter document.

#include "KVProjectData/undo/StateRecord.h"

namespace kv {

/// The document itself, which nobody changes once a text shows it.
class CKVTextEffectState final : public StateRecord<CKVTextEffectState, 108> {
public:
    CKVTextEffectState(CProjectNode& text, const XmlElement& document);

protected:
    Bstr Description() const override { return NodeDescription(); }

private:
    /// S_FALSE for an effect's document, which is the storyboard's to bring back: it holds edits of all kinds, and may
    /// have been kept in their midst.
    HRESULT Exchange(CProjectNode& text, DrivingUndo& driving) override;

    const bool m_ofEffect;
    XmlElement m_document;
};

} // namespace kv
