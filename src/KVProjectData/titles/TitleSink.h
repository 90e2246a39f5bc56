#pragma once
// A title's ear on its production.

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/titles/ProductionSink.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/com/Object.h"

#include <atomic>

namespace kv {

/// An object of its own, so that a production, which calls on threads of its own, may keep it longer than the title
/// lives and does not keep the title alive: what it tells then goes nowhere.
class TitleSink final : public Object<ProductionSink> {
public:
    explicit TitleSink(CProjectNode& title) : m_title(&title) {}

    /// Whether a production has told nothing since it was said to be mere.
    bool IsOfMere() const { return m_isOfMere; }
    void SetOfMere(bool isMere) { m_isOfMere = isMere; }

    /// The title ends.
    void Forget()
    {
        const SectionLock links(ParentLinks());
        m_title = nullptr;
    }

protected:
    void ProductionChanged(LONG event, LONG param) override
    {
        m_isOfMere = false;
        const SectionLock links(ParentLinks());
        if (m_title) m_title->FireEvent(EVENT_TitleProductionEvent, m_title->ID(), event, param);
    }

private:
    CProjectNode* m_title;
    std::atomic<bool> m_isOfMere = false;
};

} // namespace kv
