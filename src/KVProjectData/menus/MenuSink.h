#pragma once
// A menu's ear on its production.

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/titles/ProductionSink.h"
#include "KVProjectData/tree/NodeReference.h"
#include "platform/com/Object.h"

#include <atomic>

namespace kv {

/// An object of its own, so that a production may keep it longer than the menu lives and does not keep the menu alive:
/// what it tells then goes nowhere.
class MenuSink final : public Object<ProductionSink> {
public:
    /// `menu` is a menu that answers for IZXEProductionDataEvents as `events`.
    MenuSink(CProjectNode& menu, IZXEProductionDataEvents& events) : m_menu(menu), m_node(&menu), m_events(events) {}

    /// Whether a production has told nothing since it was said to be mere.
    bool IsOfMere() const { return m_isOfMere; }
    void SetOfMere(bool isMere) { m_isOfMere = isMere; }

    HRESULT OnEffectChanged(LONG lElementID, LONG lButtonID) override
    {
        const auto menu = m_menu.Hold();
        return menu ? m_events.OnEffectChanged(lElementID, lButtonID) : S_OK;
    }

    HRESULT OnEffectsInvalidated() override
    {
        const auto menu = m_menu.Hold();
        return menu ? m_events.OnEffectsInvalidated() : S_OK;
    }

    /// The menu ends.
    void Forget()
    {
        const SectionLock links(ParentLinks());
        m_node = nullptr;
    }

    /// Of what a production tells, a menu passes on that its duration changed, and whether it is modified.
    static void PassOn(CProjectNode& menu, LONG event, LONG param)
    {
        constexpr LONG kDurationChanged = 10;
        constexpr LONG kModifiedChanged = 11;
        if (event == kDurationChanged || event == kModifiedChanged)
            menu.FireEvent(EVENT_MenuProductionEvent, menu.ID(), event, param);
    }

protected:
    /// Told during edits of the menu, too: the menu is not held, which might end it in the midst of one.
    void ProductionChanged(LONG event, LONG param) override
    {
        m_isOfMere = false;
        const SectionLock links(ParentLinks());
        if (m_node) PassOn(*m_node, event, param);
    }

private:
    const NodeReference<CProjectNode> m_menu;
    CProjectNode* m_node;
    IZXEProductionDataEvents& m_events;
    std::atomic<bool> m_isOfMere = false;
};

} // namespace kv
