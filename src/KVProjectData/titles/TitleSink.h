#pragma once
// A title's ear on its production.

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/titles/ProductionSink.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/Object.h"

namespace kv {

/// An object of its own, so that a production, which calls on threads of its own, may keep it longer than the title
/// lives and does not keep the title alive: what it tells then goes nowhere.
class TitleSink final : public Object<ProductionSink> {
public:
    explicit TitleSink(CProjectNode& title) : m_title(&title) {}

    /// The title ends.
    void Forget()
    {
        const SectionLock links(ParentLinks());
        m_title = nullptr;
    }

protected:
    void ProductionChanged(LONG event, LONG param) override
    {
        const SectionLock links(ParentLinks());
        if (m_title) m_title->FireEvent(EVENT_TitleProductionEvent, m_title->ID(), event, param);
    }

private:
    CProjectNode* m_title;
};

} // namespace kv
