#pragma once
// Undo of a button that took over the look of another one.

#include "KVProjectData/undo/NodeImage.h"
#include "KVProjectData/undo/StateRecord.h"

#include <vector>

namespace kv {

/// The button's properties, links and active region, and the elements that it had, which the record keeps alive.
class CKVButtonStlState final : public StateRecord<CKVButtonStlState, 107> {
public:
    explicit CKVButtonStlState(CProjectNode& button);

private:
    struct Element {
        ComPtr<IUnknown> object;
        CProjectNode* node;
    };
    /// An element that is in the button again, and what it was outside of it: when it is taken out anew, its effect is
    /// still to become what it was then.
    struct Outside {
        Element element;
        NodeImage image;
    };

    HRESULT Exchange(CProjectNode& button, DrivingUndo& driving) override;
    void ReportTo(CProjectNode& button, DrivingUndo& driving) override;
    static std::vector<Element> ElementsOf(const CNodeList& list);

    RecordedValues m_button;
    RecordedValues m_links;
    RecordedValues m_region;
    std::vector<Element> m_elements;
    std::vector<Outside> m_outside;
};

} // namespace kv
